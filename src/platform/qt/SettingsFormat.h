#pragma once

#include <QSettings>
#include <QString>

#include <optional>

namespace tavrin::qt {

/// The INI format of Qt, read and written with more care.
///
/// A file is replaced as a whole or not at all: Qt itself takes a write that the disk cut short for a good
/// one. A file that can't be understood counts as empty, and what it held is kept beside it under the name
/// with ".damaged" added (or ".damaged-2" and so on). If even that fails, the file is not written.
[[nodiscard]] QSettings::Format carefulIniFormat();

/// Where the content of a damaged file was kept when it was last read; nothing when it was sound. Asking
/// forgets the answer.
[[nodiscard]] std::optional<QString> takeDamagedCopy(const QString& settingsFile);

} // namespace tavrin::qt
