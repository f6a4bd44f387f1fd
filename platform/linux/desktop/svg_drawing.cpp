#include "platform/linux/desktop/svg_drawing.h"

#include <QPainter>
#include <QXmlStreamReader>
#include <array>
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

std::optional<QPainterPath> rectangle(const QXmlStreamAttributes& attributes) {
    const auto x = number(attributes, QLatin1StringView("x"));
    const auto y = number(attributes, QLatin1StringView("y"));
    const auto width = number(attributes, QLatin1StringView("width"));
    const auto height = number(attributes, QLatin1StringView("height"));
    if (!x || !y || !width || !height) return std::nullopt;
    const double radius = number(attributes, QLatin1StringView("rx")).value_or(0);
    QPainterPath path;
    path.addRoundedRect(*x, *y, *width, *height, radius, radius);
    return path;
}

std::optional<QPainterPath> outline(const QXmlStreamReader& xml) {
    const QXmlStreamAttributes attributes = xml.attributes();
    if (xml.name() == QLatin1StringView("circle")) return circle(attributes);
    if (xml.name() == QLatin1StringView("rect")) return rectangle(attributes);
    if (xml.name() == QLatin1StringView("path")) return pathOf(attributes.value("d"));
    return std::nullopt;
}

}  // namespace

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
        const auto path = outline(xml_);
        const QXmlStreamAttributes attributes = xml_.attributes();
        SvgDrawing::Shape shape;
        if (!path || !readEffect(attributes.value("fill"), shape.fill) ||
            !readEffect(attributes.value("stroke"), shape.stroke)) {
            return false;
        }
        shape.path = *path;
        const bool round = attributes.value("stroke-linecap") == QLatin1StringView("round");
        shape.pen.setWidthF(number(attributes, QLatin1StringView("stroke-width")).value_or(1));
        shape.pen.setCapStyle(round ? Qt::RoundCap : Qt::FlatCap);
        shape.pen.setJoinStyle(Qt::RoundJoin);
        drawing_.shapes_.push_back(std::move(shape));
        return true;
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

void SvgDrawing::paint(QPainter& painter, const QColor& color, double lineScale) const {
    const auto setEffect = [&painter](Effect effect) {
        painter.setCompositionMode(effect == Effect::draw ? QPainter::CompositionMode_SourceOver
                                                          : QPainter::CompositionMode_DestinationOut);
    };
    // Cut out for good, however translucent the colour is.
    const auto brush = [&color](Effect effect) { return QBrush(effect == Effect::draw ? color : Qt::black); };
    for (const Shape& shape : shapes_) {
        if (shape.fill) {
            setEffect(*shape.fill);
            painter.fillPath(shape.path, brush(*shape.fill));
        }
        if (shape.stroke) {
            setEffect(*shape.stroke);
            QPen pen = shape.pen;
            pen.setBrush(brush(*shape.stroke));
            if (!shape.fill) pen.setWidthF(pen.widthF() * lineScale);
            painter.strokePath(shape.path, pen);
        }
    }
}

}  // namespace purlock::host_linux
