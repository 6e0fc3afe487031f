// Work whose instructions are counted under callgrind: each part is dumped under its name, and nothing
// between them counts. On the platform in memory, on 1 MB of generated XML.

#include "bench/generated_xml.h"
#include "control/TextEditorCtrl.h"
#include "platform/headless/HeadlessPlatform.h"
#include "platform/headless/HeadlessWindow.h"
#include "platform/headless/RecordingDC.h"
#include "platform/ui/CFindReplaceDialog.h"

#include <algorithm>
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

SmartPtr<ByteBuffer> bytesOf(const std::u16string& text) {
    const std::string bytes(text.begin(), text.end());
    SmartPtr<ByteBuffer> buffer = ByteBuffer::allocate(bytes.size());
    std::memcpy(buffer->data(), bytes.data(), bytes.size());
    return buffer;
}

struct Editor {
    Editor() {
        host.CreateWindowIn(nullptr, {.rect = page});
        ctrl.Create(&host, page);
        ctrl.SetFocus();
    }
    void show() {
        ctrl.OnInitialUpdate();
        ctrl.updateScrollbars();
    }
    void paint() {
        RecordingDC dc;
        ctrl.OnDraw(&dc);
    }
    void goTo(int line, int col) {
        ctrl.gotoLineCol(line, col);
        paint();
    }
    void paintPages() {
        for (int i = 0; i < pages; ++i)
            paint();
    }
    void type() {
        for (int i = 0; i < keys; ++i) {
            platform.typeCharacter(ctrl, u'x');
            paint();
        }
    }

    HeadlessPlatform platform;
    CWnd host{platform};
    TextEditorCtrl ctrl{platform};
    Buffer& buffer = ctrl.getBuffer();
};

void countLines(const std::u16string& text) {
    const SmartPtr<ByteBuffer> bytes = bytesOf(text);
    Editor editor;
    Buffer& buffer = editor.buffer;
    count("load", [&] { buffer.loadBytes(bytes); });
    editor.show();
    count("colour", [&] {
        for (int line = 0; line < buffer.getLineCount(); ++line)
            (void)buffer.getLineFormats(line);
    });
    editor.goTo(buffer.getLineCount() / 2, 8);
    count("paint", [&] { editor.paintPages(); });
    count("type", [&] { editor.type(); });
    count("page-down", [&] {
        for (int i = 0; i < pages; ++i) {
            editor.platform.pressKey(editor.ctrl, {VK_NEXT});
            editor.paint();
        }
    });
    count("replace-all", [&] {
        CFindReplaceDialog::send(editor.ctrl, {FR_REPLACEALL | FR_MATCHCASE, u"currency", u"unit of account"});
    });
    count("undo-all", [&] { editor.ctrl.OnEditUndo(); });
    buffer.loadBytes(bytes);
    count("read-ahead", [&] {
        while (editor.ctrl.readAhead()) {
        }
    });
}

/// The text on one line: cut by a load, and as it is when it was pasted.
void countOneLine(std::u16string text) {
    std::ranges::replace(text, u'\n', u' ');
    Editor loaded;
    loaded.buffer.loadBytes(bytesOf(text));
    loaded.show();
    loaded.goTo(loaded.buffer.getLineCount() / 2, 8);
    count("one-line-paint", [&] { loaded.paintPages(); });
    count("one-line-type", [&] { loaded.type(); });

    Editor pasted;
    pasted.show();
    pasted.ctrl.replaceSelection(text, false);
    pasted.goTo(0, static_cast<int>(text.size() / 2));
    count("pasted-line-type", [&] { pasted.type(); });
}

} // namespace

int main() {
    const std::u16string text = bench::generatedXml(1'000'000);
    countLines(text);
    countOneLine(text);
    return 0;
}
