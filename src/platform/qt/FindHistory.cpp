#include "platform/qt/FindHistory.h"

namespace tavrin::qt {

namespace {
constexpr qsizetype longestKept = 1000;
} // namespace

QStringList FindHistory::read(const char* key) const {
    return store_.value(QLatin1String(key)).toStringList();
}

void FindHistory::add(const char* key, const QString& text) {
    if (text.isEmpty() || text.size() > longestKept)
        return;
    QStringList texts = read(key);
    if (!texts.isEmpty() && texts.front() == text)
        return;
    texts.removeAll(text);
    texts.prepend(text);
    store_.setValue(QLatin1String(key), texts.mid(0, kept));
}

} // namespace tavrin::qt
