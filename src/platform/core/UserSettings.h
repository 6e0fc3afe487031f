#pragma once

#include <string>
#include <string_view>

namespace tavrin {

/// The host's persistent key/value store of one user, by section and key.
/// A missing key and a value of another type read as the default. Reads never fail.
class UserSettings {
  public:
    virtual ~UserSettings() = default;

    [[nodiscard]] virtual std::u16string getStringValue(std::string_view section, std::string_view key,
                                                        std::u16string_view byDefault) const = 0;
    [[nodiscard]] virtual int getIntValue(std::string_view section, std::string_view key,
                                          int byDefault) const = 0;
    [[nodiscard]] virtual bool getBoolValue(std::string_view section, std::string_view key,
                                            bool byDefault) const = 0;

    virtual void setStringValue(std::string_view section, std::string_view key,
                                std::u16string_view value) = 0;
    virtual void setIntValue(std::string_view section, std::string_view key, int value) = 0;
    virtual void setBoolValue(std::string_view section, std::string_view key, bool value) = 0;
};

} // namespace tavrin
