#pragma once

#include <QSaveFile>

namespace tavrin::qt {

/// A file that is written as a whole or not at all, and that remembers the first write that failed: writers
/// of PDF look at none of them.
class PdfFile final : public QIODevice {
  public:
    explicit PdfFile(const QString& path) : file_(path) {}

    /// False when the file can't be written at this place.
    bool open(OpenMode mode) override;
    /// Puts the file in place. False, and what was there stays, when something was not written.
    bool commit();
    /// In words, after open or commit failed.
    [[nodiscard]] QString why() const;

  protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char* data, qint64 size) override;

  private:
    QSaveFile file_;
    qint64 written_ = 0;
    bool failed_ = false;
};

} // namespace tavrin::qt
