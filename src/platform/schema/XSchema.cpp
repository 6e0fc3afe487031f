#include "platform/schema/XSchema.h"

namespace tavrin {

namespace {

SmartPtr<IXSchema>& current() {
    thread_local SmartPtr<IXSchema> service;
    return service;
}

} // namespace

std::u16string_view SchemaContext::namespaceOf(std::u16string_view prefix) const {
    for (const auto& [bound, namespaceName] : bindings)
        if (bound == prefix)
            return namespaceName;
    return {};
}

const std::u16string* SchemaContext::prefixFor(std::u16string_view namespaceName) const {
    const std::u16string* found = nullptr;
    for (const auto& [prefix, bound] : bindings)
        if (bound == namespaceName && (!found || prefix.empty()))
            found = &prefix;
    return found;
}

SmartPtr<IXSchema> XSchema::get() {
    return current();
}

XSchema::Scope::Scope(SmartPtr<IXSchema> service) : outer_(std::exchange(current(), std::move(service))) {}

XSchema::Scope::~Scope() {
    current() = std::move(outer_);
}

} // namespace tavrin
