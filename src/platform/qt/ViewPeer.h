#pragma once

#include "platform/qt/QtWindowPeer.h"

namespace tavrin::qt {

class ViewClient;
class ViewWidget;

/// A window with scroll bars, a caret and the keyboard.
class ViewPeer final : public QtWindowPeer {
  public:
    ViewPeer(QtPlatform& platform, CWnd& window, QWidget* parent, const CREATESTRUCT& how);

    [[nodiscard]] QWidget& clientWidget() const override;
    /// Who knows the text behind the view; null for nobody. The caller resets it before the client goes.
    void setClient(ViewClient* client);

    void moveWindow(const CRect& rectInParent) override;
    void invalidate(const CRect& rect) override;
    void scrollWindow(int dx, int dy, const CRect& rect) override;
    void setScrollInfo(ScrollBarKind bar, const ScrollInfo& info) override;
    [[nodiscard]] int trackPosition(ScrollBarKind bar) const override;
    [[nodiscard]] bool isScrollBarEnabled(ScrollBarKind bar) const override;
    void createCaret(int width, int height) override;
    void destroyCaret() override;
    void setCaretPos(CPoint position) override;
    void showCaret() override;
    void setCapture() override;
    void releaseCapture() override;
    [[nodiscard]] bool hasCapture() const override;

  private:
    [[nodiscard]] ViewWidget& view() const;
};

} // namespace tavrin::qt
