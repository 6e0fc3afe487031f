#pragma once

#include "document/TextTransaction.h"
#include "view/CTextEditorView.h"

#include <new>

namespace tavrin {

/// One command on the text of a view: its changes, their records, the caret and the pivot are done together,
/// or, when it goes without a commit, none of them is. What a change needs the screen to show comes after the
/// commit. Commands nest as TextTransaction does.
///
/// No events of the user's are handled while one lives, but those of a long task.
class EditCommand {
  public:
    explicit EditCommand(CTextEditorView& view)
        : view_(view),
          caret_{view.caretLine_, view.caretCol_},
          pivot_{view.pivotLine_, view.pivotCol_},
          transaction_(view.getDocument()) {}
    EditCommand(const EditCommand&) = delete;
    EditCommand& operator=(const EditCommand&) = delete;
    ~EditCommand() {
        if (isCommitted_)
            return;
        view_.caretLine_ = caret_.line;
        view_.caretCol_ = caret_.col;
        view_.pivotLine_ = pivot_.line;
        view_.pivotCol_ = pivot_.col;
        view_.UpdateLater();
    }

    /// The command is done. Throws std::bad_alloc when there is no memory for its records.
    void commit() {
        transaction_.commit();
        isCommitted_ = true;
    }
    /// Commits, then lets `show()` bring the screen up to date; what it lacks memory for is made up later.
    template <class Show>
    void finish(Show show) {
        commit();
        try {
            show();
        } catch (const std::bad_alloc&) {
            view_.UpdateLater();
        }
    }

  private:
    CTextEditorView& view_;
    const CTextEditorView::Position caret_;
    const CTextEditorView::Position pivot_;
    TextTransaction transaction_;
    bool isCommitted_ = false;
};

} // namespace tavrin
