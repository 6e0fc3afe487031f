// Any bytes are read as settings or kept beside them; what was read is there again after writing.

#include "FuzzTarget.h"
#include "platform/qt/QtSettings.h"

#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMap>
#include <QTemporaryDir>

using namespace tavrin;
using fuzz::require;

namespace {

/// A program with windows, as all are that have settings: Qt reads pictures from a file only in such a one.
void beProgram() {
    static int count = 1;
    static char name[] = "settings";
    static char* arguments[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QGuiApplication program(count, arguments);
}

QMap<QString, QStringList> valuesOf(const QSettings& store) {
    QMap<QString, QStringList> values;
    for (const QString& key : store.allKeys()) {
        const QVariant value = store.value(key);
        values[key] = value.metaType().id() == QMetaType::QStringList ? value.toStringList()
                                                                      : QStringList(value.toString());
    }
    return values;
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    beProgram();
    const QTemporaryDir folder; // a new one each time: Qt remembers the files that it has read
    const QString path = folder.filePath("settings.ini");
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    {
        QFile file(path);
        require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(),
                "the folder can be written");
    }
    QMap<QString, QStringList> values;
    bool isWritten = true;
    {
        qt::SettingsFile file(path);
        QStringList problems;
        file.setReporter([&](const QString& problem) { problems += problem; });
        values = valuesOf(file.store());
        if (!problems.isEmpty()) {
            require(values.isEmpty(), "of a damaged file nothing counts");
            require(contentOf(path + ".damaged") == bytes, "what a damaged file held is kept");
        }
        problems.clear();
        qt::QtUserSettings settings(file);
        settings.setIntValue("Fuzz", "Added", 7);
        require(settings.getIntValue("Fuzz", "Added", 0) == 7, "what was set is in force");
        file.setReporter([&](const QString&) { isWritten = false; });
    }
    values["Fuzz/Added"] = QStringList("7");
    const qt::SettingsFile again(path);
    if (isWritten)
        require(valuesOf(again.store()) == values, "settings that were written read as the same");
    else
        require(contentOf(path) == bytes, "settings that could not be written leave the file as it was");
    return 0;
}
