#pragma once

#include <QDialog>

namespace tavrin {

class Platform;
namespace qt {
class XmlEditorOptionsPage;
}

namespace app {

/// The program's options. OK writes them to the settings and emits saved(), Cancel writes nothing.
class OptionsDialog : public QDialog {
    Q_OBJECT

  public:
    explicit OptionsDialog(Platform& platform, QWidget* parent = nullptr);

    [[nodiscard]] qt::XmlEditorOptionsPage& editorPage() { return *editorPage_; }

    void accept() override;

  signals:
    void saved();

  private:
    qt::XmlEditorOptionsPage* editorPage_;
};

} // namespace app
} // namespace tavrin
