#pragma once

#include "platform/core/Exception.h"

#include <utility>

namespace tavrin {

/// Owning handle of a RefObject: holds one reference while it lives.
template <class T>
class SmartPtr {
  public:
    SmartPtr() noexcept = default;
    /// Takes a reference of its own; `object` may be null. Implicit, so that a new object goes straight
    /// from `new` into the handle that owns it.
    SmartPtr(T* object) : object_(object) {
        if (object_)
            object_->AddRef();
    }
    SmartPtr(const SmartPtr& other) : SmartPtr(other.object_) {}
    SmartPtr(SmartPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    template <class U>
    SmartPtr(const SmartPtr<U>& other) : SmartPtr(other.get()) {}
    ~SmartPtr() {
        if (object_)
            object_->Release();
    }
    SmartPtr& operator=(SmartPtr other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    [[nodiscard]] T* get() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }
    /// Throws NullPointerException when empty.
    T* operator->() const { return &checked(); }
    T& operator*() const { return checked(); }

  private:
    T& checked() const {
        if (!object_)
            throw NullPointerException();
        return *object_;
    }

    T* object_ = nullptr;
};

} // namespace tavrin
