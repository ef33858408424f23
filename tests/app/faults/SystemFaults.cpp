// SPDX-License-Identifier: Apache-2.0
// Is loaded before everything else (LD_PRELOAD) and makes one call of the program fail, or sends it a signal
// just before: KROD_FAULT is "<call>:<number>:<what>". <call> is the name of one of the calls below, or "any" of
// them; <number> counts from 1, 0 is every one; <what> is the number of an error, or "s" and the number of a
// signal, which "ss" sends twice. KROD_CALLS names a file that gets the number of calls at the end. With
// KROD_STORM a signal without SA_RESTART comes a thousand times a second.
#include "Fault.h"

#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

/// The fault that is asked for.
struct Wish {
    std::string_view call;
    int number = -1, error = 0, signal = 0, times = 0;
};

int numberOf(std::string_view text) {
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

Wish wishOf(const char* words) {
    Wish wish;
    const std::string_view text = words ? words : "";
    const std::size_t first = text.find(':'), second = text.find(':', first + 1);
    if (second == std::string_view::npos) return wish;
    wish.call = text.substr(0, first);
    wish.number = numberOf(text.substr(first + 1));
    std::string_view what = text.substr(second + 1);
    for (; what.starts_with('s'); what.remove_prefix(1)) ++wish.times;
    (wish.times > 0 ? wish.signal : wish.error) = numberOf(what);
    return wish;
}

/// Meant for one process, not for those that it starts.
struct Meant {
    Wish wish = wishOf(std::getenv("KROD_FAULT"));
    const char* counts = std::getenv("KROD_CALLS");
    bool storm = std::getenv("KROD_STORM") != nullptr;
    pid_t process = ::getpid();

    Meant() {
        for (const char* const name : {"KROD_FAULT", "KROD_CALLS", "KROD_STORM", "LD_PRELOAD"})
            ::unsetenv(name);
    }
};

const Meant& meant() {
    static const Meant once;
    return once;
}

std::atomic<int> calls{0};

template <typename Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

[[gnu::constructor]] void startStorm() {
    if (!meant().storm) return;
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGALRM, &action, nullptr);
    const itimerval millisecond{{0, 1000}, {0, 1000}};
    ::setitimer(ITIMER_REAL, &millisecond, nullptr);
}

[[gnu::destructor]] void leaveCount() {
    if (!meant().counts || meant().process != ::getpid()) return;
    if (std::FILE* const file = std::fopen(meant().counts, "w")) {
        std::fprintf(file, "%d", calls.load());
        std::fclose(file);
    }
}

} // namespace

extern "C" int krodFault(const char* call) {
    const auto& [wish, counts, storm, process] = meant();
    const bool isMeant = wish.call == call || (wish.call == "any" && std::string_view(call) != "read");
    if (!isMeant || process != ::getpid()) return 0;
    const int number = ++calls;
    if (wish.number != 0 && wish.number != number) return 0;
    for (int i = 0; i < wish.times; ++i) ::raise(wish.signal);
    return wish.error;
}

// The C library's own names: only what works on files is counted.
extern "C" {

int open(const char* path, int flags, ...) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list rest;
        va_start(rest, flags);
        mode = va_arg(rest, mode_t);
        va_end(rest);
        if (const int error = krodFault("create")) return errno = error, -1;
    }
    return next<int (*)(const char*, int, ...)>("open")(path, flags, mode);
}

ssize_t write(int file, const void* data, size_t size) {
    if (file > 2)
        if (const int error = krodFault("write")) return errno = error, -1;
    return next<ssize_t (*)(int, const void*, size_t)>("write")(file, data, size);
}

int fsync(int file) {
    if (const int error = krodFault("fsync")) return errno = error, -1;
    return next<int (*)(int)>("fsync")(file);
}

int fdatasync(int file) {
    if (const int error = krodFault("fdatasync")) return errno = error, -1;
    return next<int (*)(int)>("fdatasync")(file);
}

int renameat2(int from, const char* old, int to, const char* name, unsigned flags) {
    if (const int error = krodFault("rename")) return errno = error, -1;
    return next<int (*)(int, const char*, int, const char*, unsigned)>("renameat2")(from, old, to, name,
                                                                                    flags);
}

int mkdir(const char* path, mode_t mode) {
    if (const int error = krodFault("mkdir")) return errno = error, -1;
    return next<int (*)(const char*, mode_t)>("mkdir")(path, mode);
}

int unlink(const char* path) noexcept {
    if (const int error = krodFault("unlink")) return errno = error, -1;
    return next<int (*)(const char*)>("unlink")(path);
}

int rmdir(const char* path) noexcept {
    if (const int error = krodFault("rmdir")) return errno = error, -1;
    return next<int (*)(const char*)>("rmdir")(path);
}
}
