#pragma once

#include "control/TextEditorCtrl.h"
#include "generated_xml.h"
#include "platform/headless/HeadlessPlatform.h"
#include "platform/headless/HeadlessWindow.h"
#include "platform/headless/RecordingDC.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

/// What the benchmarks of the control on the headless platform share.
namespace tavrin::bench {

struct Editor {
    explicit Editor(std::u16string_view text) {
        constexpr CRect page{0, 0, 1600, 1000};
        host.CreateWindowIn(nullptr, {.rect = page});
        ctrl.Create(&host, page);
        ctrl.SetFocus();
        ctrl.setText(text);
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

/// Arguments of a benchmark: documents of 1, 10 and 100 MB, in lines and on one single line, which the load
/// cuts into pieces.
inline void sizes(benchmark::internal::Benchmark* b) {
    for (const std::int64_t oneLine : {0, 1})
        for (const std::int64_t megabytes : {1, 10, 100})
            b->Args({megabytes, oneLine});
    b->ArgNames({"MB", "oneLine"});
}

/// The editor on the document that the arguments say, all of whose lines are known. All benchmarks of a
/// program share it.
inline Editor& editorOf(const benchmark::State& state) {
    static std::map<std::pair<std::int64_t, bool>, std::unique_ptr<Editor>> editors;
    const bool oneLine = state.range(1) != 0;
    std::unique_ptr<Editor>& editor = editors[{state.range(0), oneLine}];
    if (!editor) {
        std::u16string text = generatedXml(static_cast<std::size_t>(state.range(0)) << 20);
        if (oneLine)
            std::ranges::replace(text, u'\n', u' ');
        editor = std::make_unique<Editor>(text);
        editor->goTo(editor->ctrl.getBuffer().getLineCount() - 1);
    }
    return *editor;
}

} // namespace tavrin::bench
