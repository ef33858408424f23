// SPDX-License-Identifier: Apache-2.0
#include "Runs.h"

#include "ProcessTree.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <stdexcept>

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

double secondsOf(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

[[noreturn]] void become(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    dup2(open("/dev/null", O_WRONLY), 1);
    execvp(arguments[0], arguments.data());
    _exit(127);
}

/// Adds the counters of a process that has ended and is not reaped yet.
void addCounters(pid_t child, Run& run) {
    std::ifstream counters("/proc/" + std::to_string(child) + "/io");
    std::string name;
    for (std::uint64_t value = 0; counters >> name >> value;) {
        if (name == "rchar:") run.read += value;
        if (name == "wchar:") run.written += value;
    }
}

/// Reaps a process that has ended, and gives its status.
int reap(pid_t child, Run& run) {
    addCounters(child, run);
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    run.processorSeconds += secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
    run.peakMegabytes = std::max(run.peakMegabytes, static_cast<double>(usage.ru_maxrss) / 1024);
    return status;
}

/// Waits for the processes that the program has left behind: they became children of this one, which may have had others
/// before.
void reapOthers(const std::vector<pid_t>& before, Run& run) {
    const auto isLeft = [&](pid_t child) { return std::ranges::find(before, child) == before.end(); };
    for (;;) {
        const std::vector<pid_t> all = childrenOf(getpid());
        const auto left = std::ranges::find_if(all, isLeft);
        if (left == all.end()) return;
        siginfo_t info{};
        waitid(P_PID, static_cast<id_t>(*left), &info, WEXITED | WNOWAIT);
        reap(*left, run);
    }
}

} // namespace

Run run(const std::vector<std::string>& words, Watch watch) {
    Run done;
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    const std::vector<pid_t> before = childrenOf(getpid());
    const auto start = Clock::now();
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("no process can be made");
    if (child == 0) become(words);
    double treeMegabytes = 0;
    if (watch == Watch::Memory) treeMegabytes = peakOfTree(child);
    siginfo_t info{};
    waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT);
    done.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    const int status = reap(child, done);
    done.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128;
    reapOthers(before, done);
    done.peakMegabytes = std::max(done.peakMegabytes, treeMegabytes);
    return done;
}

Run process(const std::string& input, const std::string& output, const std::vector<std::string>& modules,
            Watch watch) {
    std::vector<std::string> words{PLIME, "process", input, "-o", output};
    for (const std::string& module : modules) words.insert(words.end(), {"--with", module});
    const Run done = run(words, watch);
    if (!done.isDone()) throw std::runtime_error("plime ended with " + std::to_string(done.code));
    return done;
}

} // namespace bench
