// SPDX-License-Identifier: Apache-2.0
#include "ProcessTree.h"

#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace bench {
namespace {

using namespace std::chrono_literals;

constexpr auto Pause = 2ms; ///< between two looks

std::string place(pid_t process) { return "/proc/" + std::to_string(process); }

/// The process and all below it.
std::vector<pid_t> treeOf(pid_t root) {
    std::vector<pid_t> tree{root};
    for (std::size_t i = 0; i < tree.size(); ++i)
        for (const pid_t child : childrenOf(tree[i])) tree.push_back(child);
    return tree;
}

/// Kilobytes of a process, each shared page divided by the number of its users; 0 when it has ended.
double proportionalKilobytes(pid_t process) {
    std::ifstream lines(place(process) + "/smaps_rollup");
    for (std::string word; lines >> word;) {
        double kilobytes = 0;
        if (word == "Pss:" && lines >> kilobytes) return kilobytes;
    }
    return 0;
}

bool hasEnded(pid_t child) {
    siginfo_t info{};
    return waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT | WNOHANG) != 0 ||
           info.si_pid != 0;
}

} // namespace

std::vector<pid_t> childrenOf(pid_t process) {
    std::vector<pid_t> all;
    std::error_code ended;
    for (const auto& thread : std::filesystem::directory_iterator(place(process) + "/task", ended)) {
        std::ifstream children(thread.path() / "children");
        for (pid_t child = 0; children >> child;) all.push_back(child);
    }
    return all;
}

double peakOfTree(pid_t child) {
    double peak = 0;
    while (!hasEnded(child)) {
        double sum = 0;
        for (const pid_t process : treeOf(child)) sum += proportionalKilobytes(process);
        peak = std::max(peak, sum / 1024);
        std::this_thread::sleep_for(Pause);
    }
    return peak;
}

} // namespace bench
