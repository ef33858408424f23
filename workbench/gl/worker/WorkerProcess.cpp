// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/worker/WorkerProcess.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace workbench {
namespace {

using Clock = std::chrono::steady_clock;
using Kind = TrialOutcome::Kind;

/// A file descriptor that is closed at the end of its scope.
class Descriptor {
public:
    explicit Descriptor(int number) : number(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }
    void close() {
        if (number >= 0) ::close(std::exchange(number, -1));
    }
    [[nodiscard]] int get() const { return number; }

private:
    int number;
};

[[noreturn]] void fail(const char* what, int error = errno) {
    throw std::system_error(error, std::generic_category(), what);
}

/// A file in memory: the worker reads it at its leisure, and no pipe can fill or break.
int requestOf(const ShaderTrial& trial) {
    const int file = ::memfd_create("shader", MFD_CLOEXEC);
    if (file < 0) fail("memfd_create");
    const std::vector<char> bytes = packed(trial);
    for (std::size_t at = 0; at < bytes.size();) {
        const ssize_t written = ::write(file, bytes.data() + at, bytes.size() - at);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            ::close(file);
            fail("write");
        }
        at += static_cast<std::size_t>(written);
    }
    ::lseek(file, 0, SEEK_SET);
    return file;
}

/// What posix_spawn is told, released at the end of its scope.
struct SpawnPlan {
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;

    SpawnPlan(int request, int answer) {
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_adddup2(&files, request, 0);
        posix_spawn_file_actions_adddup2(&files, answer, 1);
        posix_spawn_file_actions_addopen(&files, 2, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&files, 3);
        posix_spawnattr_init(&attributes);
        sigset_t none, all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setpgroup(&attributes, 0);
        posix_spawnattr_setflags(&attributes,
                                 POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    }
    SpawnPlan(const SpawnPlan&) = delete;
    SpawnPlan& operator=(const SpawnPlan&) = delete;
    ~SpawnPlan() {
        posix_spawn_file_actions_destroy(&files);
        posix_spawnattr_destroy(&attributes);
    }
};

/// A running worker, which does not outlive this object.
class Worker {
public:
    explicit Worker(pid_t process) : process(process) {}
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker() { end(); }

    void end() {
        if (process <= 0) return;
        ::kill(-process, SIGKILL);
        static_cast<void>(wait());
    }

    /// Its status; nothing where somebody has turned off waiting for children.
    std::optional<int> wait() {
        int status = 0;
        pid_t ended = 0;
        while ((ended = ::waitpid(process, &status, 0)) < 0 && errno == EINTR) {
        }
        process = 0;
        return ended < 0 ? std::nullopt : std::optional<int>(status);
    }

private:
    pid_t process;
};

/// All that the worker says until it closes its end; nothing if that does not come in time.
std::optional<std::string> answerWithin(int pipe, std::chrono::milliseconds time) {
    constexpr std::size_t Longest = 4096;
    const auto end = Clock::now() + time;
    std::string answer;
    while (answer.size() < Longest) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        pollfd watched{pipe, POLLIN, 0};
        const int ready = ::poll(&watched, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
        if (ready == 0) return std::nullopt;
        if (ready < 0 && errno != EINTR) break;
        if (ready < 0) continue;
        char part[512];
        const ssize_t size = ::read(pipe, part, sizeof part);
        if (size == 0) break;
        if (size > 0) answer.append(part, static_cast<std::size_t>(size));
    }
    return answer;
}

TrialOutcome outcomeOf(const ShaderTrial& trial, const std::string& answer, std::optional<int> status) {
    const auto is = [&](TrialAnswer wanted) {
        return !answer.empty() && answer[0] == static_cast<char>(wanted);
    };
    if (is(TrialAnswer::Drawn)) return {Kind::Drawn, ""};
    if (is(TrialAnswer::Refused)) return {Kind::Refused, ""};
    if (is(TrialAnswer::NoOpenGL)) return {Kind::NotStarted, answer.substr(1)};
    if (!status) return {Kind::Killed, "without a word"};
    if (WIFSIGNALED(*status) && WTERMSIG(*status) == SIGXCPU)
        return {Kind::TooLong, std::to_string(trial.processorSeconds) + " s of processor time"};
    if (WIFSIGNALED(*status)) return {Kind::Killed, "signal " + std::to_string(WTERMSIG(*status))};
    constexpr int CannotExecute = 127;
    if (WEXITSTATUS(*status) == CannotExecute) return {Kind::NotStarted, "it cannot be loaded"};
    return {Kind::Killed, "exit code " + std::to_string(WEXITSTATUS(*status))};
}

} // namespace

TrialOutcome tryInWorker(const std::filesystem::path& worker, const ShaderTrial& trial,
                         std::chrono::milliseconds time) {
    const Descriptor request(requestOf(trial));
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0) fail("pipe2");
    const Descriptor answers(ends[0]);
    Descriptor workersEnd(ends[1]);

    std::string program = worker.string();
    char* const arguments[] = {program.data(), nullptr};
    pid_t process = 0;
    const SpawnPlan plan(request.get(), workersEnd.get());
    const int error =
        ::posix_spawn(&process, program.c_str(), &plan.files, &plan.attributes, arguments, environ);
    if (error != 0) return {Kind::NotStarted, program + ": " + std::strerror(error)};
    workersEnd.close();

    Worker child(process);
    const auto answer = answerWithin(answers.get(), time);
    if (!answer) return {Kind::TooLong, ""};
    return outcomeOf(trial, *answer, child.wait());
}

} // namespace workbench
