// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/ChildProgram.h"

#include "workbench/platform/ProcessLimits.h"
#include "workbench/platform/SignalPause.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace workbench {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using Way = ChildEnding::Way;

[[noreturn]] void fail(const char* what, int error = errno) {
    throw std::system_error(error, std::generic_category(), what);
}

std::string timeText(std::chrono::milliseconds time) {
    return time.count() % 1000 == 0 ? std::to_string(time.count() / 1000) + " s"
                                    : std::to_string(time.count()) + " ms";
}

void limit(decltype(RLIMIT_CORE) what, rlim_t soft, rlim_t hard) {
    rlimit now{};
    ::getrlimit(what, &now);
    now.rlim_max = std::min(now.rlim_max, hard); // a limit of its own stays where it is lower
    now.rlim_cur = std::min(now.rlim_max, soft);
    ::setrlimit(what, &now);
}

void accept(const ChildLimits& limits) {
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    limit(RLIMIT_CORE, 0, 0);
    if (limits.files != 0) limit(RLIMIT_NOFILE, limits.files, limits.files);
    if (limits.fileSize != 0) limit(RLIMIT_FSIZE, limits.fileSize, limits.fileSize);
    if (limits.memory != 0 && AddressesAreLimited) limit(RLIMIT_AS, limits.memory, limits.memory);
    const auto seconds = static_cast<rlim_t>(limits.processorTime.count());
    if (seconds != 0) limit(RLIMIT_CPU, seconds, seconds + 1); // the hard limit kills without a name for it
}

/// All that the child needs to become the program; nothing may be allocated between fork and exec.
struct Departure {
    const char* program;
    char* const* words;
    const int* files;
    int fileCount;
    const ChildLimits* limits;
    int trouble; ///< where an error number goes; closed by the start of the program
    pid_t parent;
};

/// Makes the files 0, 1, 2 ... of those that were given, and closes all others.
bool takeFiles(const Departure& departure, int* moved, int& trouble) {
    const int above = departure.fileCount + 1;
    const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    trouble = ::fcntl(trouble, F_DUPFD_CLOEXEC, above);
    if (nowhere < 0 || trouble < 0) return false;
    for (int i = 0; i < departure.fileCount; ++i) {
        const int given = departure.files[i];
        moved[i] = ::fcntl(given < 0 ? nowhere : given, F_DUPFD_CLOEXEC, above);
        if (moved[i] < 0) return false;
    }
    for (int i = 0; i < departure.fileCount; ++i)
        if (::dup2(moved[i], i) < 0) return false;
    trouble = ::dup3(trouble, departure.fileCount, O_CLOEXEC);
    if (trouble < 0) return false;
    ::closefrom(above);
    return true;
}

void forgetSignals() {
    for (int number = 1; number < NSIG; ++number) std::signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// The child's side, between fork and exec.
[[noreturn]] void depart(const Departure& departure, int* moved) {
    constexpr int CannotExecute = 127;
    int trouble = departure.trouble;
    ::setpgid(0, 0);
    if (departure.limits->endsWithThread) ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != departure.parent) ::_exit(CannotExecute);
    if (takeFiles(departure, moved, trouble)) {
        forgetSignals();
        accept(*departure.limits);
        ::execv(departure.program, departure.words);
    }
    const int error = errno;
    [[maybe_unused]] const ssize_t told = ::write(trouble, &error, sizeof error);
    ::_exit(CannotExecute);
}

/// The error number that a child tells; 0 as soon as it has become the program.
int troubleOf(int pipe) {
    int error = 0;
    ssize_t size = 0;
    while ((size = ::read(pipe, &error, sizeof error)) < 0 && errno == EINTR) continue;
    return size == sizeof error ? error : 0;
}

bool stillThere(pid_t process) {
    siginfo_t info{};
    int result = 0;
    while ((result = ::waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOWAIT)) < 0 &&
           errno == EINTR)
        continue;
    return result == 0;
}

} // namespace

std::string ChildEnding::text() const {
    switch (way) {
    case Way::Exited:
        return "exited with code " + std::to_string(number);
    case Way::Signal: {
        const char* const name = ::sigabbrev_np(number);
        return "was ended by signal " + std::to_string(number) +
               (name == nullptr ? "" : std::string(" (SIG") + name + ')');
    }
    case Way::TooLong:
        return "took longer than " + reason;
    case Way::NotStarted:
        return "cannot be started: " + reason;
    case Way::Unknown:
        break;
    }
    return "ended without a word";
}

fs::path helperProgram(std::string_view name) {
    std::error_code error;
    const fs::path beside = fs::read_symlink("/proc/self/exe", error).parent_path() / name;
    if (fs::exists(beside, error)) return beside;
    Dl_info library{};
    if (::dladdr(reinterpret_cast<const void*>(&helperProgram), &library) == 0) return beside;
    const fs::path other = fs::absolute(library.dli_fname, error).parent_path() / name;
    return fs::exists(other, error) ? other : beside;
}

ChildProgram::ChildProgram(const fs::path& program, const std::vector<std::string>& arguments,
                           const std::vector<int>& descriptors, const ChildLimits& limits)
    : limits(limits), deadline(Clock::now() + limits.time) {
    start(program, arguments, descriptors);
    if (process == 0) return;
    handle = Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0U)));
    if (handle.get() >= 0) return;
    const int error = errno;
    end(true);
    if (error != ESRCH) fail("pidfd_open", error); // else it is gone already, and nobody has waited for it
}

ChildProgram::~ChildProgram() { end(true); }

void ChildProgram::start(const fs::path& program, const std::vector<std::string>& arguments,
                         const std::vector<int>& descriptors) {
    std::vector<std::string> words = {program.string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    std::vector<int> files = descriptors;
    files.resize(std::max<std::size_t>(files.size(), 3), -1);
    std::vector<int> moved(files.size());
    Pipe trouble;
    const Departure departure{
        words[0].c_str(), pointers.data(),     files.data(), static_cast<int>(files.size()),
        &limits,          trouble.write.get(), ::getpid()};
    {
        const SignalPause pause;
        process = ::fork();
        if (process == 0) depart(departure, moved.data());
    }
    if (process < 0) {
        process = 0;
        fail("fork");
    }
    trouble.write.close();
    const int error = troubleOf(trouble.read.get());
    if (error == 0) return;
    end(true);
    ending = {Way::NotStarted, error, words[0] + ": " + std::strerror(error)};
}

int ChildProgram::millisecondsLeft() const {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, 1 << 30));
}

std::optional<std::string> ChildProgram::read(int descriptor, std::size_t most) const {
    std::string all;
    while (all.size() < most) {
        pollfd watched{descriptor, POLLIN, 0};
        const int ready = ::poll(&watched, 1, millisecondsLeft());
        if (ready == 0) return std::nullopt;
        if (ready < 0 && errno != EINTR) break;
        if (ready < 0) continue;
        char part[4096];
        const ssize_t size = ::read(descriptor, part, std::min(sizeof part, most - all.size()));
        if (size == 0) break;
        if (size > 0) all.append(part, static_cast<std::size_t>(size));
    }
    return all;
}

ChildEnding ChildProgram::wait() {
    if (process == 0) return ending;
    pollfd watched{handle.get(), POLLIN, 0};
    int ready = 0;
    while ((ready = ::poll(&watched, 1, millisecondsLeft())) < 0 && errno == EINTR) continue;
    end(ready == 0);
    return ending;
}

/// The number of the process, and so that of its group, is its own until it is waited for.
void ChildProgram::end(bool timeOver) {
    if (process == 0) return;
    if (timeOver) ::kill(-process, SIGKILL);
    const bool mine = stillThere(process);
    if (mine) ::kill(-process, SIGKILL);
    int status = 0;
    while (mine && ::waitpid(process, &status, 0) < 0 && errno == EINTR) continue;
    process = 0;
    if (!mine)
        ending = {Way::Unknown, 0, ""};
    else if (timeOver)
        ending = {Way::TooLong, 0, timeText(limits.time)};
    else if (WIFSIGNALED(status) && WTERMSIG(status) == SIGXCPU)
        ending = {Way::TooLong, SIGXCPU,
                  std::to_string(limits.processorTime.count()) + " s of processor time"};
    else if (WIFSIGNALED(status))
        ending = {Way::Signal, WTERMSIG(status), ""};
    else
        ending = {Way::Exited, WEXITSTATUS(status), ""};
}

} // namespace workbench
