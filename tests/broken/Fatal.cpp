// SPDX-License-Identifier: Apache-2.0
// A plug-in that brings its process down, or holds it up. FAULT is one of the functions below; it is called
// when the library is unloaded if WHEN_UNLOADED is defined, else when it is loaded.
#include "host/core/VInitialization.h"

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <stdexcept>

#include <unistd.h>

namespace {

[[maybe_unused]] void exits() { std::exit(0); }
[[maybe_unused]] void endsAtOnce() { ::_exit(0); }
[[maybe_unused]] void aborts() { std::abort(); }
[[maybe_unused]] void throws() { throw std::runtime_error("no luck today"); }
[[maybe_unused]] void throwsNumber() { throw 7; }

[[maybe_unused]] void crashes() {
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
}

[[maybe_unused]] void works() {
    for (volatile bool endless = true; endless;) continue;
}

[[maybe_unused]] void waits() {
    for (;;) ::pause();
}

[[maybe_unused]] void takesMemory() {
    constexpr std::size_t Part = std::size_t{16} << 20;
    for (;;) static_cast<volatile char*>(::operator new(Part))[0] = 1;
}

const struct Life {
#ifdef WHEN_UNLOADED
    Life() {}
    ~Life() { FAULT(); }
#else
    Life() { FAULT(); }
#endif
} life;

} // namespace

extern "C" int KROD_API_2022_Feb_15__fatal(krod::VInitialization*) { return 1; }
