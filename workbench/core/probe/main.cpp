// SPDX-License-Identifier: Apache-2.0
// plime-plugin-probe: loads a plug-in in place of the host, asks its entry and unloads it. It answers on
// ProbeAnswerDescriptor. It is started by the host, not by people.
#include "workbench/core/PluginManager.h"
#include "workbench/core/probe/ProbeAnswer.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

namespace {

using namespace workbench;

/// Needs no memory.
void tell(ProbeAnswer answer, std::string_view text = {}) noexcept {
    const char letter = static_cast<char>(answer);
    for (const std::string_view part : {std::string_view(&letter, 1), text})
        if (::write(ProbeAnswerDescriptor, part.data(), part.size()) != static_cast<ssize_t>(part.size()))
            ::_exit(1);
}

/// An exception that leaves a static initialiser can be caught by nobody, but it can be named.
[[noreturn]] void tellAndDie() noexcept {
    try {
        if (std::current_exception()) throw;
    } catch (const std::bad_alloc&) {
        tell(ProbeAnswer::OutOfMemory);
    } catch (const std::exception& error) {
        tell(ProbeAnswer::Exception, error.what());
    } catch (...) {
        tell(ProbeAnswer::Exception, "an object that is no std::exception");
    }
    std::abort();
}

char* reserve(std::size_t bytes) {
    return static_cast<char*>(
        ::mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
}

/// Broken code that reaches beyond its library meets nothing here; in the host it meets its neighbours, others
/// at each start. The system puts what is loaded next into the highest hole that is large enough: this leaves
/// those below a wide empty one only. Where there are too few addresses, the library is tried without.
void keepDistance() {
    constexpr std::size_t SmallerThanLibraries = std::size_t{16} << 10;
    const char* const distance = reserve(ProbeDistance);
    for (const char* hole = distance; hole != MAP_FAILED && hole >= distance;)
        hole = reserve(SmallerThanLibraries);
}

void probe(const char* path) {
    keepDistance();
    PluginManager manager;
    const LibraryId library = manager.load(path);
    tell(ProbeAnswer::Loaded);
    try {
        manager.unload(library);
    } catch (const Failure&) {
        // It holds objects of its own and stays in memory, which is no danger.
    }
    tell(ProbeAnswer::Unloaded);
    ::_exit(0);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    for (const int number : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL})
        std::signal(number, SIG_DFL); // handlers of sanitizers make exit codes of signals
    std::set_terminate(tellAndDie);
    tell(ProbeAnswer::Started);
    try {
        probe(argv[1]);
    } catch (const Failure& failure) {
        tell(ProbeAnswer::Refused, packed(failure.diagnostic()));
        ::_exit(0);
    } catch (...) {
        tellAndDie();
    }
}
