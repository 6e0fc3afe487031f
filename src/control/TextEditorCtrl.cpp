#include "control/TextEditorCtrl.h"

#include "autocomplete/XmlAutoCompleteProvider.h"
#include "control/TextEditorCtrlFrameWnd.h"
#include "platform/core/Exception.h"

#include <cstring>

namespace tavrin {

namespace {

AcceleratorTable editingShortcuts() {
    return AcceleratorTable({
        {'C', ID_EDIT_COPY},
        {'X', ID_EDIT_CUT},
        {'V', ID_EDIT_PASTE},
        {'A', ID_EDIT_SELECT_ALL},
        {'Z', ID_EDIT_UNDO},
        {'Y', ID_EDIT_REDO},
        {'F', ID_EDIT_FIND},
        {'H', ID_EDIT_REPLACE},
    });
}

} // namespace

TextEditorCtrl::TextEditorCtrl(Platform& platform, ParserType type)
    : CTextEditorView(platform), accelerators_(editingShortcuts()) {
    if (type != ParserType::Xml)
        throwUnreachable("TextEditorCtrl", __LINE__);
    parser_ = SmartPtr<XmlLangParser>(new XmlLangParser);
    parser_->setBuffer(&buffer_);
    buffer_.setParser(parser_.get());
    ownProvider_ = std::make_unique<XmlAutoCompleteProvider>();
    provider_ = ownProvider_.get();
}

TextEditorCtrl::~TextEditorCtrl() {
    if (frame_)
        frame_->forgetControl();
    if (peer())
        DestroyWindow(); // while all of the control still stands
}

void TextEditorCtrl::Create(CWnd* parent, const CRect& rect) {
    auto frame = std::make_unique<TextEditorCtrlFrameWnd>(platform(), *this);
    if (!frame->CreateWindowIn(parent, {.rect = rect}))
        return;
    frame_ = frame.release(); // owned by its window from now on
    const CREATESTRUCT how{
        .rect = frame_->GetClientRect(), .horizontalScrollBar = true, .verticalScrollBar = true};
    if (!CreateWindowIn(frame_, how))
        return;
    frame_->SetActiveView(this);
    SetScrollSizes({10, 10}); // provisional, until the text is measured
    OnUpdate();
    ShowWindow(true);
}

void TextEditorCtrl::setText(std::u16string_view text) {
    buffer_.loadText(text.data(), text.size());
}

std::u16string TextEditorCtrl::getText() const {
    const SmartPtr<ByteBuffer> bytes = buffer_.getString();
    std::u16string text(bytes->size() / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), bytes->data(), bytes->size());
    text.pop_back(); // the terminating zero
    return text;
}

bool TextEditorCtrl::readAhead() {
    constexpr int pagesAtOnce = 4;
    if (buffer_.getParser() != parser_.get())
        return false; // the host has its own
    if (readAheadGeneration_ != buffer_.getGeneration()) {
        readAheadGeneration_ = buffer_.getGeneration();
        readAheadTo_ = 0;
    }
    for (int page = 0; page < pagesAtOnce && readAheadTo_ < buffer_.getLineCount(); ++page)
        readAheadTo_ = parser_->readAhead(readAheadTo_, provider_ != nullptr);
    return readAheadTo_ < buffer_.getLineCount();
}

const MessageMap& TextEditorCtrl::GetMessageMap() const {
    static const MessageMapEntry entries[] = {
        route<&TextEditorCtrl::OnChar>(WM_CHAR, "OnChar"),
        route<&TextEditorCtrl::OnKeyDown>(WM_KEYDOWN, "OnKeyDown"),
        route<&TextEditorCtrl::OnGetDlgCode>(WM_GETDLGCODE, "OnGetDlgCode"),
    };
    static const MessageMap map{&CTextEditorView::GetMessageMap(), entries};
    return map;
}

void TextEditorCtrl::OnKeyDown(UINT nChar, UINT nRepCnt, UINT nFlags) {
    const bool discarded = isDragging();
    const Watch watch(*this);
    CTextEditorView::OnKeyDown(nChar, nRepCnt, nFlags);
    if (watch.isAlive() && provider_ && !discarded)
        provider_->onKeyDown(this, nChar);
}

void TextEditorCtrl::OnChar(UINT nChar, UINT nRepCnt, UINT nFlags) {
    const bool discarded = isDragging() || isIncSearchActive(); // what is searched for is not in the text
    const Watch watch(*this);
    CTextEditorView::OnChar(nChar, nRepCnt, nFlags); // completion may run in it, and the host may delete us
    if (watch.isAlive() && provider_ && !discarded)
        provider_->onChar(this, nChar);
}

UINT TextEditorCtrl::OnGetDlgCode() {
    return DLGC_WANTALLKEYS | DLGC_WANTCHARS;
}

bool TextEditorCtrl::PreTranslateMessage(const MSG& message) {
    const bool keyboard = message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST;
    if (keyboard && !isDragging() && accelerators_.translate(*this, message))
        return true;
    return CTextEditorView::PreTranslateMessage(message);
}

bool TextEditorCtrl::IsAccelerator(const MSG& message) const {
    return accelerators_.find(platform(), message) != nullptr;
}

} // namespace tavrin
