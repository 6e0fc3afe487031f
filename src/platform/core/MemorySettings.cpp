#include "platform/core/MemorySettings.h"

namespace tavrin {

template <class T>
const T* MemorySettings::find(std::string_view section, std::string_view key) const {
    const auto found = values_.find(Place(section, key));
    return found == values_.end() ? nullptr : std::get_if<T>(&found->second);
}

void MemorySettings::set(std::string_view section, std::string_view key, Value value) {
    values_.insert_or_assign(Place(section, key), std::move(value));
}

std::u16string MemorySettings::getStringValue(std::string_view section, std::string_view key,
                                              std::u16string_view byDefault) const {
    const auto* value = find<std::u16string>(section, key);
    return value ? *value : std::u16string(byDefault);
}

int MemorySettings::getIntValue(std::string_view section, std::string_view key, int byDefault) const {
    const int* value = find<int>(section, key);
    return value ? *value : byDefault;
}

bool MemorySettings::getBoolValue(std::string_view section, std::string_view key, bool byDefault) const {
    const bool* value = find<bool>(section, key);
    return value ? *value : byDefault;
}

void MemorySettings::setStringValue(std::string_view section, std::string_view key,
                                    std::u16string_view value) {
    set(section, key, std::u16string(value));
}

void MemorySettings::setIntValue(std::string_view section, std::string_view key, int value) {
    set(section, key, value);
}

void MemorySettings::setBoolValue(std::string_view section, std::string_view key, bool value) {
    set(section, key, value);
}

} // namespace tavrin
