// Find and replace through the control on the headless platform. A search that finds nothing reads everything
// once; Replace All of "currency" finds about 5,000 matches a megabyte.

#include "EditorOnDocument.h"
#include "platform/ui/CFindReplaceDialog.h"
#include "platform/ui/CFrameWnd.h"

namespace tavrin {
namespace {

using bench::Editor;
using bench::editorOf;
using bench::sizes;

void request(Editor& editor, UINT flags, std::u16string_view what, std::u16string_view with = {}) {
    CFindReplaceDialog::send(editor.ctrl, {flags, what, with});
    editor.forgetRequests();
}

void findNothing(benchmark::State& state, UINT flags) {
    Editor& editor = editorOf(state);
    editor.ctrl.gotoLineCol(flags & FR_DOWN ? 0 : editor.ctrl.getBuffer().getLineCount() - 1, 0);
    for (auto _ : state)
        request(editor, FR_FINDNEXT | flags, u"no such text");
    state.SetBytesProcessed(state.range(0) * state.iterations() << 20);
}
BENCHMARK_CAPTURE(findNothing, downMatchCase, FR_DOWN | FR_MATCHCASE)
    ->Apply(sizes)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(findNothing, downAnyCase, UINT{FR_DOWN})->Apply(sizes)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(findNothing, upMatchCase, UINT{FR_MATCHCASE})->Apply(sizes)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(findNothing, upAnyCase, UINT{0})->Apply(sizes)->Unit(benchmark::kMillisecond);

/// One step of a search that finds a match near by.
void findNext(benchmark::State& state) {
    Editor& editor = editorOf(state);
    for (auto _ : state)
        request(editor, FR_FINDNEXT | FR_DOWN, u"currency");
}
BENCHMARK(findNext)->Apply(sizes)->Unit(benchmark::kMicrosecond);

enum class Measured { Replace, Undo, Redo };

void replaceAll(benchmark::State& state, Measured measured) {
    Editor& editor = editorOf(state);
    for (auto _ : state) {
        const auto run = [&](Measured what, auto step) {
            if (what != measured)
                state.PauseTiming();
            step();
            if (what != measured)
                state.ResumeTiming();
        };
        run(Measured::Replace,
            [&] { request(editor, FR_REPLACEALL | FR_MATCHCASE, u"currency", u"unit of account"); });
        run(Measured::Undo, [&] { editor.ctrl.OnEditUndo(); });
        run(Measured::Redo, [&] { editor.ctrl.OnEditRedo(); });
        state.PauseTiming();
        editor.ctrl.OnEditUndo();
        state.ResumeTiming();
    }
    const std::u16string& said = editor.ctrl.GetParentFrame()->GetMessageText();
    state.SetLabel(std::string(said.begin(), said.end()));
}
BENCHMARK_CAPTURE(replaceAll, replace, Measured::Replace)->Apply(sizes)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(replaceAll, undo, Measured::Undo)->Apply(sizes)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(replaceAll, redo, Measured::Redo)->Apply(sizes)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace tavrin

BENCHMARK_MAIN();
