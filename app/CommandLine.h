#pragma once

#include <QStringList>

namespace tavrin::app {

/// What the program was asked to do.
struct CommandLine {
    enum Task { Edit, Screenshot, Print, Help, Version, Error } task = Edit;
    QStringList files;
    QString output; ///< where the screenshot or the printed file goes
    QString error;  ///< in words, when it makes no sense
};

/// `arguments` without the program's name. What follows "--" are files.
[[nodiscard]] CommandLine parseCommandLine(const QStringList& arguments);

/// What --help prints.
[[nodiscard]] QString usage();

} // namespace tavrin::app
