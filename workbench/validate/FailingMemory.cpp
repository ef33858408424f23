// SPDX-License-Identifier: Apache-2.0
// A program that this unit is linked into has these four operators instead of the standard library's, which
// do the same but for the one question.
#include "workbench/validate/FailingMemory.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace workbench::validate {
namespace {

constinit std::atomic<long> left{0}; // requests until one fails; 0: none does
constinit std::atomic<const std::vector<AddressRange>*> counted{nullptr}; // null: whoever asks

bool isCounted(const void* asker) noexcept {
    const auto* const ranges = counted.load(std::memory_order_relaxed);
    if (!ranges) return true;
    for (const AddressRange& range : *ranges)
        if (range.contains(asker)) return true;
    return false;
}

bool isTheOne(const void* asker) noexcept {
    return left.load(std::memory_order_relaxed) > 0 && isCounted(asker) &&
           left.fetch_sub(1, std::memory_order_relaxed) == 1;
}

[[maybe_unused]] void* take(std::size_t bytes, const void* asker) noexcept {
    return isTheOne(asker) ? nullptr : std::malloc(bytes == 0 ? 1 : bytes);
}

} // namespace

FailingMemory::FailingMemory(long n) noexcept { left = n; }
FailingMemory::FailingMemory(long n, const std::vector<AddressRange>& askers) noexcept {
    counted = &askers;
    left = n;
}
FailingMemory::~FailingMemory() {
    left = 0;
    counted = nullptr;
}
bool FailingMemory::hasFailed() noexcept { return left <= 0; }

} // namespace workbench::validate

#if !defined(__SANITIZE_THREAD__) // whose library has them itself, so that no request fails under it
void* operator new(std::size_t bytes) {
    void* const memory = workbench::validate::take(bytes, __builtin_return_address(0));
    if (!memory) throw std::bad_alloc();
    return memory;
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return workbench::validate::take(bytes, __builtin_return_address(0));
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
#endif
