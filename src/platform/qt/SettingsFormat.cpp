#include "platform/qt/SettingsFormat.h"

#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QSaveFile>
#include <QSet>
#include <QTemporaryDir>

namespace tavrin::qt {

namespace {

using Values = QSettings::SettingsMap;

/// What reading found out about files, by their path. Qt's functions for a format carry nothing along.
struct Findings {
    QMap<QString, QString> damagedCopies;
    QSet<QString> untouchable; ///< their content is neither understood nor kept elsewhere
};

Findings& findings() {
    static Findings all;
    return all;
}

QString pathOf(const QIODevice& device) {
    const auto* file = qobject_cast<const QFileDevice*>(&device);
    return file ? QFileInfo(file->fileName()).absoluteFilePath() : QString();
}

enum class Parsed { Sound, Damaged, NotTried };

/// Qt reads and writes INI text in files only, so it passes through one in a scratch folder.
Parsed parse(const QByteArray& text, Values& values) {
    const QTemporaryDir folder;
    QFile file(folder.filePath("settings.ini"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write(text) != text.size())
        return Parsed::NotTried;
    file.close();
    const QSettings reader(file.fileName(), QSettings::IniFormat);
    for (const QString& key : reader.allKeys())
        if (!key.isEmpty()) // rubbish before an equals sign
            values.insert(key, reader.value(key));
    return reader.status() == QSettings::NoError ? Parsed::Sound : Parsed::Damaged;
}

/// Whether a value came back from a file, which knows texts and lists of texts only.
bool sameValue(const QVariant& value, const QVariant& read) {
    if (value.metaType().id() == QMetaType::QStringList)
        return value.toStringList() == read.toStringList();
    return value.toString() == read.toString();
}

/// Nothing when the text could not be made.
std::optional<QByteArray> print(const Values& values) {
    const QTemporaryDir folder;
    QFile file(folder.filePath("settings.ini"));
    {
        QSettings writer(file.fileName(), QSettings::IniFormat);
        for (auto value = values.begin(); value != values.end(); ++value)
            writer.setValue(value.key(), value.value());
        writer.sync();
        if (writer.status() != QSettings::NoError)
            return std::nullopt;
    }
    if (!values.isEmpty() && !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray text = file.isOpen() ? file.readAll() : QByteArray();
    Values written;
    const bool complete = parse(text, written) == Parsed::Sound && written.keys() == values.keys() &&
                          std::equal(values.begin(), values.end(), written.begin(), written.end(), sameValue);
    return complete ? std::optional(text) : std::nullopt;
}

bool holds(const QString& path, const QByteArray& content) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.readAll() == content;
}

/// Writes the content to a file of a new name beside `path`, unless one holds it already. Nothing when
/// that fails.
std::optional<QString> keepAside(const QString& path, const QByteArray& content) {
    constexpr int most = 100;
    for (int i = 1; i <= most; ++i) {
        const QString aside = path + (i == 1 ? QString(".damaged") : QString(".damaged-%1").arg(i));
        if (holds(aside, content))
            return aside;
        if (QFileInfo::exists(aside))
            continue;
        QSaveFile file(aside);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) ||
            file.write(content) != content.size() || !file.commit())
            return std::nullopt;
        return aside;
    }
    return std::nullopt;
}

bool readCarefully(QIODevice& device, Values& values) {
    const QString path = pathOf(device);
    findings().untouchable.remove(path);
    const QByteArray text = device.readAll();
    switch (parse(text, values)) {
    case Parsed::Sound:
        return true;
    case Parsed::Damaged:
        values.clear();
        if (const auto aside = keepAside(path, text)) {
            findings().damagedCopies.insert(path, *aside);
            return true;
        }
        break;
    case Parsed::NotTried:
        break;
    }
    findings().untouchable.insert(path);
    return false;
}

/// The device is a new file, which Qt puts in place of the old one on true.
bool writeCarefully(QIODevice& device, const Values& values) {
    if (findings().untouchable.contains(pathOf(device)))
        return false;
    const auto text = print(values);
    return text && device.write(*text) == text->size() && static_cast<QFileDevice&>(device).flush() &&
           device.size() == text->size();
}

} // namespace

QSettings::Format carefulIniFormat() {
    static const QSettings::Format format =
        QSettings::registerFormat("ini", readCarefully, writeCarefully, Qt::CaseSensitive);
    return format;
}

std::optional<QString> takeDamagedCopy(const QString& settingsFile) {
    const QString copy = findings().damagedCopies.take(QFileInfo(settingsFile).absoluteFilePath());
    return copy.isEmpty() ? std::nullopt : std::optional(copy);
}

} // namespace tavrin::qt
