#pragma once

#include "buffer/Buffer.h"
#include "control/TextEditorCtrl.h"
#include "control/TextEditorCtrlFrameWnd.h"
#include "document/IAutoCompleteProvider.h"
#include "document/TextUndoScope.h"
#include "platform/headless/HeadlessPlatform.h"
#include "platform/headless/RecordingDC.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrin::test {

/// A host's window.
class HostWnd : public CWnd {
  public:
    using CWnd::CWnd;
};

/// The control with what tests read of its inside.
class TestedCtrl : public TextEditorCtrl {
  public:
    using TextEditorCtrl::getContentPrintRect;
    using TextEditorCtrl::GetMessageMap;
    using TextEditorCtrl::TextEditorCtrl;

    /// Runs the base class's own rows, without those that the control puts before them.
    [[nodiscard]] const MessageMap& viewMessageMap() const { return CTextEditorView::GetMessageMap(); }
    [[nodiscard]] static UINT findMessage() { return findMsgId; }
    static void setFindText(std::u16string text) { findStr = std::move(text); }
    [[nodiscard]] static const std::u16string& findText() { return findStr; }
};

/// An editor in a host's window, 400 by 160 pixels: ten lines of cells of 8 by 16. Shown, focused and
/// updated.
class Editor : public ::testing::Test {
  protected:
    Editor() {
        ctrl_->setAutoCompleteProvider(nullptr); // the view alone
        host_->CreateWindowIn(nullptr, {.rect = {0, 0, 400, 160}});
        ctrl_->Create(host_.get(), host_->GetClientRect());
        ctrl_->SetFocus();
    }

    ~Editor() override { TestedCtrl::setFindText({}); }

    void setText(std::u16string_view text) {
        ctrl_->setText(text);
        ctrl_->OnNewDocument();
        ctrl_->setCaret(0, 0, true);
        ctrl_->updatePivot();
        ctrl_->updateScrollbars();
    }

    void key(UINT virtualKey, bool ctrl = false, bool shift = false) {
        platform_.pressKey(*ctrl_, {.key = virtualKey, .ctrl = ctrl, .shift = shift});
    }

    void type(std::u16string_view text) {
        for (const char16_t c : text)
            platform_.typeCharacter(*ctrl_, c);
    }

    void mouse(UINT message, CPoint point, UINT flags = 0) {
        platform_.sendMouse(*ctrl_, message, point, flags);
    }

    void select(int pivotLine, int pivotCol, int caretLine, int caretCol) {
        ctrl_->setCaret(pivotLine, pivotCol, false);
        ctrl_->updatePivot();
        ctrl_->setCaret(caretLine, caretCol, false);
    }

    [[nodiscard]] std::pair<int, int> caret() const {
        return {ctrl_->getCurrentLine(), ctrl_->getCurrentColoumn()};
    }

    [[nodiscard]] HeadlessWindow& window() const { return HeadlessPlatform::windowOf(*ctrl_); }

    /// The texts of one paint, in order.
    [[nodiscard]] std::vector<DrawnText> paint() const {
        RecordingDC dc;
        window().paint(dc);
        return dc.texts();
    }

    HeadlessPlatform platform_;
    std::unique_ptr<HostWnd> host_ = std::make_unique<HostWnd>(platform_);
    std::unique_ptr<TestedCtrl> ctrl_ = std::make_unique<TestedCtrl>(platform_);
};

} // namespace tavrin::test
