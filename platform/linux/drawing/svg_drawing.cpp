#include "platform/linux/drawing/svg_drawing.h"

#include <QPainter>
#include <QTransform>
#include <QXmlStreamReader>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace purlock::host_linux {

namespace {

/// The numbers and letters of an attribute, one after the other.
class Tokens {
  public:
    explicit Tokens(QStringView text) : text_(text) { skipSeparators(); }

    bool atEnd() const { return position_ == text_.size(); }

    QChar nextLetter() {
        const QChar letter = atEnd() || !text_[position_].isLetter() ? QChar() : text_[position_++];
        skipSeparators();
        return letter;
    }

    /// The next `count` numbers; absent when there are fewer.
    template <std::size_t count>
    std::optional<std::array<double, count>> next() {
        std::array<double, count> numbers{};
        for (double& number : numbers) {
            if (!read(number)) return std::nullopt;
        }
        return numbers;
    }

  private:
    bool read(double& number) {
        const auto begin = position_;
        while (!atEnd() && (text_[position_].isDigit() || text_[position_] == '.' ||
                            (text_[position_] == '-' && position_ == begin))) {
            ++position_;
        }
        bool valid = false;
        number = text_.mid(begin, position_ - begin).toDouble(&valid);
        skipSeparators();
        return valid;
    }

    void skipSeparators() {
        while (!atEnd() && (text_[position_].isSpace() || text_[position_] == ',')) ++position_;
    }

    QStringView text_;
    qsizetype position_ = 0;
};

bool appendCommand(QPainterPath& path, QChar command, Tokens& tokens) {
    const QPointF from = path.currentPosition();
    switch (command.unicode()) {
        case 'M':
            if (const auto to = tokens.next<2>()) return path.moveTo((*to)[0], (*to)[1]), true;
            return false;
        case 'L':
            if (const auto to = tokens.next<2>()) return path.lineTo((*to)[0], (*to)[1]), true;
            return false;
        case 'H':
            if (const auto to = tokens.next<1>()) return path.lineTo((*to)[0], from.y()), true;
            return false;
        case 'V':
            if (const auto to = tokens.next<1>()) return path.lineTo(from.x(), (*to)[0]), true;
            return false;
        case 'C':
            if (const auto to = tokens.next<6>()) {
                const auto& [x1, y1, x2, y2, x, y] = *to;
                return path.cubicTo(x1, y1, x2, y2, x, y), true;
            }
            return false;
        case 'Z':
            return path.closeSubpath(), true;
        default:
            return false;
    }
}

std::optional<QPainterPath> pathOf(QStringView commands) {
    QPainterPath path;
    Tokens tokens(commands);
    while (!tokens.atEnd()) {
        if (!appendCommand(path, tokens.nextLetter(), tokens)) return std::nullopt;
    }
    return path;
}

std::optional<double> number(const QXmlStreamAttributes& attributes, QLatin1StringView name) {
    bool valid = false;
    const double value = attributes.value(name).toDouble(&valid);
    return valid ? std::optional(value) : std::nullopt;
}

std::optional<QPainterPath> circle(const QXmlStreamAttributes& attributes) {
    const auto x = number(attributes, QLatin1StringView("cx"));
    const auto y = number(attributes, QLatin1StringView("cy"));
    const auto radius = number(attributes, QLatin1StringView("r"));
    if (!x || !y || !radius) return std::nullopt;
    QPainterPath path;
    path.addEllipse(QPointF(*x, *y), *radius, *radius);
    return path;
}

/// One axis of a drawing, and where it lies on the device.
struct Axis {
    double scale;
    double origin;

    double pixelsAt(double position) const { return origin + scale * position; }
    double positionAt(double pixels) const { return (pixels - origin) / scale; }

    /// Halves are rounded outwards, so that what lies in the middle stays there.
    void moveEdges(double& begin, double& end) const {
        const double first = std::ceil(pixelsAt(begin) - 0.5);
        const double last = std::max(first + 1, std::floor(pixelsAt(end) + 0.5));
        begin = positionAt(first);
        end = positionAt(last);
    }

    /// A line across this axis.
    void moveLine(double& centre, double& width) const {
        const double pixels = std::max(1.0, std::round(width * scale));
        const bool isOdd = std::fmod(pixels, 2) == 1;
        centre = positionAt(isOdd ? std::floor(pixelsAt(centre)) + 0.5 : std::round(pixelsAt(centre)));
        width = pixels / scale;
    }
};

/// A line along an axis is moved; every other path stays as it is.
void moveLine(QPainterPath& path, double& width, const Axis& x, const Axis& y) {
    if (path.elementCount() != 2 || !path.elementAt(1).isLineTo()) return;
    QPointF from = path.elementAt(0);
    QPointF to = path.elementAt(1);
    if (from.x() == to.x()) {
        x.moveLine(from.rx(), width);
        to.setX(from.x());
    } else if (from.y() == to.y()) {
        y.moveLine(from.ry(), width);
        to.setY(from.y());
    }
    path.setElementPositionAt(0, from.x(), from.y());
    path.setElementPositionAt(1, to.x(), to.y());
}

}  // namespace

QPainterPath SvgDrawing::Rectangle::path() const {
    QPainterPath path;
    path.addRoundedRect(place, radius, radius);
    return path;
}

class SvgReader {
  public:
    explicit SvgReader(const QByteArray& svg) : xml_(svg) {}

    std::optional<SvgDrawing> read() {
        if (!xml_.readNextStartElement() || xml_.name() != QLatin1StringView("svg") || !readSize()) {
            return std::nullopt;
        }
        while (xml_.readNextStartElement()) {
            if (!readShape()) return std::nullopt;
            xml_.skipCurrentElement();
        }
        return xml_.hasError() ? std::nullopt : std::optional(std::move(drawing_));
    }

  private:
    using Effect = SvgDrawing::Effect;

    bool readSize() {
        const QXmlStreamAttributes attributes = xml_.attributes();  // the tokens point into it
        Tokens viewBox(attributes.value("viewBox"));
        const auto box = viewBox.next<4>();
        if (!box || (*box)[0] != 0 || (*box)[1] != 0 || (*box)[2] <= 0 || (*box)[3] <= 0) return false;
        drawing_.size_ = QSizeF((*box)[2], (*box)[3]);
        return true;
    }

    bool readShape() {
        const QXmlStreamAttributes attributes = xml_.attributes();
        SvgDrawing::Shape shape;
        if (!readOutline(attributes, shape) || !readEffect(attributes.value("fill"), shape.fill) ||
            !readEffect(attributes.value("stroke"), shape.stroke)) {
            return false;
        }
        const bool round = attributes.value("stroke-linecap") == QLatin1StringView("round");
        shape.pen.setWidthF(number(attributes, QLatin1StringView("stroke-width")).value_or(1));
        shape.pen.setCapStyle(round ? Qt::RoundCap : Qt::FlatCap);
        shape.pen.setJoinStyle(Qt::RoundJoin);
        drawing_.shapes_.push_back(std::move(shape));
        return true;
    }

    bool readOutline(const QXmlStreamAttributes& attributes, SvgDrawing::Shape& shape) const {
        std::optional<QPainterPath> path;
        if (xml_.name() == QLatin1StringView("circle")) path = circle(attributes);
        if (xml_.name() == QLatin1StringView("path")) path = pathOf(attributes.value("d"));
        if (xml_.name() == QLatin1StringView("rect") && (shape.rectangle = rectangle(attributes))) {
            path = shape.rectangle->path();
        }
        if (path) shape.path = *path;
        return path.has_value();
    }

    static std::optional<SvgDrawing::Rectangle> rectangle(const QXmlStreamAttributes& attributes) {
        const auto x = number(attributes, QLatin1StringView("x"));
        const auto y = number(attributes, QLatin1StringView("y"));
        const auto width = number(attributes, QLatin1StringView("width"));
        const auto height = number(attributes, QLatin1StringView("height"));
        if (!x || !y || !width || !height) return std::nullopt;
        const double radius = number(attributes, QLatin1StringView("rx")).value_or(0);
        return SvgDrawing::Rectangle{{*x, *y, *width, *height}, radius};
    }

    static bool readEffect(QStringView paint, std::optional<Effect>& effect) {
        if (paint == QLatin1StringView("#000")) effect = Effect::draw;
        if (paint == QLatin1StringView("#fff")) effect = Effect::cutOut;
        return effect || paint.isEmpty() || paint == QLatin1StringView("none");
    }

    QXmlStreamReader xml_;
    SvgDrawing drawing_;
};

std::optional<SvgDrawing> SvgDrawing::parse(const QByteArray& svg) {
    return SvgReader(svg).read();
}

void SvgDrawing::moveEdges(Shape& shape, const QTransform& pixels) {
    const Axis x{pixels.m11(), pixels.dx()};
    const Axis y{pixels.m22(), pixels.dy()};
    if (shape.rectangle) {
        auto [left, top, right, bottom] = std::array<double, 4>{};
        shape.rectangle->place.getCoords(&left, &top, &right, &bottom);
        x.moveEdges(left, right);
        y.moveEdges(top, bottom);
        shape.rectangle->place.setCoords(left, top, right, bottom);
        shape.path = shape.rectangle->path();
    } else if (!shape.fill) {
        double width = shape.pen.widthF();
        moveLine(shape.path, width, x, y);
        shape.pen.setWidthF(width);
    }
}

void SvgDrawing::paint(QPainter& painter, const QColor& color, double lineScale, Edges edges) const {
    const auto setEffect = [&painter](Effect effect) {
        painter.setCompositionMode(effect == Effect::draw ? QPainter::CompositionMode_SourceOver
                                                          : QPainter::CompositionMode_DestinationOut);
    };
    // Cut out for good, however translucent the colour is.
    const auto brush = [&color](Effect effect) { return QBrush(effect == Effect::draw ? color : Qt::black); };
    for (Shape shape : shapes_) {
        if (!shape.fill) shape.pen.setWidthF(shape.pen.widthF() * lineScale);
        if (edges == Edges::onWholePixels) moveEdges(shape, painter.transform());
        if (shape.fill) {
            setEffect(*shape.fill);
            painter.fillPath(shape.path, brush(*shape.fill));
        }
        if (shape.stroke) {
            setEffect(*shape.stroke);
            shape.pen.setBrush(brush(*shape.stroke));
            painter.strokePath(shape.path, shape.pen);
        }
    }
}

}  // namespace purlock::host_linux
