#pragma once

namespace tavrin {

/// Base of the reference-counted family: parsers, undo records, byte buffers.
///
/// A new object has no reference; the first SmartPtr that takes it holds the first one, and the object
/// deletes itself when the last reference goes. The count is not atomic: one object belongs to one thread.
class RefObject {
  public:
    RefObject() = default;
    /// A copy is a new object: it starts with no reference of its own.
    RefObject(const RefObject&) noexcept {}
    RefObject& operator=(const RefObject&) noexcept { return *this; }
    virtual ~RefObject() = default;

    void AddRef() noexcept { ++references_; }
    void Release() {
        if (--references_ == 0)
            OnFinalRelease();
    }

  protected:
    /// Runs once, when the last reference has gone. The default deletes the object.
    virtual void OnFinalRelease() { delete this; }

  private:
    int references_ = 0;
};

} // namespace tavrin
