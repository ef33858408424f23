// SPDX-License-Identifier: Apache-2.0
// To be loaded before all others (LD_PRELOAD): while a plug-in is loaded, the request for memory with the
// number in FAILING_ALLOCATION fails, counted from 1. Then the file named in FAILING_MARK is made.
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

namespace {

constinit std::atomic<long> left{0}; // requests until one fails; 0: none does

bool fails() {
    if (left.load() <= 0 || left.fetch_sub(1) != 1) return false;
    if (const char* const mark = std::getenv("FAILING_MARK")) ::close(::open(mark, O_CREAT | O_WRONLY, 0600));
    errno = ENOMEM;
    return true;
}

} // namespace

[[gnu::visibility("default")]] void* malloc(std::size_t size) {
    return fails() ? nullptr : __libc_malloc(size);
}

/// Not counted: the C library asks for room for functions that run at exit, in blocks. When depends on how many a
/// process has already, and where there is none, no function of the library is told.
[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) {
    Dl_info caller{};
    const bool isOfCLibrary = left.load() > 0 && ::dladdr(__builtin_return_address(0), &caller) != 0 &&
                              std::strstr(caller.dli_fname, "/libc.so") != nullptr;
    return !isOfCLibrary && fails() ? nullptr : __libc_calloc(count, size);
}

[[gnu::visibility("default")]] void* realloc(void* memory, std::size_t size) {
    return fails() ? nullptr : __libc_realloc(memory, size);
}

[[gnu::visibility("default")]] void* dlopen(const char* path, int mode) {
    using Open = void*(const char*, int);
    static auto* const open = reinterpret_cast<Open*>(::dlsym(RTLD_NEXT, "dlopen"));
    const char* const number = std::getenv("FAILING_ALLOCATION");
    // Libraries that the plug-in needs open others meanwhile.
    const bool isThePlugin =
        path != nullptr && number != nullptr && std::strstr(path, "/tovar_plime.so") != nullptr;
    if (isThePlugin) left = std::atol(number);
    void* const library = open(path, mode);
    if (isThePlugin) left = 0;
    return library;
}
}
