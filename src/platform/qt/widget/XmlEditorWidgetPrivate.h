#pragma once

#include "control/SchemaDocument.h"
#include "control/TextEditorCtrl.h"
#include "platform/qt/ViewClient.h"
#include "platform/qt/widget/IdleReading.h"
#include "platform/qt/widget/XmlEditorWidget.h"
#include "platform/ui/CWnd.h"

#include <QAccessible>
#include <QPointer>

#include <functional>
#include <utility>

namespace tavrin::qt {

class ViewPeer;

/// A control that counts the reports of its document and tells what was done to the text or taken back.
class ObservedCtrl final : public TextEditorCtrl, private HistoryObserver {
  public:
    /// Hears of each record once the text has changed; `forward`: done, else taken back.
    using Changed = std::function<void(const UndoableAction& action, bool forward)>;

    ObservedCtrl(Platform& platform, Changed changed)
        : TextEditorCtrl(platform), changed_(std::move(changed)) {
        AddHistoryObserver(*this);
    }
    ~ObservedCtrl() override { RemoveHistoryObserver(*this); }

    void undo(const UndoableAction& action) override {
        TextEditorCtrl::undo(action);
        changed_(action, false);
    }
    void redo(const UndoableAction& action) override {
        TextEditorCtrl::redo(action);
        changed_(action, true);
    }
    void OnTextDocumentChanged() override { ++reports_; }
    /// Changes with every change of the text that is recorded or undone.
    [[nodiscard]] unsigned long long reports() const { return reports_; }

  private:
    void actionAdded(const UndoableAction& action, bool) override { changed_(action, true); }

    Changed changed_;
    unsigned long long reports_ = 0;
};

class XmlEditorWidget::Private final : public ViewClient, private QAccessible::ActivationObserver {
  public:
    Private(XmlEditorWidget& widget, Platform& platform);
    ~Private() override;

    [[nodiscard]] ObservedCtrl& control() { return control_; }
    [[nodiscard]] const ObservedCtrl& control() const { return control_; }
    void resize(const QSize& size);
    /// Runs a command of the control's message map, then tells what changed.
    void run(UINT command);
    /// Runs a search command, which ends an incremental search, then tells what changed.
    void search(void (TextEditorCtrl::*command)());
    /// The text as a whole is new: shows it from the top.
    void showFromTop();
    void setFontSize(int points);
    [[nodiscard]] int fontSize() const;
    void readSettings();
    /// Emits the signals of what has changed since the last call.
    void tellChanges();
    /// What has changed up to now is known: the next call tells nothing about the text.
    void forgetTextChanges() { told_.reports = control_.reports(); }

    // ViewClient
    void inputHandled() override {
        idleReading_.pause();
        tellChanges();
    }
    void mouseSelectionDone() override;
    void contextMenuRequested(QPoint globalPosition) override;
    void primaryPasteRequested() override;
    [[nodiscard]] bool hasSelection() const override { return control_.hasSelection(); }
    [[nodiscard]] QString selectedText() const override;
    [[nodiscard]] SurroundingText surroundingText() const override;
    void removeAroundCaret(int start, int length) override;
    [[nodiscard]] QAccessibleInterface* makeAccessible(ViewWidget& view) override;

    int wheelRemainder = 0; ///< parts of a notch that have not zoomed yet

  private:
    /// What the signals report.
    struct State {
        unsigned long long reports = 0;
        bool modified = false;
        bool canUndo = false;
        bool canRedo = false;
        int caretLine = 0;
        int caretCol = 0;
        int pivotLine = 0;
        int pivotCol = 0;

        [[nodiscard]] bool hasSelection() const { return caretLine != pivotLine || caretCol != pivotCol; }
        [[nodiscard]] bool sameCaret(const State& other) const {
            return caretLine == other.caretLine && caretCol == other.caretCol;
        }
        [[nodiscard]] bool samePivot(const State& other) const {
            return pivotLine == other.pivotLine && pivotCol == other.pivotCol;
        }
    };

    void accessibilityActiveChanged(bool active) override { accessible_ = active; }

    [[nodiscard]] State state() const;
    [[nodiscard]] ViewPeer* viewPeer() const;
    [[nodiscard]] ViewWidget* viewWidget() const; ///< null without a view

    XmlEditorWidget& widget_;
    CWnd host_; ///< the parent of the control's frame
    mutable ObservedCtrl control_;
    IdleReading idleReading_{control_};
    std::unique_ptr<ISchemaSource> schemas_; ///< until the host sets its own
    State told_;
    bool accessible_ = QAccessible::isActive(); ///< assistive technology listens
};

} // namespace tavrin::qt
