// SPDX-License-Identifier: Apache-2.0
// Level 4: a plug-in is a guest in its process.
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Guest.h"
#include "workbench/validate/Module.h"

#include <algorithm>
#include <clocale>
#include <csignal>
#include <exception>
#include <filesystem>
#include <locale>
#include <map>
#include <new>

#include <sys/stat.h>
#include <unistd.h>

extern char** environ;

namespace workbench::validate {
namespace {

using Census = std::map<std::string, std::string>;

std::size_t entriesOf(const char* folder) {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
}

std::string handlerOf(int signal) {
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    return std::to_string(reinterpret_cast<std::uintptr_t>(action.sa_handler));
}

std::string fileBehind(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) return "none";
    return std::to_string(status.st_dev) + ':' + std::to_string(status.st_ino);
}

/// What belongs to the process and not to a plug-in, by what to call it.
Census census() {
    Census all;
    all["the locale"] = std::setlocale(LC_ALL, nullptr) + std::string(" ") + std::locale().name();
    all["the current folder"] = std::filesystem::current_path().string();
    all["the number of threads"] = std::to_string(entriesOf("/proc/self/task"));
    all["the number of open files"] = std::to_string(entriesOf("/proc/self/fd"));
    for (int i = 0; i < 3; ++i) all["standard descriptor " + std::to_string(i)] = fileBehind(i);
    for (const int signal : {SIGABRT, SIGALRM, SIGCHLD, SIGFPE, SIGINT, SIGPIPE, SIGSEGV, SIGTERM, SIGUSR1})
        all["the handler of SIG" + std::string(::sigabbrev_np(signal))] = handlerOf(signal);
    const mode_t mask = ::umask(0);
    ::umask(mask);
    all["the mask of new files"] = std::to_string(mask);
    std::string& variables = all["the environment"];
    for (char** entry = environ; *entry; ++entry) variables += std::string(*entry) + '\n';
    all["the handler of exhausted memory"] = std::get_new_handler() ? "set" : "none";
    all["the handler of terminate"] = std::to_string(reinterpret_cast<std::uintptr_t>(std::get_terminate()));
    return all;
}

} // namespace

void checkSurroundings(Trial& trial) {
    const Census before = census();
    const Guest guest(trial);
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        try {
            static_cast<void>(shaderTexts(*object));
        } catch (const std::exception&) {
            continue; // other checks tell
        }
    }
    for (const auto& [what, now] : census())
        trial.require(now == before.at(what), "changes " + what + " of the process");
}

} // namespace workbench::validate
