#include "platform/qt/PdfFile.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace tavrin::qt {

bool PdfFile::open(OpenMode mode) {
    return file_.open(mode) && QIODevice::open(mode);
}

qint64 PdfFile::writeData(const char* data, qint64 size) {
    failed_ = failed_ || file_.write(data, size) != size;
    written_ += size;
    return size; // a writer that hears of a failure goes on all the same; commit tells
}

bool PdfFile::commit() {
    // A full disk may show as a short write alone, which the file's own commit does not see.
    failed_ = !file_.flush() || failed_ || file_.size() != written_;
    if (!failed_)
        return file_.commit();
    file_.cancelWriting();
    file_.commit(); // removes what was written
    return false;
}

QString PdfFile::why() const {
    if (QFileInfo(file_.fileName()).isDir())
        return QCoreApplication::translate("PdfFile", "it is a folder.");
    if (file_.error() == QFileDevice::NoError)
        return QCoreApplication::translate("PdfFile", "the disk is full.");
    return file_.errorString();
}

} // namespace tavrin::qt
