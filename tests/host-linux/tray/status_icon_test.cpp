#include "platform/linux/tray/status_icon.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <string>

#include "ui/status_icon.h"

namespace purlock::host_linux {
namespace {

struct PixmapCase {
    const char* name;
    QImage image;
    NotifierPixmap expected;
};

QImage pixels(int width, int height, std::initializer_list<QRgb> colors, QImage::Format format) {
    QImage image(width, height, QImage::Format_ARGB32);
    int index = 0;
    for (const QRgb color : colors) image.setPixel(index % width, index / width, color), ++index;
    return image.convertToFormat(format);
}

TEST(NotifierPixmap, Rows) {
    const PixmapCase cases[] = {
        {"nothing", QImage(), {0, 0, {}}},
        {"alpha, red, green, blue",
         pixels(1, 1, {0xFF102030}, QImage::Format_ARGB32),
         {1, 1, {0xFF, 0x10, 0x20, 0x30}}},
        {"row after row",
         pixels(1, 2, {0xFF000001, 0xFF000002}, QImage::Format_ARGB32),
         {1, 2, {0xFF, 0, 0, 1, 0xFF, 0, 0, 2}}},
        {"left to right",
         pixels(2, 1, {0xFF000001, 0xFF000002}, QImage::Format_ARGB32),
         {2, 1, {0xFF, 0, 0, 1, 0xFF, 0, 0, 2}}},
        {"clear", pixels(1, 1, {0x00000000}, QImage::Format_ARGB32_Premultiplied), {1, 1, {0, 0, 0, 0}}},
        {"premultiplied no longer",
         pixels(1, 1, {0x80FF0000}, QImage::Format_ARGB32_Premultiplied),
         {1, 1, {0x80, 0xFF, 0, 0}}},
    };
    for (const PixmapCase& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(notifierPixmap(row.image), row.expected);
    }
}

TEST(NotifierText, MarkupIsEscaped) {
    EXPECT_EQ(escapedMarkup("Purlock — Idle"), "Purlock — Idle");
    EXPECT_EQ(escapedMarkup("<b>&amp;</b>"), "&lt;b&gt;&amp;amp;&lt;/b&gt;");
    EXPECT_EQ(escapedMarkup(""), "");
}

SymbolImage symbol(const char* name, const std::optional<IconColors>& colors = {}) {
    return {name, "", 14, FontWeight::semibold, colors};
}

/// The colour that most of the pixels have that nothing shines through; absent when there is none.
std::optional<QRgb> mainColor(const QImage& image) {
    std::map<QRgb, int> counts;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) == 255) ++counts[image.pixel(x, y) & 0xFFFFFFU];
        }
    }
    const auto most =
        std::max_element(counts.begin(), counts.end(), [](auto& a, auto& b) { return a.second < b.second; });
    return most != counts.end() ? std::optional(most->first) : std::nullopt;
}

struct IconCase {
    const char* name;
    SymbolImage image;
    std::optional<QColor> foreground;
    ColorScheme scheme;
    std::optional<QRgb> expected;
};

TEST(StatusIcon, Colours) {
    const SymbolImage bitPerfect = purlock::symbolImage(verdict::BitPerfect{});
    const SymbolImage resampling = purlock::symbolImage(verdict::Resampling{});
    const SymbolImage altered = purlock::symbolImage(verdict::Altered{});
    const IconCase cases[] = {
        {"bit-perfect", bitPerfect, {}, ColorScheme::dark, 0x4DC773},
        {"resampling", resampling, {}, ColorScheme::dark, 0xF2BF33},
        {"altered", altered, {}, ColorScheme::dark, 0xF2BF33},
        {"bit-perfect on a light bar", bitPerfect, {}, ColorScheme::light, 0x21944A},
        {"resampling on a light bar", resampling, {}, ColorScheme::light, 0xBD7505},
        {"altered on a bar that is not known", altered, {}, ColorScheme::unknown, 0xBD7505},
        {"own colours, whatever the bar's", bitPerfect, QColor(Qt::red), ColorScheme::dark, 0x4DC773},
        {"a template has none", symbol("checkmark.seal.fill"), QColor(Qt::red), ColorScheme::dark, 0xFF0000},
        {"the bar's colour", symbol("circle"), QColor(Qt::red), ColorScheme::light, 0xFF0000},
        {"dark desktop", symbol("circle"), {}, ColorScheme::dark, 0xF2F2F2},
        {"light desktop", symbol("circle"), {}, ColorScheme::light, 0x262626},
        {"a symbol of any name", symbol("circle", iconGreen), {}, ColorScheme::dark, 0x4DC773},
        {"unknown symbol", symbol("no.such", iconGreen), {}, ColorScheme::light, {}},
    };
    for (const IconCase& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(mainColor(statusIcon(row.image, 48, row.foreground, row.scheme)), row.expected);
    }
}

double luminance(QRgb color) {
    const auto linear = [](int part) {
        const double value = part / 255.0;
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(color)) + 0.7152 * linear(qGreen(color)) + 0.0722 * linear(qBlue(color));
}

double contrast(QRgb one, QRgb other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

/// 3:1 is what WCAG 2.1 (1.4.11) asks of pictures.
TEST(StatusIcon, IsReadableOnEveryBarThatItMayStandOn) {
    constexpr QRgb dark[] = {0x000000, 0x202020, 0x2E3436};
    constexpr QRgb light[] = {0xF0F0F0, 0xF4F4F4, 0xFFFFFF};
    const Verdict verdicts[] = {verdict::Idle{}, verdict::BitPerfect{}, verdict::Resampling{},
                                verdict::Unknown{}, verdict::Altered{}};
    for (const Verdict& verdict : verdicts) {
        const SymbolImage image = purlock::symbolImage(verdict);
        SCOPED_TRACE(image.name);
        const auto on = [&](ColorScheme scheme) { return *mainColor(statusIcon(image, 48, {}, scheme)); };
        for (const QRgb bar : dark) {
            EXPECT_GE(contrast(on(ColorScheme::dark), bar), 3);
            EXPECT_GE(contrast(on(ColorScheme::unknown), bar), 3);
        }
        for (const QRgb bar : light) {
            EXPECT_GE(contrast(on(ColorScheme::light), bar), 3);
            EXPECT_GE(contrast(on(ColorScheme::unknown), bar), 3);
        }
    }
}

TEST(StatusIcon, TheSchemeOfABarIsThatOfItsColour) {
    for (const QRgb color : {0x000000U, 0x202020U, 0x2E3436U, 0x004080U, 0x666666U}) {
        EXPECT_EQ(schemeOf(QColor(color)), ColorScheme::dark) << color;
    }
    for (const QRgb color : {0xFFFFFFU, 0xF0F0F0U, 0xC0C0C0U, 0x8FBCBBU, 0xFFCC00U}) {
        EXPECT_EQ(schemeOf(QColor(color)), ColorScheme::light) << color;
    }
}

TEST(StatusIcon, SizesOfTheItem) {
    std::vector<int> sizes;
    for (const auto& pixmap : statusPixmaps(symbol("circle"), ColorScheme::dark)) {
        sizes.push_back(pixmap.width);
    }
    EXPECT_EQ(sizes, (std::vector{16, 22, 24, 32, 48, 64, 96}));
    EXPECT_TRUE(statusPixmaps(symbol(""), ColorScheme::dark).empty());
}

/// How often a text occurs in another.
int count(const std::string& text, const std::string& wanted) {
    int found = 0;
    for (auto at = text.find(wanted); at != std::string::npos; at = text.find(wanted, at + 1)) ++found;
    return found;
}

/// Trays recolour a drawing by its class and by the current colour; what has another colour would keep it.
TEST(ThemedIcon, HasNoColourOfItsOwn) {
    for (const char* name : {"purlock-idle-symbolic.svg", "purlock-unknown-symbolic.svg"}) {
        SCOPED_TRACE(name);
        std::ifstream file(std::string(PURLOCK_SYMBOLIC_ICONS) + "/" + name);
        const std::string drawing(std::istreambuf_iterator<char>(file), {});
        const int shapes = count(drawing, "<path ") + count(drawing, "<circle ");
        EXPECT_GT(shapes, 0);
        EXPECT_EQ(count(drawing, "class=\"ColorScheme-Text\" fill=\"currentColor\""), shapes);
        EXPECT_EQ(count(drawing, "fill=\""), shapes);
        EXPECT_EQ(count(drawing, "stroke"), 0);
        EXPECT_EQ(count(drawing, "#"), 1) << "the grey for trays that do not recolour it";
    }
}

}  // namespace
}  // namespace purlock::host_linux
