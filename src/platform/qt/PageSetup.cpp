#include "platform/qt/PageSetup.h"

#include "platform/core/UserSettings.h"
#include "platform/qt/Conversions.h"

#include <QLocale>
#include <QPageSize>

#include <algorithm>
#include <cmath>

namespace tavrin::qt {

namespace {

constexpr std::string_view section = "Page Setup";
constexpr std::string_view paperKey = "Paper"; // a name of the printers' standard, such as "A4"
constexpr std::string_view landscapeKey = "Landscape";
// In hundredths of a millimetre.
constexpr std::string_view leftKey = "Left Margin";
constexpr std::string_view topKey = "Top Margin";
constexpr std::string_view rightKey = "Right Margin";
constexpr std::string_view bottomKey = "Bottom Margin";

constexpr int unitsPerMillimetre = 100;
constexpr int defaultMargin = 10 * unitsPerMillimetre;

QPageSize::PageSizeId usualPaper() {
    return QLocale().measurementSystem() == QLocale::ImperialUSSystem ? QPageSize::Letter : QPageSize::A4;
}

QPageSize::PageSizeId paperNamed(const QString& key) {
    for (int id = 0; id <= QPageSize::LastPageSize; ++id)
        if (id != QPageSize::Custom && QPageSize::key(static_cast<QPageSize::PageSizeId>(id)) == key)
            return static_cast<QPageSize::PageSizeId>(id);
    return usualPaper();
}

} // namespace

QPageLayout readPageLayout(const UserSettings& settings) {
    const QPageSize paper(paperNamed(toQString(settings.getStringValue(section, paperKey, u""))));
    const auto margin = [&settings](std::string_view key) {
        const int value = settings.getIntValue(section, key, defaultMargin);
        const bool possible = value >= 0 && value <= maximumMargin * unitsPerMillimetre;
        return (possible ? value : defaultMargin) / static_cast<double>(unitsPerMillimetre);
    };
    const bool landscape = settings.getBoolValue(section, landscapeKey, false);
    return {paper, landscape ? QPageLayout::Landscape : QPageLayout::Portrait,
            QMarginsF(margin(leftKey), margin(topKey), margin(rightKey), margin(bottomKey)),
            QPageLayout::Millimeter};
}

void writePageLayout(UserSettings& settings, const QPageLayout& layout) {
    const QMarginsF margins = layout.margins(QPageLayout::Millimeter);
    const auto write = [&settings](std::string_view key, double millimetres) {
        settings.setIntValue(section, key, static_cast<int>(std::lround(millimetres * unitsPerMillimetre)));
    };
    settings.setStringValue(section, paperKey, toU16(layout.pageSize().key()));
    settings.setBoolValue(section, landscapeKey, layout.orientation() == QPageLayout::Landscape);
    write(leftKey, margins.left());
    write(topKey, margins.top());
    write(rightKey, margins.right());
    write(bottomKey, margins.bottom());
}

} // namespace tavrin::qt
