// The control on the headless platform: what a key press, a click or a page of painting costs.

#include "EditorOnDocument.h"

namespace tavrin {
namespace {

using bench::Editor;
using bench::editorOf;
using bench::sizes;

void typeAndErase(Editor& editor) {
    editor.platform.typeCharacter(editor.ctrl, u'x');
    editor.paint();
    editor.platform.pressKey(editor.ctrl, {VK_BACK});
    editor.paint();
    editor.forgetRequests();
}

void typeWithPaint(benchmark::State& state) {
    Editor& editor = editorOf(state);
    editor.goTo(editor.ctrl.getBuffer().getLineCount() / 2);
    for (auto _ : state)
        typeAndErase(editor);
    editor.ctrl.ClearUndo(&editor.ctrl);
}
BENCHMARK(typeWithPaint)->Apply(sizes)->Unit(benchmark::kMicrosecond);

/// In the middle of a line that was pasted, which no load has cut into pieces.
void typeIntoAPastedLine(benchmark::State& state) {
    std::u16string text = bench::generatedXml(static_cast<std::size_t>(state.range(0)) << 10);
    std::ranges::replace(text, u'\n', u' ');
    Editor editor(u"");
    editor.ctrl.replaceSelection(text, false);
    editor.ctrl.gotoLineCol(0, static_cast<int>(text.size() / 2));
    editor.paint();
    for (auto _ : state)
        typeAndErase(editor);
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
BENCHMARK(returnWithPaint)->Apply(sizes)->Unit(benchmark::kMicrosecond);

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
BENCHMARK(pageDownWithPaint)->Apply(sizes)->Unit(benchmark::kMicrosecond);

void clickIntoALine(benchmark::State& state) {
    Editor& editor = editorOf(state);
    editor.goTo(0);
    for (auto _ : state) {
        editor.platform.sendMouse(editor.ctrl, WM_LBUTTONDOWN, {1500, 8});
        editor.platform.sendMouse(editor.ctrl, WM_LBUTTONUP, {1500, 8});
        editor.forgetRequests();
    }
}
BENCHMARK(clickIntoALine)->Apply(sizes)->Unit(benchmark::kMicrosecond);

void scrollSizesAndGutter(benchmark::State& state) {
    Editor& editor = editorOf(state);
    for (auto _ : state) {
        editor.ctrl.updateScrollbars();
        benchmark::DoNotOptimize(editor.ctrl.getLineNumbersArea());
    }
}
BENCHMARK(scrollSizesAndGutter)->Apply(sizes)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace tavrin

BENCHMARK_MAIN();
