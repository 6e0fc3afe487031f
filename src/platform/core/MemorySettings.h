#pragma once

#include "platform/core/UserSettings.h"

#include <map>
#include <string>
#include <utility>
#include <variant>

namespace tavrin {

/// Settings that live as long as the object: for tests, tools and programs without a store of their own.
class MemorySettings : public UserSettings {
  public:
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
    using Place = std::pair<std::string, std::string>; ///< section, key
    using Value = std::variant<std::u16string, int, bool>;

    /// The value, when there is one of that type; else null.
    template <class T>
    [[nodiscard]] const T* find(std::string_view section, std::string_view key) const;
    void set(std::string_view section, std::string_view key, Value value);

    std::map<Place, Value> values_;
};

} // namespace tavrin
