// SPDX-License-Identifier: Apache-2.0
#include "workbench/validate/ChildProcess.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace workbench::validate {
namespace {

using Clock = std::chrono::steady_clock;

[[maybe_unused]] constexpr rlim_t MostData = rlim_t{4} << 30;
constexpr rlim_t MostFile = rlim_t{256} << 20;
constexpr std::size_t MostErrors = 2000;      // bytes that are kept of standard error
constexpr std::size_t MostResult = 1U << 20U; // no outcome is longer

[[noreturn]] void failWith(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// Owns a descriptor.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number(number) {}
    Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number, other.number);
        return *this;
    }
    ~Descriptor() { close(); }
    void close() {
        if (number >= 0) ::close(std::exchange(number, -1));
    }
    [[nodiscard]] int get() const { return number; }

private:
    int number;
};

/// A pipe whose ends are closed in programs that are started.
struct Pipe {
    Pipe() {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) failWith("pipe");
        read = Descriptor(ends[0]);
        write = Descriptor(ends[1]);
        ::fcntl(read.get(), F_SETFL, O_NONBLOCK);
    }
    Descriptor read, write;
};

void limit(decltype(RLIMIT_CORE) what, rlim_t most) {
    rlimit now{};
    ::getrlimit(what, &now);
    now.rlim_cur = now.rlim_max == RLIM_INFINITY ? most : std::min(most, now.rlim_max);
    ::setrlimit(what, &now);
}

/// The child's side, between fork and exec.
[[noreturn]] void become(char* const* words, int result, int errors) {
    ::setsid();
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_FSIZE, MostFile);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    limit(RLIMIT_DATA, MostData);
#endif
    const int nowhere = ::open("/dev/null", O_RDWR);
    ::dup2(nowhere, 0);
    ::dup2(nowhere, 1);
    ::dup2(errors, 2);
    if (nowhere > 2) ::close(nowhere);
    ::dup2(result, ResultDescriptor);
    ::execv("/proc/self/exe", words);
    ::_exit(127);
}

/// Appends what can be read at once; false at the end.
bool drain(int descriptor, std::string& text, std::size_t most, bool keepEnd) {
    std::array<char, 65536> part{};
    for (;;) {
        const ssize_t got = ::read(descriptor, part.data(), part.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return true;
        if (got == 0) return false;
        if (keepEnd || text.size() < most) text.append(part.data(), static_cast<std::size_t>(got));
        if (text.size() > most)
            text.erase(keepEnd ? 0 : most, keepEnd ? text.size() - most : std::string::npos);
        if (static_cast<std::size_t>(got) < part.size()) return true;
    }
}

/// Watches one child until it ends, its time is over, or the caller wants to stop.
class Watch {
public:
    Watch(pid_t child, Pipe& result, Pipe& errors)
        : child(child),
          result(result),
          errors(errors),
          process(static_cast<int>(::syscall(SYS_pidfd_open, child, 0U))) {}

    Ending untilEnd(Clock::time_point deadline, const std::function<bool()>& stop) {
        Ending ending;
        std::array<pollfd, 3> watched = {
            {{process.get(), POLLIN, 0}, {result.read.get(), POLLIN, 0}, {errors.read.get(), POLLIN, 0}}};
        bool alive = true;
        while (alive) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
            if (left.count() <= 0) return killed(std::move(ending), Ending::Way::TimedOut);
            if (::poll(watched.data(), watched.size(), static_cast<int>(left.count()) + 1) < 0 && stop &&
                stop())
                return killed(std::move(ending), Ending::Way::Stopped);
            alive = (watched[0].revents & POLLIN) == 0;
            readPipes(ending, watched);
        }
        return reaped(std::move(ending));
    }

private:
    void readPipes(Ending& ending, std::array<pollfd, 3>& watched) {
        if (!drain(result.read.get(), ending.result, MostResult, false)) watched[1].fd = -1;
        if (!drain(errors.read.get(), ending.errors, MostErrors, true)) watched[2].fd = -1;
    }

    int reap() {
        int status = 0;
        ::kill(-child,
               SIGKILL); // whoever it has left behind; it is not yet reaped, so that its number is its own
        while (::waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
        return status;
    }

    Ending reaped(Ending ending) {
        const int status = reap();
        ending.way = WIFSIGNALED(status) ? Ending::Way::Signal : Ending::Way::Exited;
        ending.number = WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
        return ending;
    }

    Ending killed(Ending ending, Ending::Way way) {
        ::kill(child, SIGKILL);
        reap();
        ending.way = way;
        return ending;
    }

    pid_t child;
    Pipe& result;
    Pipe& errors;
    Descriptor process;
};

} // namespace

Ending runChild(const std::vector<std::string>& arguments, std::chrono::seconds limitOfTime,
                const std::function<bool()>& stop) {
    std::vector<std::string> words = {"plime"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);

    Pipe result, errors;
    const pid_t child = ::fork();
    if (child < 0) failWith("fork");
    if (child == 0) become(pointers.data(), result.write.get(), errors.write.get());
    result.write.close();
    errors.write.close();
    return Watch(child, result, errors).untilEnd(Clock::now() + limitOfTime, stop);
}

} // namespace workbench::validate
