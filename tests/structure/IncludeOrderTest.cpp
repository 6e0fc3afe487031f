#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// A folder of the tree and those that it may include, beside itself.
struct Layer {
    std::string_view folder;
    std::vector<std::string_view> mayInclude;
};

/// The layer table of docs/architecture.md. Folders inside others come first.
const std::vector<Layer>& layers() {
    static const std::vector<Layer> table = {
        {"platform/core", {}},
        {"platform/ui", {"platform/core"}},
        {"platform/schema", {"platform/core"}},
        {"platform/headless", {"platform/core", "platform/ui"}},
        {"platform/qt/widget",
         {"platform/core", "platform/ui", "platform/qt", "buffer", "parsers", "document", "view",
          "autocomplete", "options", "control"}},
        {"platform/qt", {"platform/core", "platform/ui"}},
        {"buffer", {"platform/core"}},
        {"parsers", {"platform/core", "buffer"}},
        {"files", {"platform/core", "buffer"}},
        {"document", {"platform/core", "buffer", "parsers"}},
        {"recovery", {"platform/core", "buffer", "files", "document"}},
        {"view", {"platform/core", "platform/ui", "buffer", "parsers", "document"}},
        {"autocomplete",
         {"platform/core", "platform/ui", "platform/schema", "buffer", "parsers", "document", "view"}},
        {"options", {"platform/core", "platform/ui", "view"}},
        {"control",
         {"platform/core", "platform/ui", "platform/schema", "buffer", "parsers", "document", "view",
          "autocomplete", "options"}},
    };
    return table;
}

/// The layer of a path relative to src/; null when it lies in none.
const Layer* layerOf(std::string_view path) {
    const auto found = std::ranges::find_if(layers(), [&](const Layer& layer) {
        return path.starts_with(layer.folder) && path.substr(layer.folder.size()).starts_with('/');
    });
    return found == layers().end() ? nullptr : &*found;
}

bool startsWithAny(std::string_view path, std::initializer_list<std::string_view> folders) {
    return std::ranges::any_of(folders, [&](std::string_view folder) { return path.starts_with(folder); });
}

/// True when code at `path` (relative to the root) may include src/`include`.
bool mayInclude(std::string_view path, std::string_view include) {
    const Layer* to = layerOf(include);
    if (path.starts_with("src/")) {
        const Layer* from = layerOf(path.substr(4));
        return from && to && (from == to || std::ranges::count(from->mayInclude, to->folder) > 0);
    }
    // Files beside the including one, in programs of more than one source.
    if (!to)
        return include.find("..") == std::string_view::npos;
    const bool inProgram = startsWithAny(path, {"app/", "examples/"});
    return !inProgram || to->folder != "platform/headless";
}

bool mayUseQt(std::string_view path) {
    return startsWithAny(
        path, {"src/platform/qt/", "app/", "examples/", "bench/peers/", "tests/qt/", "tests/app/"});
}

/// Names that compilers and libraries define for a system, a machine or themselves.
bool asksForPlatform(const std::string& condition) {
    static const std::regex name(R"((^|[^\w])(?!__cplusplus|__cpp_|__has_)(_[_A-Z]\w*|Q_OS_\w*|WIN32)\b)");
    return std::regex_search(condition, name);
}

/// What a source does against the order of the layers, one text a fault.
std::vector<std::string> faults(const std::string& path, std::istream& source) {
    static const std::regex quoted(R"re(^\s*#\s*include\s*"([^"]+)")re");
    static const std::regex qt(R"(^\s*#\s*include\s*<(Q[A-Za-z]\w*(/\w+)?)>)");
    static const std::regex conditional(R"(^\s*#\s*(if|ifdef|ifndef|elif)\b(.*))");
    std::vector<std::string> found;
    std::string line;
    for (int number = 1; std::getline(source, line); ++number) {
        const auto report = [&](const std::string& what) {
            found.push_back(path + ":" + std::to_string(number) + ": " + what);
        };
        std::smatch match;
        if (std::regex_search(line, match, quoted)) {
            if (!mayInclude(path, match[1].str()))
                report("includes " + match[1].str());
        } else if (std::regex_search(line, match, qt)) {
            if (!mayUseQt(path))
                report("includes Qt's " + match[1].str());
        } else if (std::regex_search(line, match, conditional)) {
            if (!path.starts_with("src/platform/") && asksForPlatform(match[2].str()))
                report("asks for the platform: " + match[2].str());
        }
    }
    return found;
}

bool isSource(const fs::path& path) {
    return path.extension() == ".h" || path.extension() == ".cpp";
}

TEST(Structure, noSourceRunsAgainstTheOrderOfTheLayers) {
    const fs::path root = SOURCE_TREE;
    int sources = 0;
    for (const char* folder : {"src", "app", "tools", "examples", "tests", "bench"}) {
        if (!fs::exists(root / folder))
            continue;
        for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
            if (!entry.is_regular_file() || !isSource(entry.path()))
                continue;
            ++sources;
            const std::string path = fs::relative(entry.path(), root).generic_string();
            std::ifstream source(entry.path());
            for (const std::string& fault : faults(path, source))
                ADD_FAILURE() << fault;
            EXPECT_TRUE(!path.starts_with("src/") || layerOf(path.substr(4))) << path << " lies in no layer";
        }
    }
    EXPECT_GT(sources, 50) << "the tree was not found";
}

TEST(Structure, theRulesTellGoodSourcesFromBadOnes) {
    struct Case {
        const char* path;
        const char* line;
        bool allowed;
    };
    const Case cases[] = {
        {"src/buffer/Buffer.cpp", "#include \"platform/core/Encoding.h\"", true},
        {"src/buffer/Buffer.cpp", "#include \"buffer/Pages.h\"", true},
        {"src/buffer/Buffer.cpp", "#include \"parsers/Parser.h\"", false},
        {"src/buffer/Buffer.cpp", "#include \"Pages.h\"", false},
        {"src/platform/core/ByteBuffer.cpp", "  #  include \"buffer/Buffer.h\"", false},
        {"src/platform/ui/CWnd.h", "#include \"view/CTextEditorView.h\"", false},
        {"src/platform/qt/QtPlatform.cpp", "#include \"control/TextEditorCtrl.h\"", false},
        {"src/platform/qt/widget/XmlEditorWidget.cpp", "#include \"control/TextEditorCtrl.h\"", true},
        {"src/platform/qt/QtPlatform.cpp", "#include \"platform/qt/widget/XmlEditorWidget.h\"", false},
        {"src/view/Drawing.cpp", "#include \"platform/headless/HeadlessPlatform.h\"", false},
        {"src/view/Drawing.cpp", "#include <QPainter>", false},
        {"src/platform/qt/QtPlatform.cpp", "#include <QPainter>", true},
        {"tests/qt/PaintTest.cpp", "#include <QtTest/QTest>", true},
        {"tests/view/PaintTest.cpp", "#include <QtTest/QTest>", false},
        {"app/main.cpp", "#include \"MainWindow.h\"", true},
        {"app/main.cpp", "#include \"platform/headless/HeadlessPlatform.h\"", false},
        {"tools/replay.cpp", "#include \"platform/headless/HeadlessPlatform.h\"", true},
        {"src/view/Drawing.cpp", "#if defined(__linux__)", false},
        {"src/view/Drawing.cpp", "#ifdef _WIN32", false},
        {"src/view/Drawing.cpp", "#elif defined(Q_OS_MACOS)", false},
        {"src/platform/core/ByteBuffer.cpp", "#if defined(__linux__)", true},
        {"src/view/Drawing.cpp", "#ifndef NDEBUG", true},
        {"src/view/Drawing.cpp", "#if __cplusplus >= 202302L", true},
    };
    for (const Case& c : cases) {
        std::istringstream source(c.line);
        EXPECT_EQ(faults(c.path, source).empty(), c.allowed) << c.path << ": " << c.line;
    }
}

} // namespace
