// Find and replace through the control on the headless platform, on documents of 1, 10 and 100 MB, in lines
// and on one single line (cut into pieces by the load). A search that finds nothing reads everything once;
// Replace All of "currency" finds about 5,000 matches a megabyte.

#include "control/TextEditorCtrl.h"
#include "generated_xml.h"
#include "platform/headless/HeadlessPlatform.h"
#include "platform/ui/CFindReplaceDialog.h"
#include "platform/ui/CFrameWnd.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <memory>

namespace tavrin {
namespace {

struct Editor {
    explicit Editor(const std::u16string& text) {
        host.CreateWindowIn(nullptr, {.rect = {0, 0, 1600, 1000}});
        ctrl.Create(&host, host.GetClientRect());
        ctrl.setText(text);
        ctrl.OnInitialUpdate();
    }
    void request(UINT flags, std::u16string_view what, std::u16string_view with = {}) {
        CFindReplaceDialog::send(ctrl, {flags, what, with});
        HeadlessPlatform::windowOf(ctrl).clearRecord();
    }

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
    }
    return *editor;
}

void sizes(benchmark::internal::Benchmark* b) {
    for (const std::int64_t oneLine : {0, 1})
        for (const std::int64_t megabytes : {1, 10, 100})
            b->Args({megabytes, oneLine});
    b->ArgNames({"MB", "oneLine"})->Unit(benchmark::kMillisecond);
}

void findNothing(benchmark::State& state, UINT flags) {
    Editor& editor = editorOf(state);
    editor.ctrl.gotoLineCol(flags & FR_DOWN ? 0 : editor.ctrl.getBuffer().getLineCount() - 1, 0);
    for (auto _ : state)
        editor.request(FR_FINDNEXT | flags, u"no such text");
    state.SetBytesProcessed(state.range(0) * state.iterations() << 20);
}
BENCHMARK_CAPTURE(findNothing, downMatchCase, FR_DOWN | FR_MATCHCASE)->Apply(sizes);
BENCHMARK_CAPTURE(findNothing, downAnyCase, UINT{FR_DOWN})->Apply(sizes);
BENCHMARK_CAPTURE(findNothing, upMatchCase, UINT{FR_MATCHCASE})->Apply(sizes);
BENCHMARK_CAPTURE(findNothing, upAnyCase, UINT{0})->Apply(sizes);

/// One step of a search that finds a match near by.
void findNext(benchmark::State& state) {
    Editor& editor = editorOf(state);
    for (auto _ : state)
        editor.request(FR_FINDNEXT | FR_DOWN, u"currency");
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
            [&] { editor.request(FR_REPLACEALL | FR_MATCHCASE, u"currency", u"unit of account"); });
        run(Measured::Undo, [&] { editor.ctrl.OnEditUndo(); });
        run(Measured::Redo, [&] { editor.ctrl.OnEditRedo(); });
        state.PauseTiming();
        editor.ctrl.OnEditUndo();
        state.ResumeTiming();
    }
    const std::u16string& said = editor.ctrl.GetParentFrame()->GetMessageText();
    state.SetLabel(std::string(said.begin(), said.end()));
}
BENCHMARK_CAPTURE(replaceAll, replace, Measured::Replace)->Apply(sizes);
BENCHMARK_CAPTURE(replaceAll, undo, Measured::Undo)->Apply(sizes);
BENCHMARK_CAPTURE(replaceAll, redo, Measured::Redo)->Apply(sizes);

} // namespace
} // namespace tavrin

BENCHMARK_MAIN();
