#include "platform/linux/drawing/view_style.h"

#include <QTextDocument>
#include <algorithm>
#include <cmath>

namespace purlock::host_linux {

namespace {

// A text that somebody else made is not laid out without end.
constexpr std::size_t longestText = 2000;
constexpr qsizetype longestPlainTip = 80;  // only markup is wrapped

QFont::Weight qtWeight(FontWeight weight) {
    switch (weight) {
        case FontWeight::regular:
            return QFont::Normal;
        case FontWeight::medium:
            return QFont::Medium;
        case FontWeight::semibold:
            return QFont::DemiBold;
        case FontWeight::bold:
            return QFont::Bold;
    }
    return QFont::Normal;
}

bool breaksTheLine(QChar character) {
    return character.category() == QChar::Other_Control || character == QChar::LineSeparator ||
           character == QChar::ParagraphSeparator;
}

}  // namespace

QColor qtColor(const Color& color) {
    const auto component = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
    return QColor::fromRgbF(component(color.red), component(color.green), component(color.blue),
                            component(color.opacity));
}

QFont qtFont(const Font& font) {
    QFont result;
    result.setPixelSize(std::max(1, static_cast<int>(std::lround(font.size))));
    result.setWeight(qtWeight(font.weight));
    result.setItalic(font.slant == FontSlant::italic);
    return result;
}

QString lineText(const std::string& text) {
    const auto bytes = std::min(text.size(), longestText * 4);  // of UTF-8, at most
    QString line = QString::fromUtf8(text.data(), static_cast<qsizetype>(bytes)).left(longestText);
    std::ranges::replace_if(line, breaksTheLine, QLatin1Char(' '));
    return line;
}

QString toolTipText(const QString& text) {
    if (text.size() <= longestPlainTip && !Qt::mightBeRichText(text)) return text;
    return QStringLiteral("<qt>") + text.toHtmlEscaped() + QStringLiteral("</qt>");
}

QString withoutMnemonics(QString text) {
    return text.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

}  // namespace purlock::host_linux
