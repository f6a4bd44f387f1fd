#include "platform/linux/drawing/symbols.h"

#include <QCache>
#include <QFile>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <utility>

#include "platform/linux/drawing/svg_drawing.h"

namespace purlock::host_linux {

namespace {

constexpr double heightOfPoint = 1.2;  // a symbol reaches from a text's ascenders to its descenders
constexpr qsizetype keptBytes = 256 * 1024;

/// A symbol as it looks once it is drawn.
struct Look {
    QString name;
    QSize pixels;
    FontWeight weight = FontWeight::regular;
    QRgb color = 0;
    double devicePixelRatio = 1;

    bool operator==(const Look&) const = default;
};

std::size_t qHash(const Look& look, std::size_t seed = 0) {
    return qHashMulti(seed, look.name, look.pixels.width(), look.pixels.height(),
                      static_cast<int>(look.weight), look.color, look.devicePixelRatio);
}

/// The drawing of that name, read when it is first asked for. There are as many as there are files.
const SvgDrawing* drawingNamed(const std::string& name) {
    static std::map<std::string, std::optional<SvgDrawing>> drawings;
    const auto found = drawings.find(name);
    if (found != drawings.end()) return found->second ? &*found->second : nullptr;
    QFile file(":/purlock/symbols/" + QString::fromStdString(name) + ".svg");
    if (name.find('/') != std::string::npos || !file.open(QIODevice::ReadOnly)) return nullptr;
    const auto& drawing = drawings.emplace(name, SvgDrawing::parse(file.readAll())).first->second;
    return drawing ? &*drawing : nullptr;
}

/// The files are drawn for semibold.
double lineScale(FontWeight weight) {
    switch (weight) {
        case FontWeight::regular:
            return 0.82;
        case FontWeight::medium:
            return 0.91;
        case FontWeight::semibold:
            return 1;
        case FontWeight::bold:
            return 1.12;
    }
    return 1;
}

/// At other ratios lines of equal distance would no longer be of equal distance.
SvgDrawing::Edges edgesAt(double devicePixelRatio) {
    const bool isWhole = devicePixelRatio == std::floor(devicePixelRatio);
    return isWhole ? SvgDrawing::Edges::onWholePixels : SvgDrawing::Edges::asDrawn;
}

/// `drawn` is the part of the image, in the middle, that the drawing fills.
QImage render(const SvgDrawing& drawing, QSize image, QSizeF drawn, FontWeight weight, const QColor& color,
              SvgDrawing::Edges edges) {
    QImage result(image, QImage::Format_ARGB32_Premultiplied);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate((image.width() - drawn.width()) / 2, (image.height() - drawn.height()) / 2);
    painter.scale(drawn.width() / drawing.size().width(), drawn.height() / drawing.size().height());
    // Drawn opaque and thinned out afterwards, so that overlapping shapes do not add up.
    QColor opaque = color;
    opaque.setAlpha(255);
    drawing.paint(painter, opaque, lineScale(weight), edges);
    painter.resetTransform();
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    if (color.alpha() != 255) painter.fillRect(result.rect(), QColor(0, 0, 0, color.alpha()));
    return result;
}

}  // namespace

bool hasSymbol(const std::string& name) {
    return drawingNamed(name) != nullptr;
}

QImage symbolImage(const std::string& name, double pointSize, FontWeight weight, const QColor& color,
                   double devicePixelRatio) {
    static QCache<Look, QImage> kept(keptBytes);
    const SvgDrawing* drawing = drawingNamed(name);
    if (drawing == nullptr) return {};
    const int height = std::max(1, qRound(pointSize * heightOfPoint * devicePixelRatio));
    const double widthOfHeight = drawing->size().width() / drawing->size().height();
    const QSize pixels(std::max(1, qRound(height * widthOfHeight)), height);
    const Look look{QString::fromStdString(name), pixels, weight, color.rgba(), devicePixelRatio};
    if (const QImage* known = kept.object(look)) return *known;
    auto* image = new QImage(render(*drawing, pixels, pixels, weight, color, edgesAt(devicePixelRatio)));
    image->setDevicePixelRatio(devicePixelRatio);
    QImage result = *image;
    kept.insert(look, image, image->sizeInBytes());  // takes it, and drops it at once if it is too large
    return result;
}

QImage squareSymbol(const std::string& name, int pixels, const QColor& color) {
    const SvgDrawing* drawing = drawingNamed(name);
    if (drawing == nullptr || pixels <= 0) return {};
    const QSizeF drawn = drawing->size().scaled(pixels, pixels, Qt::KeepAspectRatio);
    return render(*drawing, {pixels, pixels}, drawn, FontWeight::semibold, color, SvgDrawing::Edges::asDrawn);
}

}  // namespace purlock::host_linux
