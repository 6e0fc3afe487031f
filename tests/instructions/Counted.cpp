// Work whose instructions are counted under callgrind: each part is dumped under its name, and nothing
// between them counts. On the platform in memory, on 1 MB of generated XML.

#include "bench/generated_xml.h"
#include "control/TextEditorCtrl.h"
#include "platform/headless/HeadlessPlatform.h"
#include "platform/headless/HeadlessWindow.h"
#include "platform/headless/RecordingDC.h"
#include "platform/ui/CFindReplaceDialog.h"

#include <cstring>
#include <string>
#include <valgrind/callgrind.h>

namespace {

using namespace tavrin;

constexpr CRect page{0, 0, 1600, 1000};
constexpr int keys = 100;
constexpr int pages = 10;

template <class Work>
void count(const char* name, Work work) {
    CALLGRIND_START_INSTRUMENTATION;
    work();
    CALLGRIND_STOP_INSTRUMENTATION;
    CALLGRIND_DUMP_STATS_AT(name);
}

SmartPtr<ByteBuffer> document() {
    const std::u16string text = bench::generatedXml(1'000'000);
    const std::string bytes(text.begin(), text.end());
    SmartPtr<ByteBuffer> buffer = ByteBuffer::allocate(bytes.size());
    std::memcpy(buffer->data(), bytes.data(), bytes.size());
    return buffer;
}

} // namespace

int main() {
    HeadlessPlatform platform;
    CWnd host(platform);
    TextEditorCtrl ctrl(platform);
    host.CreateWindowIn(nullptr, {.rect = page});
    ctrl.Create(&host, page);
    ctrl.SetFocus();
    const SmartPtr<ByteBuffer> bytes = document();
    Buffer& buffer = ctrl.getBuffer();
    const auto paint = [&] {
        RecordingDC dc;
        ctrl.OnDraw(&dc);
    };

    count("load", [&] { buffer.loadBytes(bytes); });
    ctrl.OnInitialUpdate();
    ctrl.updateScrollbars();
    count("colour", [&] {
        for (int line = 0; line < buffer.getLineCount(); ++line)
            (void)buffer.getLineFormats(line);
    });
    ctrl.gotoLineCol(buffer.getLineCount() / 2, 8);
    paint();
    count("paint", [&] {
        for (int i = 0; i < pages; ++i)
            paint();
    });
    count("type", [&] {
        for (int i = 0; i < keys; ++i) {
            platform.typeCharacter(ctrl, u'x');
            paint();
        }
    });
    count("page-down", [&] {
        for (int i = 0; i < pages; ++i) {
            platform.pressKey(ctrl, {VK_NEXT});
            paint();
        }
    });
    count("replace-all", [&] {
        CFindReplaceDialog::send(ctrl, {FR_REPLACEALL | FR_MATCHCASE, u"currency", u"unit of account"});
    });
    count("undo-all", [&] { ctrl.OnEditUndo(); });
    buffer.loadBytes(bytes);
    count("read-ahead", [&] {
        while (ctrl.readAhead()) {
        }
    });
    return 0;
}
