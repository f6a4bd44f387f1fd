#pragma once

#include <QByteArray>
#include <QPainterPath>
#include <QPen>
#include <QRectF>
#include <QSizeF>
#include <optional>
#include <vector>

class QPainter;
class QTransform;

namespace purlock::host_linux {

/// A one-colour drawing from an SVG file of ours.
///
/// It understands what those files use and no more: rect (with rx), circle and path (M L H V C Z, each with
/// its own letter, absolute), filled, stroked or both, in black or white. Black is what is drawn, in whatever
/// colour is asked for; white is what is cut out of the black before it. Such a file looks the same in any
/// SVG viewer on a white ground.
///
/// A value; any thread.
class SvgDrawing {
  public:
    /// Absent when the file holds anything else.
    static std::optional<SvgDrawing> parse(const QByteArray& svg);

    /// The view box, which begins at (0, 0).
    QSizeF size() const { return size_; }

    /// `onWholePixels` moves straight edges to the next whole pixel of the painter's device. That makes small
    /// drawings crisp. Only rectangles and lines along an axis have such edges; a line stays at least a pixel
    /// thick.
    enum class Edges { asDrawn, onWholePixels };

    /// Draws it from (0, 0) to its size, on a transparent ground: what it cuts out goes from the ground too.
    /// Lines are `lineScale` times as thick as they are drawn; outlines of filled shapes stay. The painter
    /// may move and scale, and nothing else.
    void paint(QPainter& painter, const QColor& color, double lineScale, Edges edges = Edges::asDrawn) const;

  private:
    enum class Effect { draw, cutOut };
    struct Rectangle {
        QRectF place;
        double radius = 0;

        QPainterPath path() const;
    };
    struct Shape {
        QPainterPath path;
        std::optional<Rectangle> rectangle;  ///< the path, where it is one
        std::optional<Effect> fill;
        std::optional<Effect> stroke;
        QPen pen;
    };

    friend class SvgReader;

    static void moveEdges(Shape& shape, const QTransform& pixels);

    QSizeF size_;
    std::vector<Shape> shapes_;
};

}  // namespace purlock::host_linux
