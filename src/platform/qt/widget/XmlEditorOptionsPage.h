#pragma once

#include <QStringList>
#include <QWidget>

#include <memory>

namespace tavrin {

class Platform;
class XmlEditorOptionsDlgPage;

namespace qt {

/// The editor's options as a page for a host's dialog: font, size, colours and line numbers, with ready
/// colour schemes above. Nothing is written before save().
class XmlEditorOptionsPage : public QWidget {
    Q_OBJECT

  public:
    /// `platform` is a QtPlatform and outlives the page; its settings are what the page shows and writes.
    explicit XmlEditorOptionsPage(Platform& platform, QWidget* parent = nullptr);
    ~XmlEditorOptionsPage() override;

    [[nodiscard]] XmlEditorOptionsDlgPage& page();

    /// The names of the ready schemes.
    [[nodiscard]] static QStringList schemes();
    /// Takes over all colours of a scheme; another name does nothing.
    void applyScheme(const QString& name);

  public slots:
    /// To be called when the dialog is confirmed: writes the settings and emits saved(). False when an entry
    /// is refused; the user has been told, nothing is written, and the dialog should stay open.
    bool save();

  signals:
    /// Settings were written: open editors show them after their settingsChanged().
    void saved();

  private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace qt
} // namespace tavrin
