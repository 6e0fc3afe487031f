#pragma once

#include "platform/ui/Constants.h"
#include "platform/ui/Geometry.h"

#include <QColor>
#include <QPoint>
#include <QRect>
#include <QString>

#include <string>
#include <string_view>

/// Between the types of the window layer and those of Qt.
namespace tavrin::qt {

[[nodiscard]] inline QString toQString(std::u16string_view text) {
    return QString(reinterpret_cast<const QChar*>(text.data()), static_cast<qsizetype>(text.size()));
}
/// Without a copy: valid while `text` is.
[[nodiscard]] inline QString viewAsQString(std::u16string_view text) {
    return QString::fromRawData(reinterpret_cast<const QChar*>(text.data()),
                                static_cast<qsizetype>(text.size()));
}
[[nodiscard]] inline std::u16string toU16(QStringView text) {
    return {reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())};
}

[[nodiscard]] inline QColor toQColor(COLORREF colour) {
    return QColor(static_cast<int>(colour & 0xFF), static_cast<int>(colour >> 8 & 0xFF),
                  static_cast<int>(colour >> 16 & 0xFF));
}
[[nodiscard]] inline COLORREF toColorRef(const QColor& colour) {
    return static_cast<COLORREF>(colour.red() | colour.green() << 8 | colour.blue() << 16);
}

[[nodiscard]] inline QRect toQRect(const CRect& rect) {
    return QRect(rect.left, rect.top, rect.Width(), rect.Height());
}
[[nodiscard]] inline CPoint toCPoint(QPoint point) {
    return {point.x(), point.y()};
}

} // namespace tavrin::qt
