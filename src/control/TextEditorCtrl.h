#pragma once

#include "buffer/Buffer.h"
#include "document/TextDocument.h"
#include "parsers/XmlLangParser.h"
#include "platform/core/SmartPtr.h"
#include "platform/ui/AcceleratorTable.h"
#include "view/CTextEditorView.h"

#include <memory>
#include <string>
#include <string_view>

namespace tavrin {

class IAutoCompleteProvider;
class TextEditorCtrlFrameWnd;

/// The editor as a control for any window: view and document in one object, with its text, its parser and its
/// keyboard shortcuts (Ctrl+C, X, V, A, Z, Y, F and H).
///
/// The host makes it, calls Create once, exchanges texts and destroys it; its window goes with it. The frame
/// around it lies in the host's window and goes with that; either may go first.
class TextEditorCtrl : public CTextEditorView, public TextDocument {
  public:
    enum class ParserType : int { Xml = 0 };

    /// Throws Exception for a type that the control does not have.
    explicit TextEditorCtrl(Platform& platform, ParserType type = ParserType::Xml);
    ~TextEditorCtrl() override;

    /// Makes the frame at `rect` in the parent's client area and the view that fills it.
    void Create(CWnd* parent, const CRect& rect);
    /// What the host moves and sizes; the view fills it. Null before Create and after the frame's window has
    /// gone.
    [[nodiscard]] TextEditorCtrlFrameWnd* getFrame() const { return frame_; }

    /// Replaces the whole text. Undo history, caret and screen stay as they are: a host that starts with a
    /// new text calls OnNewDocument or OnOpenDocument, places the caret and updates the view.
    void setText(std::u16string_view text);
    /// The whole text with CR LF between lines.
    [[nodiscard]] std::u16string getText() const;

    [[nodiscard]] TextDocument& getDocument() override { return *this; }
    Buffer& getBuffer() override { return buffer_; }
    IAutoCompleteProvider* getAutoCompleteProvider() override { return provider_; }
    /// Who completes what is typed: by default an XmlAutoCompleteProvider of the control's own; null: nobody.
    /// The caller keeps it alive.
    void setAutoCompleteProvider(IAutoCompleteProvider* provider) { provider_ = provider; }
    ISchemaSource* getSchemaSource() override { return schemaSource_; }
    /// Who knows the schemas of the text; null (the default): nobody, and then only end tags are completed.
    /// The caller keeps it alive.
    void setSchemaSource(ISchemaSource* source) { schemaSource_ = source; }

    /// Finds out a part of what a jump to the end and completion far below the top ask of a new text, so that
    /// they need not wait for it. To be called again and again while there is nothing else to do, and never
    /// inside of another operation; takes about as long as painting does. False when nothing is left.
    bool readAhead();

    bool PreTranslateMessage(const MSG& message) override;
    [[nodiscard]] bool IsAccelerator(const MSG& message) const override;
    void LoadBars() override {} // the control has none
    void SaveBars() override {}

  protected:
    [[nodiscard]] const MessageMap& GetMessageMap() const override;
    void OnKeyDown(UINT nChar, UINT nRepCnt, UINT nFlags);
    void OnChar(UINT nChar, UINT nRepCnt, UINT nFlags);
    UINT OnGetDlgCode();
    void PostNcDestroy() override {} // the host deletes the control

  private:
    friend class TextEditorCtrlFrameWnd;
    void frameDestroyed() { frame_ = nullptr; }

    std::unique_ptr<IAutoCompleteProvider> ownProvider_;
    IAutoCompleteProvider* provider_ = nullptr;
    ISchemaSource* schemaSource_ = nullptr;
    SmartPtr<XmlLangParser> parser_;
    Buffer buffer_;
    int readAheadTo_ = 0;                     ///< the lines above are done
    unsigned readAheadGeneration_ = 0;        ///< of the buffer
    TextEditorCtrlFrameWnd* frame_ = nullptr; // deletes itself
    AcceleratorTable accelerators_;
};

} // namespace tavrin
