#pragma once

#include "platform/qt/QtWindowPeer.h"

#include <functional>

namespace tavrin::qt {

/// A window without scroll bars that holds others.
class FramePeer final : public QtWindowPeer {
  public:
    FramePeer(QtPlatform& platform, CWnd& window, QWidget* parent);

    using StatusHandler = std::function<void(std::u16string_view text)>;
    /// Who shows the frame's status text; the frame itself shows none.
    void setStatusHandler(StatusHandler handler) { statusHandler_ = std::move(handler); }
    void setStatusText(std::u16string_view text) override;

  private:
    StatusHandler statusHandler_;
};

} // namespace tavrin::qt
