#pragma once

#include <QByteArray>
#include <QPoint>
#include <QWidget>

namespace tavrin {

class Platform;
namespace qt {
class XmlEditorWidget;
}

namespace app {

/// The beginning of a file that is still being read: coloured, to be scrolled and selected in, not to be
/// changed. Keys that would do that go on to the parent.
class FirstPage : public QWidget {
    Q_OBJECT

  public:
    /// `bytes`: as many as are there; the last line, which may go on, is left out.
    FirstPage(Platform& platform, const QByteArray& bytes, QWidget* parent);

    [[nodiscard]] qt::XmlEditorWidget& editor() { return *editor_; }
    /// Caret and scroll position, for an editor that shows the whole.
    void movePositionTo(qt::XmlEditorWidget& other) const;

  protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* object, QEvent* event) override;

  private:
    qt::XmlEditorWidget* editor_;
};

} // namespace app
} // namespace tavrin
