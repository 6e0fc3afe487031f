#pragma once

#include "buffer/LoadedText.h"
#include "files/FileReplacement.h"
#include "platform/core/Encoding.h"
#include "platform/core/SmartPtr.h"
#include "recovery/JournalFormat.h"

#include <QCoreApplication>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>

class QIODevice;

namespace tavrin {

class Buffer;
class LineScan;
class ReloadAction;

namespace app {

/// What went wrong, in words for the user. Empty: it worked.
using Failure = std::optional<QString>;

/// Hears how much of a file has been read and examined, in bytes, every few milliseconds while data comes;
/// false stops the work.
using ReadProgress = std::function<bool(qint64 done, qint64 total)>;

/// What to read a path from, not opened yet.
using DeviceForPath = std::function<std::unique_ptr<QIODevice>(const QString& path)>;

/// What the reader of a file wants to hear meanwhile.
struct ReadHooks {
    ReadProgress progress = {};
    /// Gets the first bytes of a large file as soon as they are there.
    std::function<void(std::span<const std::uint8_t>)> beginning = {};
    DeviceForPath device = {};      ///< empty: the file itself
    const LineScan* scan = nullptr; ///< of the parser that will colour the text
};

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

    class Contents;
    struct ReadResult {
        LoadResult::Status status = LoadResult::Failed;
        QString error;                      ///< in words, when Failed
        std::unique_ptr<Contents> contents; ///< when Done
    };
    /// Bytes that `beginning` gets: more than any screen shows.
    static constexpr qint64 beginningSize = 256 << 10;

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
    /// What read() is to find out for the buffer's parser.
    [[nodiscard]] const LineScan* lineScan() const;
    /// Reads a file and makes its text ready, on any thread.
    [[nodiscard]] static ReadResult read(const QString& path, const ReadHooks& hooks = {});
    /// Replaces text, encoding and path by what was read.
    void adopt(std::unique_ptr<Contents> contents);
    /// Both at once. When it fails or is cancelled nothing has changed.
    LoadResult load(const QString& path, const ReadProgress& progress = {});

    /// Writes the text in the buffer's form and takes over `path` (see textFileContents). The file is
    /// replaced as FileReplacement says; when that fails nothing has changed, or the message names the
    /// backup.
    [[nodiscard]] Failure save(const QString& path);

    /// Compares the file with its state when it was last read, written or accepted.
    [[nodiscard]] DiskChange diskChange() const;
    /// The same, but a change that was noted does not count.
    [[nodiscard]] DiskChange newDiskChange() const;
    /// The file's present state is known, though it is not the text's.
    void noteDiskChange();
    /// The text may replace what the file held when that was noted last.
    void acceptDiskChange() { disk_ = noted_; }

    /// The text of a file that was read again, as one step for the editor that shows the document. The
    /// contents keep only the state of the file.
    [[nodiscard]] static SmartPtr<ReloadAction> takeText(Contents& contents);
    /// The buffer shows the text of what was read again.
    void takeOver(const Contents& contents);

  private:
    /// What tells one state of a file from another without reading it.
    struct DiskState {
        bool exists = false;
        quint64 device = 0; ///< 0: not known, as is the number on it
        quint64 number = 0;
        qint64 size = 0;
        qint64 modified = 0; ///< nanoseconds since 1970

        static DiskState of(const QString& path);
        bool operator==(const DiskState& other) const;
    };

    Buffer& buffer_;
    FileReplacement replacement_;
    QString path_;
    DiskState disk_;
    DiskState noted_; ///< about which the user has been asked
    FileState fileState_;
};

/// A file that was read: its text, and in which state the file was when that began.
class FileDocument::Contents {
  public:
    [[nodiscard]] const LoadedText& text() const { return text_; }

  private:
    friend class FileDocument;
    Contents(LoadedText text, QString path, DiskState disk, const FileState& state)
        : text_(std::move(text)), path_(std::move(path)), disk_(std::move(disk)), state_(state) {}

    LoadedText text_;
    QString path_;
    DiskState disk_;
    FileState state_;
};

} // namespace app
} // namespace tavrin
