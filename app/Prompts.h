#pragma once

#include "TextDifferences.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

class QWidget;

namespace tavrin::app {

enum class SaveAnswer { Save, Discard, Cancel };

/// What to do with a text whose file another program has changed. KeepMine: the text may replace the file.
enum class DiskAnswer { Reload, KeepMine, Compare, Cancel };

struct DiskQuestion {
    QString name;       ///< of the document
    bool isChangedHere; ///< and not saved
    bool isSaving;      ///< the user wants to save; else the change was only noticed
};

/// Where and in which encoding to save.
struct SaveTarget {
    QString path;
    int encoding = 0; ///< a code, see EncodingCode
};

/// Unsaved changes of a session that did not end properly.
struct RecoveryOffer {
    QString name;   ///< of the document
    QString file;   ///< its path; empty when it was never saved
    QDateTime when; ///< of the last change that was kept
    QString remark; ///< in words, when the file is not what it was, or nothing can be made of it; else empty
    bool isReadable = true;
    /// What the session changed, compared with the file as it is now.
    std::function<QList<DifferenceLine>()> differences;
};

enum class RecoveryAction { Recover, SaveElsewhere, Keep, Discard };

struct RecoveryChoice {
    qsizetype offer = 0;
    RecoveryAction action = RecoveryAction::Keep;
};

/// Everything that the program asks its user. Each question is modal to `window`.
class Prompts {
  public:
    Prompts() = default;
    Prompts(const Prompts&) = delete;
    Prompts& operator=(const Prompts&) = delete;
    virtual ~Prompts() = default;

    virtual SaveAnswer askSaveChanges(QWidget* window, const QString& documentName) = 0;
    /// A question whose answer yes is named by the button `accept`; the other answer cancels and is the
    /// default.
    virtual bool confirm(QWidget* window, const QString& question, const QString& details,
                         const QString& accept) = 0;
    /// As `confirm`, for a choice between two things of equal right.
    virtual bool choose(QWidget* window, const QString& question, const QString& accept,
                        const QString& other) = 0;
    /// Cancel is an answer only while saving.
    virtual DiskAnswer askAboutDiskChange(QWidget* window, const DiskQuestion& question) = 0;
    /// What another program made of the text here.
    virtual void showDifferences(QWidget* window, const QString& documentName,
                                 const QList<DifferenceLine>& lines) = 0;
    /// One decision about one of the offers. Nothing: all are kept for the next start.
    virtual std::optional<RecoveryChoice> askRecovery(QWidget* window,
                                                      const QList<RecoveryOffer>& offers) = 0;
    virtual void showError(QWidget* window, const QString& message) = 0;

    /// Empty: none.
    virtual QString askFileToOpen(QWidget* window, const QString& folder) = 0;
    /// A schema or a catalog. Empty: none.
    virtual QString askSchema(QWidget* window, const QString& title, const QString& folder) = 0;
    virtual std::optional<SaveTarget> askWhereToSave(QWidget* window, const SaveTarget& proposal) = 0;
    /// Lines count from 1 here, as the user sees them.
    virtual std::optional<int> askLine(QWidget* window, int current, int last) = 0;
};

} // namespace tavrin::app
