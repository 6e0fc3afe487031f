#include "platform/qt/QtSettings.h"

#include "platform/qt/Conversions.h"
#include "platform/qt/SettingsFormat.h"

#include <QFileInfo>

#include <utility>

namespace tavrin::qt {

namespace {

QString utf8(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString settingPath(std::string_view section, std::string_view key) {
    return utf8(section) + u'/' + utf8(key);
}

/// Key paths are written with backslashes, which QSettings does not treat alike everywhere.
QString registryPath(std::string_view key) {
    return QLatin1String("Registry/") + utf8(key).replace(u'\\', u'/');
}

/// The value that marks a registry key as existing.
const QLatin1String keyMark("/(Default)");

bool isString(const QVariant& value) {
    return value.metaType().id() == QMetaType::QString;
}

} // namespace

SettingsFile::SettingsFile(const QString& path) : store_(path, carefulIniFormat()) {
    if (const auto copy = takeDamagedCopy(path))
        report(
            QObject::tr(
                "The settings in “%1” are damaged and could not be read. The defaults apply; what the file "
                "held was kept as “%2”.")
                .arg(path, *copy));
    else if (store_.status() != QSettings::NoError)
        report(QObject::tr("The settings in “%1” could not be read. The defaults apply.").arg(path));
}

SettingsFile::~SettingsFile() {
    write();
}

void SettingsFile::writeSoon() {
    if (std::exchange(pending_, true))
        return;
    QMetaObject::invokeMethod(
        &context_, [this] { write(); }, Qt::QueuedConnection);
}

void SettingsFile::write() {
    if (!std::exchange(pending_, false))
        return;
    // A new object on the same file: the first trouble of an old one hides those that follow.
    QSettings writer(store_.fileName(), store_.format());
    writer.sync();
    if (writer.status() == QSettings::NoError || std::exchange(saidUnwritable_, true))
        return;
    const QString path = store_.fileName();
    const QFileInfo file(path);
    QString reason = QObject::tr("its folder can't be written to, or the disk is full");
    if (file.exists() && !file.isWritable())
        reason = QObject::tr("the file may not be written to");
    report(QObject::tr("Settings could not be saved in “%1”: %2. They hold until the program ends.")
               .arg(path, reason));
}

void SettingsFile::report(const QString& problem) {
    if (reporter_)
        reporter_(problem);
    else
        unreported_ += problem;
}

void SettingsFile::setReporter(Reporter reporter) {
    reporter_ = std::move(reporter);
    if (!reporter_)
        return;
    for (const QString& problem : std::exchange(unreported_, {}))
        reporter_(problem);
}

std::u16string QtUserSettings::getStringValue(std::string_view section, std::string_view key,
                                              std::u16string_view byDefault) const {
    const QVariant value = store_.value(settingPath(section, key));
    return isString(value) ? toU16(value.toString()) : std::u16string(byDefault);
}

int QtUserSettings::getIntValue(std::string_view section, std::string_view key, int byDefault) const {
    const QVariant value = store_.value(settingPath(section, key));
    const int type = value.metaType().id();
    if (type != QMetaType::Int && type != QMetaType::QString)
        return byDefault;
    bool converts = false;
    const int number = value.toString().toInt(&converts);
    return converts ? number : byDefault;
}

bool QtUserSettings::getBoolValue(std::string_view section, std::string_view key, bool byDefault) const {
    const QVariant value = store_.value(settingPath(section, key));
    if (value.metaType().id() == QMetaType::Bool)
        return value.toBool();
    if (isString(value) && value.toString() == QLatin1String("true"))
        return true;
    if (isString(value) && value.toString() == QLatin1String("false"))
        return false;
    return byDefault;
}

void QtUserSettings::set(std::string_view section, std::string_view key, const QVariant& value) {
    store_.setValue(settingPath(section, key), value);
    file_.writeSoon();
}

void QtUserSettings::setStringValue(std::string_view section, std::string_view key,
                                    std::u16string_view value) {
    set(section, key, toQString(value));
}

void QtUserSettings::setIntValue(std::string_view section, std::string_view key, int value) {
    set(section, key, value);
}

void QtUserSettings::setBoolValue(std::string_view section, std::string_view key, bool value) {
    set(section, key, value);
}

void QtRegistry::createKey(std::string_view key) {
    const QString mark = registryPath(key) + keyMark;
    if (!store_.contains(mark))
        store_.setValue(mark, QString());
}

std::optional<std::u16string> QtRegistry::readString(std::string_view key, std::string_view name) {
    const QVariant value = store_.value(registryPath(key) + u'/' + utf8(name));
    if (!isString(value))
        return std::nullopt;
    return toU16(value.toString());
}

bool QtRegistry::writeString(std::string_view key, std::string_view name, std::u16string_view value) {
    if (!store_.contains(registryPath(key) + keyMark))
        return false;
    store_.setValue(registryPath(key) + u'/' + utf8(name), toQString(value));
    return store_.isWritable();
}

} // namespace tavrin::qt
