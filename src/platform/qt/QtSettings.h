#pragma once

#include "platform/core/UserSettings.h"
#include "platform/ui/Platform.h"

#include <QObject>
#include <QSettings>
#include <QString>

#include <functional>

namespace tavrin::qt {

/// The INI file of settings and registry, and what goes wrong with it.
class SettingsFile {
  public:
    explicit SettingsFile(const QString& path);
    ~SettingsFile();

    [[nodiscard]] QSettings& store() { return store_; }
    [[nodiscard]] const QSettings& store() const { return store_; }
    /// Writes what was set, soon and in one piece, and reports if that fails. What could not be written stays
    /// in force until the program ends.
    void writeSoon();

    /// Hears in words, once for each kind, that the file was damaged or can't be written; also what was
    /// found before now.
    using Reporter = std::function<void(const QString& problem)>;
    void setReporter(Reporter reporter);

  private:
    void write();
    void report(const QString& problem);

    QSettings store_;
    Reporter reporter_;
    QStringList unreported_;
    bool pending_ = false;
    bool saidUnwritable_ = false;
    QObject context_; ///< where the pending write belongs
};

/// Typed values in an INI file, which stores every value as a string: a value that does not read as the type
/// asked for is of another type, and the default is the answer.
class QtUserSettings final : public UserSettings {
  public:
    /// The file is made with the first value.
    explicit QtUserSettings(SettingsFile& file) : file_(file), store_(file.store()) {}

    [[nodiscard]] std::u16string getStringValue(std::string_view section, std::string_view key,
                                                std::u16string_view byDefault) const override;
    [[nodiscard]] int getIntValue(std::string_view section, std::string_view key,
                                  int byDefault) const override;
    [[nodiscard]] bool getBoolValue(std::string_view section, std::string_view key,
                                    bool byDefault) const override;

    void setStringValue(std::string_view section, std::string_view key, std::u16string_view value) override;
    void setIntValue(std::string_view section, std::string_view key, int value) override;
    void setBoolValue(std::string_view section, std::string_view key, bool value) override;

  private:
    void set(std::string_view section, std::string_view key, const QVariant& value);

    SettingsFile& file_;
    QSettings& store_;
};

/// Registry keys in the same file, in a section of their own.
class QtRegistry final : public Registry {
  public:
    explicit QtRegistry(QSettings& store) : store_(store) {}

    /// For the installing side: from now on values can be written under the key.
    void createKey(std::string_view key);
    [[nodiscard]] std::optional<std::u16string> readString(std::string_view key,
                                                           std::string_view name) override;
    bool writeString(std::string_view key, std::string_view name, std::u16string_view value) override;

  private:
    QSettings& store_;
};

} // namespace tavrin::qt
