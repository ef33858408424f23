// SPDX-License-Identifier: Apache-2.0
#include "host/memory/ReferenceCount.h"

#include "host/memory/ReferenceBase.h"

namespace krod {

namespace {

// Added to the strong count while the object is being deleted: whatever the destructors retain and release,
// the count does not come to zero a second time.
constexpr std::int64_t Deleting = std::int64_t{1} << 60;

} // namespace

void ReferenceCount::retain() noexcept {
    if (strong.fetch_add(1, std::memory_order_relaxed) == 0) retainWeak();
}

bool ReferenceCount::tryRetain() noexcept {
    std::int64_t seen = strong.load(std::memory_order_relaxed);
    while (seen > 0 && seen < Deleting && alive())
        if (strong.compare_exchange_weak(seen, seen + 1, std::memory_order_acquire,
                                         std::memory_order_relaxed))
            return true;
    return false;
}

void ReferenceCount::release() noexcept {
    if (strong.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    if (alive()) destroy();
    releaseWeak();
}

void ReferenceCount::destroy() noexcept {
    strong.fetch_add(Deleting, std::memory_order_relaxed);
    retainWeak();
    object->onUnreferenced();
    living.store(false, std::memory_order_release);
    delete object;
    // A destructor may have left strong references behind; then the last of those gives the share back.
    if (strong.fetch_sub(Deleting, std::memory_order_acq_rel) == Deleting) releaseWeak();
}

void ReferenceCount::expire() noexcept {
    living.store(false, std::memory_order_release);
    if (inStaticStorage.load(std::memory_order_relaxed)) release();
    releaseWeak();
}

void ReferenceCount::retainWeak() noexcept { weak.fetch_add(1, std::memory_order_relaxed); }

void ReferenceCount::releaseWeak() noexcept {
    if (weak.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

std::int64_t ReferenceCount::strongReferences() const noexcept {
    return strong.load(std::memory_order_relaxed) % Deleting;
}

} // namespace krod
