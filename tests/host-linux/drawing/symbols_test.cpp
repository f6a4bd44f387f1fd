#include "platform/linux/drawing/symbols.h"

#include <gtest/gtest.h>

#include <QDir>
#include <cmath>
#include <string>

namespace purlock::host_linux {
namespace {

const QColor green = QColor::fromRgbF(0.3F, 0.78F, 0.45F);

/// How much of the image is covered, from 0 to 1.
double coverage(const QImage& image) {
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) sum += qAlpha(image.pixel(x, y));
    }
    return sum / (255.0 * image.width() * image.height());
}

TEST(Symbols, EveryNameThatIsUsedHasADrawing) {
    for (const char* name :
         {"circle", "checkmark.seal.fill", "exclamationmark.triangle.fill", "questionmark.circle",
          "slider.horizontal.3", "music.note", "app.fill", "waveform", "waveform.path", "cable.connector",
          "hifispeaker.fill", "pin", "pin.fill", "info.circle.fill", "chevron.right",
          "chevron.up.chevron.down", "speaker.wave.2.fill", "pause.fill"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(hasSymbol(name));
        const QImage image = symbolImage(name, 10, FontWeight::semibold, Qt::white, 1);
        EXPECT_GT(coverage(image), 0.1);
        EXPECT_LT(coverage(image), 0.95);
    }
}

TEST(Symbols, EveryFileIsUnderstoodAndStandsInTheSameHeight) {
    const auto files = QDir(":/purlock/symbols").entryInfoList();
    ASSERT_FALSE(files.isEmpty());
    for (const QFileInfo& file : files) {
        const std::string name = file.completeBaseName().toStdString();
        SCOPED_TRACE(name);
        EXPECT_TRUE(hasSymbol(name));
        EXPECT_EQ(symbolImage(name, 20, FontWeight::regular, Qt::white, 1).height(), 24);
    }
}

TEST(Symbols, OtherNamesHaveNone) {
    for (const char* name :
         {"", ".", "..", "circle.fill", "circle.svg", "Circle", "../symbols/circle", "pin/"}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(hasSymbol(name));
        EXPECT_TRUE(symbolImage(name, 10, FontWeight::regular, Qt::white, 1).isNull());
        EXPECT_TRUE(squareSymbol(name, 10, Qt::white).isNull());
    }
}

struct SizeCase {
    const char* name;
    const char* symbol;
    double pointSize;
    double devicePixelRatio;
    QSize pixels;
};

TEST(Symbols, Sizes) {
    const SizeCase cases[] = {
        {"stage badge", "app.fill", 10, 1, {12, 12}},
        {"stage badge at 1.5", "app.fill", 10, 1.5, {18, 18}},
        {"stage badge at 2", "app.fill", 10, 2, {24, 24}},
        {"status icon", "circle", 14, 1, {17, 17}},
        {"narrow", "chevron.right", 10, 1, {7, 12}},
        {"wide", "speaker.wave.2.fill", 12, 2, {31, 29}},
        {"vanishing", "circle", 0, 1, {1, 1}},
        {"negative", "circle", -5, 1, {1, 1}},
    };
    for (const SizeCase& row : cases) {
        SCOPED_TRACE(row.name);
        const QImage image =
            symbolImage(row.symbol, row.pointSize, FontWeight::regular, Qt::white, row.devicePixelRatio);
        EXPECT_EQ(image.size(), row.pixels);
        EXPECT_EQ(image.devicePixelRatio(), row.devicePixelRatio);
    }
}

TEST(Symbols, TheColourIsTheOneAskedForAndCutOutsAreClear) {
    const QImage seal = symbolImage("checkmark.seal.fill", 40, FontWeight::semibold, green, 1);
    EXPECT_EQ(seal.pixel(24, 8), green.rgb()) << "in the seal, above the check mark";
    EXPECT_EQ(seal.pixelColor(21, 30).alpha(), 0) << "in the check mark";
    EXPECT_EQ(seal.pixelColor(0, 0).alpha(), 0) << "outside";
}

TEST(Symbols, ATranslucentColourIsTranslucentOnceWhereShapesOverlap) {
    QColor faint = Qt::white;
    faint.setAlphaF(0.4F);
    const QImage pin = symbolImage("pin", 40, FontWeight::semibold, faint, 1);
    int highest = 0;
    for (int y = 0; y < pin.height(); ++y) {
        for (int x = 0; x < pin.width(); ++x) highest = std::max(highest, qAlpha(pin.pixel(x, y)));
    }
    EXPECT_EQ(highest, faint.alpha());
}

TEST(Symbols, HeavierWeightsHaveThickerLines) {
    double last = 0;
    for (const FontWeight weight :
         {FontWeight::regular, FontWeight::medium, FontWeight::semibold, FontWeight::bold}) {
        const double covered = coverage(symbolImage("circle", 20, weight, Qt::white, 2));
        EXPECT_GT(covered, last * 1.05);
        last = covered;
    }
}

TEST(Symbols, ADrawingIsKeptUntilMuchElseIsAskedFor) {
    const auto draw = [](double size) {
        return symbolImage("waveform", size, FontWeight::regular, Qt::white, 1).cacheKey();
    };
    const auto first = draw(12);
    EXPECT_EQ(draw(12), first);
    EXPECT_NE(draw(13), first);
    for (int size = 20; size < 120; ++size) draw(size);
    EXPECT_NE(draw(12), first) << "what is kept is bounded";
}

TEST(Symbols, ASquareHoldsTheWholeSymbolInItsMiddle) {
    for (const char* name : {"circle", "chevron.right", "speaker.wave.2.fill"}) {
        SCOPED_TRACE(name);
        const QImage image = squareSymbol(name, 48, Qt::white);
        EXPECT_EQ(image.size(), QSize(48, 48));
        const QImage line = image.copy(0, 23, 48, 2).convertToFormat(QImage::Format_Alpha8);
        EXPECT_GT(coverage(image), 0.04);
        EXPECT_EQ(line.pixelColor(0, 0).alpha(), 0) << "clear at both ends";
        EXPECT_EQ(line.pixelColor(47, 0).alpha(), 0);
    }
}

}  // namespace
}  // namespace purlock::host_linux
