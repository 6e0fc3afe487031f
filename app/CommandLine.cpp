#include "CommandLine.h"

namespace tavrin::app {

namespace {

CommandLine mistake(const QString& text) {
    return {CommandLine::Error, {}, {}, text};
}

} // namespace

CommandLine parseCommandLine(const QStringList& arguments) {
    CommandLine result;
    bool options = true;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (!options || !argument.startsWith('-') || argument == "-") {
            result.files += argument;
        } else if (argument == "--") {
            options = false;
        } else if (argument == "--help" || argument == "-h") {
            return {CommandLine::Help, {}, {}, {}};
        } else if (argument == "--version") {
            return {CommandLine::Version, {}, {}, {}};
        } else if (argument == "--screenshot") {
            if (++i == arguments.size())
                return mistake("--screenshot needs the name of the picture to write.");
            result.task = CommandLine::Screenshot;
            result.output = arguments[i];
        } else if (argument == "--print") {
            if (++i == arguments.size())
                return mistake("--print needs the name of the PDF file to write.");
            result.task = CommandLine::Print;
            result.output = arguments[i];
        } else {
            return mistake(QString("Unknown option %1.").arg(argument));
        }
    }
    if (result.task == CommandLine::Screenshot && result.files.size() > 1)
        return mistake("--screenshot shows one file.");
    if (result.task == CommandLine::Print && result.files.size() != 1)
        return mistake("--print prints one file.");
    return result;
}

QString usage() {
    return "Usage: tavrin-xml-editor [FILE...]\n"
           "       tavrin-xml-editor --screenshot OUT.png [FILE]\n"
           "       tavrin-xml-editor --print OUT.pdf FILE\n"
           "\n"
           "Edits XML documents. Each FILE opens in a window of its own.\n"
           "\n"
           "  --screenshot OUT.png  render the window into a picture, without a display\n"
           "  --print OUT.pdf       print the file into a PDF file with the user's page setup, without a "
           "display\n"
           "  --version             print the version\n"
           "  -h, --help            print this text\n"
           "\n"
           "Options of the window system such as -platform NAME and -style NAME are accepted as well.\n";
}

} // namespace tavrin::app
