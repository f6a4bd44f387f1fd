#include "platform/linux/drawing/panel_edge.h"

#include <gtest/gtest.h>

#include <QImage>
#include <cmath>

namespace purlock::host_linux {
namespace {

constexpr int width = 60;
constexpr int height = 80;

/// The ground of a small panel, with its shadow's room around it.
QImage drawn(const PanelEdge& edge, double scale) {
    const int room = 2 * edge.shadow;
    QImage image(static_cast<int>(std::lround((width + room) * scale)),
                 static_cast<int>(std::lround((height + room) * scale)), QImage::Format_ARGB32);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    painter.setClipRect(QRect(0, 0, width + room, height + room));
    drawPanelGround(painter, QRectF(edge.shadow, edge.shadow, width, height), edge);
    return image;
}

/// How many pixels from there on, in that direction, differ from the ground in the middle.
int edgePixels(const QImage& image, QPoint at, QPoint direction) {
    const QRgb ground = image.pixel(image.width() / 2, image.height() / 2);
    int pixels = 0;
    while (image.rect().contains(at) && image.pixel(at) != ground) {
        ++pixels;
        at += direction;
    }
    return pixels;
}

TEST(PanelEdge, IsAWholeNumberOfPixelsWideOnEverySide) {
    for (const PanelEdge& edge : {PanelEdge{}, PanelEdge{true, 0}}) {
        for (const double scale : {1.0, 1.25, 1.5, 2.0, 3.0}) {
            SCOPED_TRACE(scale);
            const QImage image = drawn(edge, scale);
            const int expected = static_cast<int>(scale);
            const int right = image.width() - 1;
            const int bottom = image.height() - 1;
            EXPECT_EQ(edgePixels(image, {0, bottom / 2}, {1, 0}), expected) << "left";
            EXPECT_EQ(edgePixels(image, {right, bottom / 2}, {-1, 0}), expected) << "right";
            EXPECT_EQ(edgePixels(image, {right / 2, 0}, {0, 1}), expected) << "top";
            EXPECT_EQ(edgePixels(image, {right / 2, bottom}, {0, -1}), expected) << "bottom";
        }
    }
}

TEST(PanelEdge, APlainPanelIsOpaqueToItsCorners) {
    const QImage image = drawn({}, 1);
    for (const QPoint& corner : {QPoint(0, 0), QPoint(width - 1, 0), QPoint(0, height - 1)}) {
        EXPECT_EQ(qAlpha(image.pixel(corner)), 255);
        EXPECT_EQ(image.pixel(corner), image.pixel(0, height / 2)) << "the edge goes around them";
    }
}

TEST(PanelEdge, ARoundPanelLetsItsCornersShine) {
    const QImage image = drawn({true, 0}, 2);
    EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
    EXPECT_EQ(qAlpha(image.pixel(image.width() - 1, image.height() - 1)), 0);
    EXPECT_EQ(qAlpha(image.pixel(8, 8)), 255);
    EXPECT_EQ(qAlpha(image.pixel(0, height)), 255);
}

TEST(PanelEdge, AShadowFadesOutwardsWithinItsRoom) {
    const QImage image = drawn({true, shadowRoom}, 1);
    const int middle = image.width() / 2;
    int before = 0;
    for (int y = image.height() - 1; y >= shadowRoom + height; --y) {
        const QRgb pixel = image.pixel(middle, y);
        EXPECT_GE(qAlpha(pixel), before) << y;
        EXPECT_EQ(qRed(pixel), 0);
        before = qAlpha(pixel);
    }
    EXPECT_GT(before, 60) << "next to the panel";
    for (const QPoint& outermost : {QPoint(middle, 0), QPoint(middle, image.height() - 1),
                                    QPoint(0, image.height() / 2), QPoint(0, 0)}) {
        EXPECT_LT(qAlpha(image.pixel(outermost)), 4);
    }
    EXPECT_LT(qAlpha(image.pixel(middle, shadowRoom - 1)), before) << "the light comes from above";
    EXPECT_EQ(qAlpha(image.pixel(middle, image.height() / 2)), 255);
}

}  // namespace
}  // namespace purlock::host_linux
