#include "app/CommandLine.h"

#include <gtest/gtest.h>

using namespace tavrin::app;

namespace {

TEST(CommandLine, namesATaskAndFilesOrSaysWhatIsWrong) {
    const struct {
        QStringList arguments;
        CommandLine::Task task;
        QStringList files;
        QString output;
    } cases[] = {
        {{}, CommandLine::Edit, {}, ""},
        {{"a.xml", "b.xml"}, CommandLine::Edit, {"a.xml", "b.xml"}, ""},
        {{"--", "--help", "-x"}, CommandLine::Edit, {"--help", "-x"}, ""},
        {{"--screenshot", "o.png"}, CommandLine::Screenshot, {}, "o.png"},
        {{"a.xml", "--screenshot", "-o.png"}, CommandLine::Screenshot, {"a.xml"}, "-o.png"},
        {{"a.xml", "--help"}, CommandLine::Help, {}, ""},
        {{"--version"}, CommandLine::Version, {}, ""},
        {{"--screenshot"}, CommandLine::Error, {}, ""},
        {{"--screenshot", "o.png", "a", "b"}, CommandLine::Error, {}, ""},
        {{"--print", "o.pdf", "a.xml"}, CommandLine::Print, {"a.xml"}, "o.pdf"},
        {{"--print"}, CommandLine::Error, {}, ""},
        {{"--print", "o.pdf"}, CommandLine::Error, {}, ""},
        {{"--print", "o.pdf", "a", "b"}, CommandLine::Error, {}, ""},
        {{"--nonsense", "a.xml"}, CommandLine::Error, {}, ""},
    };
    for (const auto& c : cases) {
        const CommandLine line = parseCommandLine(c.arguments);
        const std::string which = c.arguments.join(' ').toStdString();
        EXPECT_EQ(line.task, c.task) << which;
        EXPECT_EQ(line.files, c.files) << which;
        EXPECT_EQ(line.output, c.output) << which;
        EXPECT_EQ(line.error.isEmpty(), c.task != CommandLine::Error) << which;
    }
}

} // namespace
