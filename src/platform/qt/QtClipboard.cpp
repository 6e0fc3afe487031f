#include "platform/qt/QtClipboard.h"

#include "platform/qt/Conversions.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace tavrin::qt {

bool QtClipboard::setText(std::u16string_view text) {
    QGuiApplication::clipboard()->setText(toQString(text));
    return true;
}

std::optional<std::u16string> QtClipboard::text() {
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    if (!data || !data->hasText())
        return std::nullopt;
    return toU16(data->text());
}

bool QtClipboard::hasText() {
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    return data && data->hasText();
}

} // namespace tavrin::qt
