#pragma once

#include "files/FileReplacement.h"
#include "platform/core/Encoding.h"
#include "recovery/JournalFormat.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QString>

#include <functional>
#include <optional>

namespace tavrin {

class Buffer;

namespace app {

/// What went wrong, in words for the user. Empty: it worked.
using Failure = std::optional<QString>;

/// Hears how much of a file has been read, in bytes, between two pieces; false stops the reading.
using ReadProgress = std::function<bool(qint64 done, qint64 total)>;

/// How a file differs from what was last read from it or written to it.
enum class DiskChange { None, Changed, Gone };

/// The text of one buffer as a file: loading, saving, and noticing what others do to the file. Knows no
/// window; every question to the user is the caller's.
class FileDocument {
    Q_DECLARE_TR_FUNCTIONS(FileDocument)

  public:
    struct LoadResult {
        enum Status { Done, Cancelled, Failed } status = Done;
        QString error;        ///< in words, when Failed
        DecodeReport decoded; ///< when Done
    };

    /// The buffer outlives the document. `backups`: where a file's old contents are kept while it has to be
    /// written in place (see FileReplacement).
    explicit FileDocument(Buffer& buffer, std::filesystem::path backups = {});

    /// Absolute path of the file; empty while the text has none.
    [[nodiscard]] const QString& path() const { return path_; }
    /// The file's name without its folder, "Untitled.xml" while there is no file.
    [[nodiscard]] QString displayName() const;
    /// Size of the file in bytes when it was last read or written; 0 without one.
    [[nodiscard]] qint64 fileSize() const { return disk_.size; }

    /// The same, as journals of edits tell one state from another.
    [[nodiscard]] const FileState& fileState() const { return fileState_; }

    /// The buffer holds the text of a session that was recovered, which last saw the file (empty: none) in
    /// this state.
    void takeOver(const QString& path, const FileState& state);

    /// A new text without a file: an XML declaration and an empty line, in UTF-8.
    void startNew();
    /// Replaces text, encoding and path by the file's. When it fails or is cancelled nothing has changed.
    LoadResult load(const QString& path, const ReadProgress& progress = {});

    /// Writes the text in the buffer's form and takes over `path` (see textFileContents). The file is
    /// replaced as FileReplacement says; when that fails nothing has changed, or the message names the
    /// backup.
    [[nodiscard]] Failure save(const QString& path);

    /// Compares the file with its state when it was last read, written or acknowledged.
    [[nodiscard]] DiskChange diskChange() const;
    /// The file's present state is known from now on.
    void acknowledgeDiskChange();

  private:
    /// What tells one state of a file from another without reading it.
    struct DiskState {
        bool exists = false;
        qint64 size = 0;
        QDateTime modified;

        static DiskState of(const QString& path);
        bool operator==(const DiskState&) const = default;
    };

    Buffer& buffer_;
    FileReplacement replacement_;
    QString path_;
    DiskState disk_;
    FileState fileState_;
};

} // namespace app
} // namespace tavrin
