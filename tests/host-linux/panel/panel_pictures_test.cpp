#include <gtest/gtest.h>

#include <QDir>
#include <QFontDatabase>
#include <QImage>
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "platform/linux/words/linux_words.h"
#include "tests/host-linux/panel/panel_picture.h"
#include "tests/support/panel_states.h"

// Every state of the panel against a picture that was looked at. `render_panel` makes the pictures anew.

namespace purlock {
namespace {

// Fonts are drawn a little differently by every version of the font library. What must not pass is another
// colour, another size, another place, a missing word: seen from a little distance, where a text is a grey
// line, these are all that is left.
constexpr int distance = 6;  // device pixels that become one
// Of 255, at one place. The references are of Qt 6.4; 6.8 sets right-to-left texts a little differently.
constexpr int largestDifference = QT_VERSION < QT_VERSION_CHECK(6, 5, 0) ? 56 : 80;
constexpr double meanDifference = 1.5;

QImage fromADistance(const QImage& picture) {
    return picture.convertToFormat(QImage::Format_RGB32)
        .scaled(picture.width() / distance, picture.height() / distance, Qt::IgnoreAspectRatio,
                Qt::SmoothTransformation);
}

int difference(QRgb one, QRgb other) {
    return std::max({std::abs(qRed(one) - qRed(other)), std::abs(qGreen(one) - qGreen(other)),
                     std::abs(qBlue(one) - qBlue(other))});
}

struct Comparison {
    int largest = 0;
    double mean = 0;
    QPoint where;
};

Comparison compare(const QImage& one, const QImage& other) {
    Comparison result;
    double sum = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const int here = difference(one.pixel(x, y), other.pixel(x, y));
            sum += here;
            if (here > result.largest) {
                result.largest = here;
                result.where = QPoint(x, y) * distance;
            }
        }
    }
    result.mean = sum / (one.width() * one.height());
    return result;
}

class PanelPicture : public testing::TestWithParam<double> {};

TEST_P(PanelPicture, LooksLikeItsReference) {
    ASSERT_TRUE(QFontDatabase::families().contains(QStringLiteral("DejaVu Sans")))
        << "the pictures are made with that font (Debian: fonts-dejavu-core)";
    for (const auto& state : test::panelStates(host_linux::linuxWords())) {
        const std::string name = test::pictureName(state.name, GetParam());
        const QImage reference(QDir(PURLOCK_PICTURES).filePath(QString::fromStdString(name)));
        const QImage picture = test::panelPicture(state.view, GetParam());
        ASSERT_EQ(picture.size(), reference.size()) << name;
        const Comparison seen = compare(fromADistance(picture), fromADistance(reference));
        EXPECT_LE(seen.largest, largestDifference)
            << name << " differs near " << seen.where.x() << ", " << seen.where.y();
        EXPECT_LE(seen.mean, meanDifference) << name;
        if (testing::Test::HasFailure()) picture.save(QString::fromStdString("different-" + name));
    }
}

INSTANTIATE_TEST_SUITE_P(Scales, PanelPicture, testing::Values(1.0, 2.0),
                         [](const auto& row) { return "At" + std::to_string(std::lround(row.param)) + "x"; });

}  // namespace
}  // namespace purlock
