// What a user waits for a list after "<", on the headless platform: the first list of a stylesheet in a new
// editor, and a list at the end of DocBook documents of 1, 10 and 100 MB.
#include "control/SchemaDocument.h"
#include "control/TextEditorCtrl.h"
#include "platform/headless/HeadlessPlatform.h"
#include "platform/headless/HeadlessWindow.h"
#include "platform/headless/RecordingDC.h"
#include "platform/schema/SchemaSources.h"
#include "platform/ui/CListCtrl.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace tavrin {
namespace {

constexpr CRect page{0, 0, 1600, 1000};
constexpr const char* docBook = "/usr/share/xml/docbook/schema/rng/5.0/docbook.rng";

/// A user who counts the rows of each list and closes it.
struct Editor {
    explicit Editor(std::string_view text) {
        platform.setPopupUser([this] {
            rows = dynamic_cast<CListCtrl&>(platform.popup()->window()).GetItemCount();
            platform.pressKey(ctrl, {.key = VK_ESCAPE});
            return true;
        });
        host.CreateWindowIn(nullptr, {.rect = page});
        ctrl.Create(&host, page);
        ctrl.SetFocus();
        SmartPtr<ByteBuffer> bytes = ByteBuffer::allocate(text.size());
        std::ranges::copy(text, bytes->data());
        ctrl.getBuffer().loadBytes(std::move(bytes));
        ctrl.OnInitialUpdate();
        ctrl.updateScrollbars();
    }
    void typeTag() {
        platform.typeCharacter(ctrl, u'<');
        benchmark::DoNotOptimize(rows);
    }
    void takeBack() {
        platform.pressKey(ctrl, {.key = VK_BACK});
        HeadlessPlatform::windowOf(ctrl).clearRecord();
    }

    HeadlessPlatform platform;
    CWnd host{platform};
    TextEditorCtrl ctrl{platform};
    int rows = 0;
};

void report(benchmark::State& state, int rows) {
    if (rows == 0)
        state.SkipWithError("no list came up");
    state.counters["rows"] = rows;
}

void firstListOfAStylesheet(benchmark::State& state) {
    int rows = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto editor = std::make_unique<Editor>(
            "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\">\n"
            "<xsl:template match=\"/\">\n\n</xsl:template>\n</xsl:stylesheet>");
        const auto schemas = builtInSchemas(editor->ctrl.getBuffer());
        editor->ctrl.setSchemaSource(schemas.get());
        editor->ctrl.gotoLineCol(2, 0);
        state.ResumeTiming();
        editor->typeTag();
        state.PauseTiming();
        rows = editor->rows;
        editor.reset();
        state.ResumeTiming();
    }
    report(state, rows);
}
BENCHMARK(firstListOfAStylesheet)->Unit(benchmark::kMillisecond);

/// A book of about so many bytes, and everything that its schema takes to be read.
struct Book {
    explicit Book(std::size_t bytes) : editor(textOf(bytes)) {
        schemas.bind(docBook);
        schemas.update();
        while (!library.isIdle())
            thread.waitAndRun();
        editor.ctrl.setSchemaSource(&schemas);
        editor.ctrl.gotoLineCol(editor.ctrl.getBuffer().getLineCount() - 2, 0);
        RecordingDC dc; // who sees the end has had the text parsed up to there
        editor.ctrl.OnDraw(&dc);
        const auto start = std::chrono::steady_clock::now();
        editor.typeTag();
        firstList = std::chrono::steady_clock::now() - start;
        editor.takeBack();
        while (!library.isIdle())
            thread.waitAndRun();
    }
    static std::string textOf(std::size_t bytes) {
        std::string text = "<book xmlns=\"http://docbook.org/ns/docbook\" version=\"5.0\">\n<chapter>\n";
        text.reserve(bytes + 512);
        while (text.size() < bytes)
            text += "<section><title>Parts</title>\n<para>Checked <emphasis>by hand</emphasis>, see the "
                    "list.</para>\n</section>\n";
        return text + "\n</chapter>\n</book>"; // the caret goes on the empty line
    }

    Editor editor;
    QueuedEditorThread thread;
    SchemaLibrary library{thread, {.load = fileSchemaLoader(), .builtIn = builtInVocabularies()}};
    DocumentSchemas schemas{
        schemaDocument(editor.ctrl.getBuffer(), [] { return std::filesystem::path("/tmp/book.xml"); }),
        library};
    std::chrono::duration<double, std::milli> firstList{}; ///< what is learnt of the tags before is kept
};

Book* bookOf(benchmark::State& state) {
    static std::map<std::int64_t, std::unique_ptr<Book>> books;
    if (!std::filesystem::exists(docBook)) {
        state.SkipWithError("DocBook 5 is not installed");
        return nullptr;
    }
    auto& book = books[state.range(0)];
    if (!book)
        book = std::make_unique<Book>(static_cast<std::size_t>(state.range(0)) << 20);
    return book.get();
}

void listAtTheEndOfABook(benchmark::State& state) {
    Book* book = bookOf(state);
    if (!book)
        return;
    for (auto _ : state) {
        book->editor.typeTag();
        state.PauseTiming();
        book->editor.takeBack();
        while (!book->library.isIdle()) // the worker compares with the disk meanwhile
            book->thread.waitAndRun();
        state.ResumeTiming();
    }
    report(state, book->editor.rows);
    state.counters["firstMs"] = book->firstList.count();
    book->editor.ctrl.ClearUndo(&book->editor.ctrl);
}
BENCHMARK(listAtTheEndOfABook)->Arg(1)->Arg(10)->Arg(100)->ArgName("MB")->Unit(benchmark::kMillisecond);

} // namespace
} // namespace tavrin
