#pragma once

#include "platform/core/UserSettings.h"
#include "platform/ui/Platform.h"

#include <QSettings>
#include <QString>

namespace tavrin::qt {

/// Typed values in an INI file, which stores every value as a string: a value that does not read as the type
/// asked for is of another type, and the default is the answer.
class QtUserSettings final : public UserSettings {
  public:
    /// The file is made with the first value.
    explicit QtUserSettings(QSettings& store) : store_(store) {}

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
