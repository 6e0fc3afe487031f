// The control on the headless platform, on documents of 1, 10 and 100 MB: what a key press, a click or a page
// of painting costs. The documents are also held on one single line (cut into pieces by the load).

#include "control/TextEditorCtrl.h"
#include "generated_xml.h"
#include "platform/headless/HeadlessPlatform.h"
#include "platform/headless/HeadlessWindow.h"
#include "platform/headless/RecordingDC.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <memory>

namespace tavrin {
namespace {

constexpr CRect page{0, 0, 1600, 1000};

struct Editor {
    explicit Editor(std::u16string_view text) {
        host.CreateWindowIn(nullptr, {.rect = page});
        ctrl.Create(&host, page);
        ctrl.SetFocus();
        ctrl.setText(std::u16string(text));
        ctrl.OnInitialUpdate();
        ctrl.updateScrollbars();
    }
    void paint() {
        RecordingDC dc;
        ctrl.OnDraw(&dc);
        benchmark::DoNotOptimize(dc.drawings().size());
    }
    void goTo(int line) {
        ctrl.gotoLineCol(line, 0);
        paint();
    }
    /// The requests that the platform records would otherwise pile up.
    void forgetRequests() { HeadlessPlatform::windowOf(ctrl).clearRecord(); }

    HeadlessPlatform platform;
    CWnd host{platform};
    TextEditorCtrl ctrl{platform};
};

Editor& editorOf(const benchmark::State& state) {
    static std::map<std::pair<std::int64_t, bool>, std::unique_ptr<Editor>> editors;
    const bool oneLine = state.range(1) != 0;
    std::unique_ptr<Editor>& editor = editors[{state.range(0), oneLine}];
    if (!editor) {
        std::u16string text = bench::generatedXml(static_cast<std::size_t>(state.range(0)) << 20);
        if (oneLine)
            std::ranges::replace(text, u'\n', u' ');
        editor = std::make_unique<Editor>(text);
        editor->goTo(editor->ctrl.getBuffer().getLineCount() - 1); // reads everything once
    }
    return *editor;
}

void sizes(benchmark::internal::Benchmark* b) {
    for (const std::int64_t oneLine : {0, 1})
        for (const std::int64_t megabytes : {1, 10, 100})
            b->Args({megabytes, oneLine});
    b->ArgNames({"MB", "oneLine"})->Unit(benchmark::kMicrosecond);
}

void typeWithPaint(benchmark::State& state) {
    Editor& editor = editorOf(state);
    editor.goTo(editor.ctrl.getBuffer().getLineCount() / 2);
    for (auto _ : state) {
        editor.platform.typeCharacter(editor.ctrl, u'x');
        editor.paint();
        editor.platform.pressKey(editor.ctrl, {VK_BACK});
        editor.paint();
        editor.forgetRequests();
    }
    editor.ctrl.ClearUndo(&editor.ctrl);
}
BENCHMARK(typeWithPaint)->Apply(sizes);

/// In the middle of a line that was pasted, which no load has cut into pieces.
void typeIntoAPastedLine(benchmark::State& state) {
    std::u16string text = bench::generatedXml(static_cast<std::size_t>(state.range(0)) << 10);
    std::ranges::replace(text, u'\n', u' ');
    Editor editor(u"");
    editor.ctrl.replaceSelection(text, false);
    editor.ctrl.gotoLineCol(0, static_cast<int>(text.size() / 2));
    editor.paint();
    for (auto _ : state) {
        editor.platform.typeCharacter(editor.ctrl, u'x');
        editor.paint();
        editor.platform.pressKey(editor.ctrl, {VK_BACK});
        editor.paint();
        editor.forgetRequests();
    }
}
BENCHMARK(typeIntoAPastedLine)
    ->Arg(4)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->ArgName("KB")
    ->Unit(benchmark::kMicrosecond);

void returnWithPaint(benchmark::State& state) {
    Editor& editor = editorOf(state);
    editor.goTo(editor.ctrl.getBuffer().getLineCount() / 2);
    for (auto _ : state) {
        editor.platform.pressKey(editor.ctrl, {VK_RETURN});
        editor.paint();
        editor.platform.pressKey(editor.ctrl, {VK_BACK});
        editor.paint();
        editor.forgetRequests();
    }
    editor.ctrl.ClearUndo(&editor.ctrl);
}
BENCHMARK(returnWithPaint)->Apply(sizes);

void pageDownWithPaint(benchmark::State& state) {
    Editor& editor = editorOf(state);
    editor.goTo(0);
    for (auto _ : state) {
        editor.platform.pressKey(editor.ctrl, {VK_NEXT});
        editor.paint();
        editor.forgetRequests();
        if (editor.ctrl.getCurrentLine() + 1 >= editor.ctrl.getBuffer().getLineCount())
            editor.goTo(0);
    }
}
BENCHMARK(pageDownWithPaint)->Apply(sizes);

void clickIntoALine(benchmark::State& state) {
    Editor& editor = editorOf(state);
    editor.goTo(0);
    for (auto _ : state) {
        editor.platform.sendMouse(editor.ctrl, WM_LBUTTONDOWN, {1500, 8});
        editor.platform.sendMouse(editor.ctrl, WM_LBUTTONUP, {1500, 8});
        editor.forgetRequests();
    }
}
BENCHMARK(clickIntoALine)->Apply(sizes);

void scrollSizesAndGutter(benchmark::State& state) {
    Editor& editor = editorOf(state);
    for (auto _ : state) {
        editor.ctrl.updateScrollbars();
        benchmark::DoNotOptimize(editor.ctrl.getLineNumbersArea());
    }
}
BENCHMARK(scrollSizesAndGutter)->Apply(sizes);

} // namespace
} // namespace tavrin

BENCHMARK_MAIN();
