#pragma once

#include "control/TextEditorCtrl.h"
#include "document/ReloadAction.h"
#include "platform/headless/HeadlessPlatform.h"
#include "recovery/EditJournal.h"
#include "recovery/Recovery.h"
#include "support.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace tavrin::test {

inline std::string contentsOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void put(const std::filesystem::path& file, const std::string& contents) {
    std::ofstream(file, std::ios::binary) << contents;
}

/// A folder of its own that goes with the object.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "tavrin-journal-XXXXXX").string();
        path = ::mkdtemp(name.data());
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() { std::filesystem::remove_all(path); }

    std::filesystem::path path;
};

/// The control, with what the find dialog asks of it.
class DrivenCtrl : public TextEditorCtrl {
  public:
    using TextEditorCtrl::replaceAll;
    using TextEditorCtrl::TextEditorCtrl;
};

/// One editor with its journal, as a host has them.
class Session {
  public:
    explicit Session(const std::filesystem::path& journals)
        : journal(journals, editor, [this](const std::string& text) { complaints.push_back(text); }) {
        host_.CreateWindowIn(nullptr, {.rect = {0, 0, 400, 160}});
        editor.Create(&host_, host_.GetClientRect());
        editor.SetFocus();
    }

    void open(const std::filesystem::path& file) {
        const FileState state = stateOfFile(file).value();
        editor.getBuffer().loadBytes(blockOf(contentsOf(file)));
        editor.OnOpenDocument(u"");
        top();
        journal.startWithFile(file, state);
    }
    void startNew(std::u16string_view text) {
        editor.setText(text);
        editor.OnNewDocument();
        top();
        journal.startWithText({}, {});
    }
    /// Another program has written the file, and its text is shown.
    void reload(const std::string& bytes) {
        const SmartPtr<ReloadAction> action(new ReloadAction(blockOf(bytes)));
        editor.reload(*action);
    }
    void type(std::u16string_view text) {
        for (const char16_t c : text)
            platform_.typeCharacter(editor, c);
    }
    void key(UINT virtualKey, bool ctrl = false) {
        platform_.pressKey(editor, {.key = virtualKey, .ctrl = ctrl});
    }
    void paste(std::u16string_view text) {
        platform_.headlessClipboard().setContent(std::u16string(text));
        key('V', true);
    }
    void select(int pivotLine, int pivotCol, int caretLine, int caretCol) {
        editor.setCaret(pivotLine, pivotCol, false);
        editor.updatePivot();
        editor.setCaret(caretLine, caretCol, false);
    }
    [[nodiscard]] std::u16string text() { return editor.getText(); }

    /// Any edit, or a move, undo or redo.
    void randomCommand(std::mt19937& random) {
        const auto below = [&](int bound) {
            return static_cast<int>(random() % static_cast<unsigned>(bound));
        };
        Buffer& buffer = editor.getBuffer();
        const auto place = [&] {
            const int line = below(std::max(buffer.getLineCount(), 1));
            return std::pair(line, buffer.getLineCount() == 0 ? 0 : below(buffer.getLineLength(line) + 1));
        };
        const auto [line, col] = place();
        switch (below(16)) {
        case 0:
            return key(VK_RETURN);
        case 1:
            return key(VK_BACK);
        case 2:
            return key(VK_DELETE);
        case 3:
            return paste(below(2) == 0 ? u"" : u"two\nlines \U0001F41D");
        case 4:
        case 5:
            return key('Z', true);
        case 6:
            return key('Y', true);
        case 7: {
            const auto [line2, col2] = place();
            return select(line, col, line2, col2);
        }
        case 8:
            return editor.OnIndentSelection();
        case 9:
            return editor.OnMakeSelectionUppercase();
        case 10:
            static_cast<void>(editor.replaceAll(u"e", below(2) == 0 ? u"ee" : u"", FIND_DOWN));
            return;
        case 11:
            return editor.gotoLineCol(line, col);
        default:
            type(std::u16string(1, static_cast<char16_t>(u'a' + below(26))));
        }
    }

  private:
    void top() {
        editor.setCaret(0, 0, true);
        editor.updatePivot();
    }

    HeadlessPlatform platform_;
    class HostWnd : public CWnd {
      public:
        using CWnd::CWnd;
    } host_{platform_};

  public:
    DrivenCtrl editor{platform_};
    std::vector<std::string> complaints; ///< to be read after a flush
    EditJournal journal;
};

} // namespace tavrin::test
