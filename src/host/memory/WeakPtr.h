// SPDX-License-Identifier: Apache-2.0
// The weak reference.
#pragma once

#include "host/memory/StrongPtr.h"

namespace krod {

/// Knows a reference-counted object without keeping it alive. Absent by default; expires with the object.
template <class T>
class WeakPtr {
public:
    WeakPtr() noexcept = default;
    /// [any · borrows] May be made inside the object's own constructor.
    explicit WeakPtr(T* object) noexcept : WeakPtr(object, object ? &object->referenceCount() : nullptr) {}
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    WeakPtr(const StrongPtr<U>& strong) noexcept : WeakPtr(static_cast<T*>(strong.get()), strong.count) {}
    WeakPtr(const WeakPtr& other) noexcept : WeakPtr(other.object, other.count) {}
    WeakPtr(WeakPtr&& other) noexcept
        : object(std::exchange(other.object, nullptr)), count(std::exchange(other.count, nullptr)) {}
    ~WeakPtr() {
        if (count) count->releaseWeak();
    }
    WeakPtr& operator=(WeakPtr other) noexcept {
        std::swap(object, other.object);
        std::swap(count, other.count);
        return *this;
    }

    /// [any · shares] A strong reference, or an empty one when the object is absent, expired or still being
    /// built.
    [[nodiscard]] StrongPtr<T> lock() const noexcept {
        StrongPtr<T> strong;
        if (count && count->tryRetain()) {
            strong.object = object;
            strong.count = count;
        }
        return strong;
    }
    /// [any] True when there is nothing to lock.
    [[nodiscard]] bool expired() const noexcept { return !count || !count->alive(); }
    /// [any] Whether both know the same object, living or not.
    friend bool operator==(const WeakPtr& a, const WeakPtr& b) noexcept { return a.count == b.count; }

private:
    WeakPtr(T* object, ReferenceCount* count) noexcept : object(object), count(object ? count : nullptr) {
        if (this->count) this->count->retainWeak();
    }

    T* object = nullptr;
    ReferenceCount* count = nullptr;
};

} // namespace krod
