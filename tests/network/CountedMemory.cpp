// SPDX-License-Identifier: Apache-2.0
#include "CountedMemory.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include <malloc.h>

namespace {

std::size_t now = 0, most = 0; // the tests of this program have one thread

[[maybe_unused]] void* counted(std::size_t size) {
    void* const memory = std::malloc(size);
    if (!memory) throw std::bad_alloc();
    now += malloc_usable_size(memory);
    most = std::max(most, now);
    return memory;
}

[[maybe_unused]] void uncounted(void* memory) noexcept {
    if (memory) now -= malloc_usable_size(memory);
    std::free(memory);
}

} // namespace

#if !defined(__SANITIZE_THREAD__) // whose library has them itself
void* operator new(std::size_t size) { return counted(size); }
void* operator new[](std::size_t size) { return counted(size); }
void operator delete(void* memory) noexcept { uncounted(memory); }
void operator delete[](void* memory) noexcept { uncounted(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { uncounted(memory); }
void operator delete[](void* memory, std::size_t /*size*/) noexcept { uncounted(memory); }
#endif

namespace workbench {

std::size_t mostBytesDuring(const std::function<void()>& work) {
    const std::size_t before = most = now;
    work();
    return most - before;
}

std::size_t bytesInUse() noexcept { return now; }

} // namespace workbench
