#include "platform/linux/drawing/svg_drawing.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <string>

namespace purlock::host_linux {
namespace {

QByteArray file(const std::string& shapes, const std::string& viewBox = "0 0 4 4") {
    return QByteArray::fromStdString(R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox=")" + viewBox +
                                     "\">" + shapes + "</svg>");
}

char mark(const QColor& pixel) {
    if (pixel.alpha() == 0) return '.';
    return pixel == QColor(Qt::red) ? '#' : '?';
}

/// '#' where it is drawn, '.' where it is clear, '?' in between.
std::string marks(const QImage& image) {
    std::string rows;
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x) rows += mark(image.pixelColor(x, y));
        rows += '\n';
    }
    return rows;
}

/// What 4 x 4 pixels show of it, without smoothing.
std::string picture(const SvgDrawing& drawing, double lineScale = 1) {
    QImage image(4, 4, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawing.paint(painter, Qt::red, lineScale);
    painter.end();
    return marks(image);
}

struct DrawingCase {
    const char* name;
    std::string shapes;
    double lineScale;
    std::string expected;
};

TEST(SvgDrawing, DrawsItsShapes) {
    const std::string square = R"(<rect x="0" y="0" width="4" height="4" fill="#000"/>)";
    const DrawingCase cases[] = {
        {"nothing", "", 1, "....\n....\n....\n....\n"},
        {"rectangle", R"(<rect x="1" y="1" width="2" height="3" fill="#000"/>)", 1,
         "....\n.##.\n.##.\n.##.\n"},
        {"circle", R"(<circle cx="2" cy="2" r="2" fill="#000"/>)", 1, ".##.\n####\n####\n.##.\n"},
        {"closed path", R"(<path d="M0 0H2V2H0Z" fill="#000"/>)", 1, "##..\n##..\n....\n....\n"},
        {"two paths in one, with commas", R"(<path d="M0,0L2,0V1L0,1Z M2,3 L4,3 L4,4 L2,4Z" fill="#000"/>)",
         1, "##..\n....\n....\n..##\n"},
        {"curve", R"(<path d="M0 0C4 0 4 0 4 4L0 4Z" fill="#000"/>)", 1, "###.\n####\n####\n####\n"},
        {"line", R"(<path d="M0 2H4" fill="none" stroke="#000" stroke-width="2"/>)", 1,
         "....\n####\n####\n....\n"},
        {"line in a heavier weight", R"(<path d="M0 2H4" fill="none" stroke="#000" stroke-width="2"/>)", 2,
         "####\n####\n####\n####\n"},
        {"the outline of a filled shape stays",
         R"(<rect x="1" y="1" width="1" height="1" fill="#000" stroke="#000" stroke-width="2"/>)", 2,
         "###.\n###.\n###.\n....\n"},
        {"cut out", square + R"(<path d="M2 0H4V4H2Z" fill="#fff"/>)", 1, "##..\n##..\n##..\n##..\n"},
        {"drawn again where it was cut out",
         square + R"(<rect x="0" y="0" width="4" height="4" fill="#fff"/>)" +
             R"(<rect x="3" y="3" width="1" height="1" fill="#000"/>)",
         1, "....\n....\n....\n...#\n"},
    };
    for (const DrawingCase& row : cases) {
        SCOPED_TRACE(row.name);
        const auto drawing = SvgDrawing::parse(file(row.shapes));
        ASSERT_TRUE(drawing);
        EXPECT_EQ(drawing->size(), QSizeF(4, 4));
        EXPECT_EQ(picture(*drawing, row.lineScale), row.expected);
    }
}

struct EdgesCase {
    const char* name;
    std::string shapes;
    double scale;
    std::string expected;
};

TEST(SvgDrawing, StraightEdgesStandOnWholePixelsIfAsked) {
    const auto line = [](const char* path, const char* width) {
        return std::string("<path d=\"") + path + "\" fill=\"none\" stroke=\"#000\" stroke-width=\"" + width +
               "\"/>";
    };
    const EdgesCase cases[] = {
        {"a rectangle goes to the nearest pixels",
         R"(<rect x="0.8" y="1.2" width="2.4" height="1.9" fill="#000"/>)", 1, "....\n.##.\n.##.\n....\n"},
        {"halves go outwards, to both sides", R"(<rect x="0.5" y="0.5" width="3" height="3" fill="#000"/>)",
         1, "####\n####\n####\n####\n"},
        {"a rectangle keeps a pixel", R"(<rect x="0.9" y="0" width="0.3" height="4" fill="#000"/>)", 1,
         ".#..\n.#..\n.#..\n.#..\n"},
        {"an upright line", line("M1.1 0V4", "1.2"), 1, ".#..\n.#..\n.#..\n.#..\n"},
        {"a level line", line("M0 1.1H4", "1.2"), 1, "....\n####\n....\n....\n"},
        {"an even line stands between pixels", line("M0 2.2L4 2.2", "2.2"), 1, "....\n####\n####\n....\n"},
        {"a thin line is a pixel thick", line("M2.5 0V4", "0.2"), 1, "..#.\n..#.\n..#.\n..#.\n"},
        {"pixels are those of the device", line("M3.2 0V8", "2.4"), 0.5, ".#..\n.#..\n.#..\n.#..\n"},
    };
    for (const EdgesCase& row : cases) {
        SCOPED_TRACE(row.name);
        const auto drawing = SvgDrawing::parse(file(row.shapes));
        ASSERT_TRUE(drawing);
        QImage image(4, 4, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(row.scale, row.scale);
        drawing->paint(painter, Qt::red, 1, SvgDrawing::Edges::onWholePixels);
        painter.end();
        EXPECT_EQ(marks(image), row.expected);
    }
}

struct RefusedCase {
    const char* name;
    QByteArray svg;
};

TEST(SvgDrawing, RefusesWhatItDoesNotUnderstand) {
    const RefusedCase cases[] = {
        {"empty", ""},
        {"no SVG", "<html/>"},
        {"no view box", "<svg/>"},
        {"view box with another origin", file("", "1 0 4 4")},
        {"view box without width", file("", "0 0 0 4")},
        {"short view box", file("", "0 0 4")},
        {"unfinished", R"(<svg viewBox="0 0 4 4"><circle cx="1" cy="1" r="1" fill="#000"/>)"},
        {"unknown shape", file(R"(<ellipse cx="1" cy="1" rx="1" ry="1" fill="#000"/>)")},
        {"group", file("<g/>")},
        {"circle without radius", file(R"(<circle cx="1" cy="1" fill="#000"/>)")},
        {"rectangle without height", file(R"(<rect x="1" y="1" width="1" fill="#000"/>)")},
        {"unknown command", file(R"(<path d="M0 0A1 1 0 0 1 2 2" fill="#000"/>)")},
        {"relative command", file(R"(<path d="M0 0l1 1" fill="#000"/>)")},
        {"too few numbers", file(R"(<path d="M0 0L1" fill="#000"/>)")},
        {"number instead of a command", file(R"(<path d="M0 0 1 1" fill="#000"/>)")},
        {"no number", file(R"(<path d="M0 -" fill="#000"/>)")},
        {"unknown colour", file(R"(<circle cx="1" cy="1" r="1" fill="red"/>)")},
    };
    for (const RefusedCase& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_FALSE(SvgDrawing::parse(row.svg));
    }
}

}  // namespace
}  // namespace purlock::host_linux
