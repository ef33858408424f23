// SPDX-License-Identifier: Apache-2.0
// The strong reference.
#pragma once

#include "host/memory/ReferenceBase.h"

#include <cstddef>
#include <type_traits>
#include <utility>

namespace krod {

template <class T>
class WeakPtr;

/// Keeps a reference-counted object alive. Empty by default, and empty again when the object was deleted
/// under it (VCreatorBase::deleteAllInstances). One instance belongs to one thread at a time; the count is
/// atomic.
template <class T>
class StrongPtr {
public:
    StrongPtr() noexcept = default;
    StrongPtr(std::nullptr_t) noexcept {}
    /// [any · shares] Adds a reference to an object that lives, or stays empty.
    explicit StrongPtr(T* object) noexcept
        : StrongPtr(object, object ? &object->referenceCount() : nullptr) {}
    StrongPtr(const StrongPtr& other) noexcept : StrongPtr(other.object, other.count) {}
    StrongPtr(StrongPtr&& other) noexcept
        : object(std::exchange(other.object, nullptr)), count(std::exchange(other.count, nullptr)) {}
    /// [any · shares] Conversion to a base.
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    StrongPtr(const StrongPtr<U>& other) noexcept : StrongPtr(static_cast<T*>(other.get()), other.count) {}
    ~StrongPtr() {
        if (count) count->release();
    }
    StrongPtr& operator=(StrongPtr other) noexcept {
        swap(other);
        return *this;
    }

    /// [any · borrows] The object, or null when empty.
    [[nodiscard]] T* get() const noexcept { return count && count->alive() ? object : nullptr; }
    T* operator->() const noexcept { return get(); }
    T& operator*() const noexcept { return *get(); }
    explicit operator bool() const noexcept { return get() != nullptr; }
    void reset() noexcept { StrongPtr().swap(*this); }
    void swap(StrongPtr& other) noexcept {
        std::swap(object, other.object);
        std::swap(count, other.count);
    }
    friend bool operator==(const StrongPtr& a, const StrongPtr& b) noexcept { return a.get() == b.get(); }

private:
    template <class U>
    friend class StrongPtr;
    template <class U>
    friend class WeakPtr;

    StrongPtr(T* object, ReferenceCount* count) noexcept : object(object), count(object ? count : nullptr) {
        if (this->count) this->count->retain();
    }

    T* object = nullptr;
    ReferenceCount* count = nullptr;
};

/// [any · shares] A strong reference to the same object as its derived class D; empty when it is of another
/// class.
template <class D, class T>
[[nodiscard]] StrongPtr<D> castStrong(const StrongPtr<T>& reference) noexcept {
    return StrongPtr<D>(dynamic_cast<D*>(reference.get()));
}

} // namespace krod
