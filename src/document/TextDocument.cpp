#include "document/TextDocument.h"

namespace tavrin {

void TextDocument::TextDocumentModifiedFlag::setModified(bool modified) {
    modified_ = modified;
    owner_->OnTextDocumentChanged();
}

TextDocument::TextDocument() : modifiedFlag_(this), undoStack_(modifiedFlag_) {}

ISchemaSource* TextDocument::getSchemaSource() {
    return nullptr;
}

bool TextDocument::OnNewDocument() {
    undoStack_.reset();
    return true;
}

bool TextDocument::OnOpenDocument(const char16_t* /*path*/) {
    undoStack_.reset();
    return true;
}

bool TextDocument::OnSaveDocument(const char16_t* /*path*/) {
    undoStack_.setSavePoint();
    return true;
}

void TextDocument::OnTextDocumentChanged() {}

void TextDocument::Undo(Undoable* view) {
    undoStack_.undo(view);
}

void TextDocument::Redo(Undoable* view) {
    undoStack_.redo(view);
}

void TextDocument::ClearUndo(Undoable* view) {
    undoStack_.clear(view);
}

void TextDocument::AddUndoAction(Undoable* view, UndoableAction* action) {
    undoStack_.add(view, action);
}

} // namespace tavrin
