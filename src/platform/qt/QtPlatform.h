#pragma once

#include "platform/qt/FindHistory.h"
#include "platform/qt/QtClipboard.h"
#include "platform/qt/QtDC.h"
#include "platform/qt/QtSettings.h"
#include "platform/ui/Platform.h"

#include <QString>

#include <optional>

class QPrinter;

namespace tavrin::qt {

/// The window system on Qt Widgets. Needs a QApplication, which outlives it.
class QtPlatform final : public Platform {
  public:
    /// Settings and registry live in the given INI file, by default "tavrin-xml-editor/settings.ini" in the
    /// user's configuration folder.
    explicit QtPlatform(const QString& settingsFile = {});
    ~QtPlatform() override;

    /// Without a parent the window is a widget of its own, for the caller to put where it belongs.
    [[nodiscard]] std::unique_ptr<WindowPeer> createWindow(CWnd& window, CWnd* parent,
                                                           const CREATESTRUCT& how) override;
    [[nodiscard]] std::unique_ptr<DialogControls> createControls(CWnd& dialog,
                                                                 const DialogTemplate& layout) override;
    [[nodiscard]] std::unique_ptr<CFont> createPointFont(int tenthsOfPoint,
                                                         std::u16string_view family) override;
    [[nodiscard]] std::unique_ptr<CFont> createListFont() override;
    [[nodiscard]] std::unique_ptr<CFont> createFontLike(const CFont& font, FontStyle style) override;
    [[nodiscard]] std::unique_ptr<CFont> createPrinterFont(const CDC& printer, int tenthsOfPoint,
                                                           std::u16string_view family) override;
    [[nodiscard]] std::unique_ptr<CDC> createMeasureDC() override;
    [[nodiscard]] std::shared_ptr<PrintJob> createPrintJob(CWnd& window, std::u16string_view title,
                                                           bool direct) override;
    void showPrintPreview(CWnd& window, std::u16string_view title,
                          const std::function<void(std::shared_ptr<PrintJob>)>& print) override;

    [[nodiscard]] COLORREF GetSysColor(SystemColor role) const override;
    [[nodiscard]] bool GetKeyState(VirtualKey key) const override;
    [[nodiscard]] WheelScroll wheelScroll() const override;
    void MessageBeep() override;
    [[nodiscard]] int GetSystemMetrics(SystemMetric metric) const override;
    [[nodiscard]] CRect workArea(CPoint point) const override;
    [[nodiscard]] CWnd* mainWindow() const override { return nullptr; }
    void runPopup(CWnd& popup) override;
    void BeginWaitCursor() override;
    void EndWaitCursor() override;
    [[nodiscard]] CFindReplaceDialog* createFindReplaceDialog() override;
    [[nodiscard]] std::unique_ptr<Progress> beginProgress(CWnd& window, LongTask task) override;

    [[nodiscard]] Clipboard& clipboard() override { return clipboard_; }
    [[nodiscard]] UserSettings& settings() override { return settings_; }
    [[nodiscard]] QtRegistry& registry() override { return registry_; }

    /// The file in which settings and registry live, for those who report on it.
    [[nodiscard]] const QSettings& settingsStore() const { return file_.store(); }
    /// Who tells the user that the file was damaged or can't be written.
    void setSettingsReporter(SettingsFile::Reporter reporter) { file_.setReporter(std::move(reporter)); }
    [[nodiscard]] FindHistory& findHistory() { return findHistory_; }
    /// True while a long task of an editor handles events: no text may be changed then from outside.
    [[nodiscard]] bool isBusy() const { return runningTasks_ > 0; }
    /// The font of a context in which none was selected.
    [[nodiscard]] const QtFont& defaultFont();

    /// While one lives, GetKeyState answers by the modifiers of the event being handled.
    class ModifierScope {
      public:
        ModifierScope(QtPlatform& platform, Qt::KeyboardModifiers modifiers)
            : platform_(platform), previous_(platform.modifiers_) {
            platform_.modifiers_ = modifiers;
        }
        ModifierScope(const ModifierScope&) = delete;
        ModifierScope& operator=(const ModifierScope&) = delete;
        ~ModifierScope() { platform_.modifiers_ = previous_; }

      private:
        QtPlatform& platform_;
        std::optional<Qt::KeyboardModifiers> previous_;
    };

  private:
    /// The printer that was used last, or the default one, with the user's page set-up.
    [[nodiscard]] std::shared_ptr<QPrinter> createPrinter(std::u16string_view title);

    SettingsFile file_;
    QtUserSettings settings_;
    QtRegistry registry_;
    QtClipboard clipboard_;
    FindHistory findHistory_;
    int runningTasks_ = 0;
    std::unique_ptr<QtFont> defaultFont_;
    QString printerName_; ///< chosen in the print dialog; empty: the default one
    std::optional<Qt::KeyboardModifiers> modifiers_;
};

} // namespace tavrin::qt
