// Any bytes read as a journal without harm, and what it tells is done only where it fits the text.

#include "FuzzTarget.h"
#include "control/TextEditorCtrl.h"
#include "platform/headless/HeadlessPlatform.h"
#include "recovery/Recovery.h"

#include <algorithm>
#include <cstring>
#include <string>

using namespace tavrin;
using fuzz::require;

namespace {

JournalReader readerOf(const std::string& bytes) {
    std::size_t at = 0;
    return {[&bytes, at](std::span<char> into) mutable {
                const std::size_t count = std::min(into.size(), bytes.size() - at);
                std::memcpy(into.data(), bytes.data() + at, count);
                at += count;
                return count;
            },
            bytes.size()};
}

bool tellsChange(JournalEntryKind kind) {
    return kind == JournalEntryKind::Edit || kind == JournalEntryKind::Replace ||
           kind == JournalEntryKind::Form || kind == JournalEntryKind::Reload;
}

/// The changes that fit, done and undone as recovering does.
void replay(JournalReader reader, std::size_t size) {
    HeadlessPlatform platform;
    TextEditorCtrl editor(platform);
    editor.setText(u"<a>\n  <b>text</b>\n</a>");
    JournalEntry entry;
    while (reader.next(entry)) {
        if (entry.kind == JournalEntryKind::Undo)
            editor.Undo(&editor);
        else if (entry.kind == JournalEntryKind::Redo)
            editor.Redo(&editor);
        if (!tellsChange(entry.kind))
            continue;
        if (!isPossible(*entry.action, editor.getBuffer()))
            continue;
        static_cast<Undoable&>(editor).redo(*entry.action);
        editor.AddUndoAction(&editor, entry.action.get());
        editor.getBuffer().checkInvariants();
    }
    require(reader.goodBytes() <= size, "no more is read than there is");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    replay(readerOf(bytes), size);
    // No fuzzer finds the checksum of a frame by chance.
    if (size > 0) {
        const std::string framed = std::string(journalFormat) + frameHead(bytes) + bytes;
        replay(readerOf(framed), framed.size());
    }
    return 0;
}
