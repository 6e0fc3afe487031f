#pragma once

#include <QPageLayout>

namespace tavrin {

class UserSettings;

namespace qt {

/// The largest margin of a page set-up.
inline constexpr int maximumMargin = 100; // millimetres

/// The paper's size, its orientation and margins (in millimetres) as the user's settings have them; a value
/// that makes no sense counts as missing. By default a page of the country's usual size with margins of 10
/// mm.
[[nodiscard]] QPageLayout readPageLayout(const UserSettings& settings);
void writePageLayout(UserSettings& settings, const QPageLayout& layout);

} // namespace qt
} // namespace tavrin
