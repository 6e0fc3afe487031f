#pragma once

#include "control/TextEditorCtrl.h"
#include "options/XmlEditorOptionsDlgPage.h"
#include "platform/headless/HeadlessPlatform.h"
#include "platform/ui/CFrameWnd.h"
#include "replay/SchemaCommands.h"

#include <deque>
#include <memory>
#include <string_view>

namespace tavrin::replay {

inline constexpr CSize defaultClientSize{800, 480};

/// What a script drives: an editor control in its frame on the headless platform, updated, shown and focused,
/// with an empty text.
class ReplaySession {
  public:
    /// `client` is the size of the view's client area in pixels.
    explicit ReplaySession(CSize client = defaultClientSize);

    [[nodiscard]] HeadlessPlatform& platform() { return platform_; }
    [[nodiscard]] TextEditorCtrl& editor() { return *editor_; }
    [[nodiscard]] Buffer& buffer() { return editor_->getBuffer(); }
    /// The platform's record of the view.
    [[nodiscard]] HeadlessWindow& window() { return HeadlessPlatform::windowOf(*editor_); }
    [[nodiscard]] CFrameWnd& frame() { return *editor_->GetParentFrame(); }
    /// Types at the keyboard, unit by unit, wherever that goes: a popup that comes up in the middle gets what
    /// is left.
    void type(std::u16string_view text);
    /// The next unit of it; false when all was typed.
    bool typeNext();
    void dropTyped() { typed_.clear(); }
    /// Resizes the host's window and the frame in it; the view follows its frame.
    void resize(CSize client);
    [[nodiscard]] ReplaySchemas& schemas() { return *schemas_; }
    /// The options page of the host's dialog; null while it is closed.
    [[nodiscard]] XmlEditorOptionsDlgPage* options() { return options_.get(); }
    /// Opens the page anew; one that was open is cancelled.
    void openOptions();
    void closeOptions() { options_.reset(); }

  private:
    HeadlessPlatform platform_;
    CWnd host_;
    std::unique_ptr<TextEditorCtrl> editor_; ///< goes before the host, as its windows lie inside
    std::unique_ptr<ReplaySchemas> schemas_;
    std::deque<char16_t> typed_; ///< not yet taken by any window
    std::unique_ptr<XmlEditorOptionsDlgPage> options_;
};

} // namespace tavrin::replay
