// SPDX-License-Identifier: Apache-2.0
#include "tests/app/Program.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

/// The two ends of one stream; -1 where there is none.
struct Ends {
    int read = -1;
    int write = -1;
};

/// A terminal of a file system of its own, which is not mounted anywhere; for bare roots without /dev/pts. Needs the
/// right to mount.
Ends openUnmountedTerminal() {
    const int files = ::fsopen("devpts", FSOPEN_CLOEXEC);
    ::fsconfig(files, FSCONFIG_SET_STRING, "ptmxmode", "0666", 0);
    ::fsconfig(files, FSCONFIG_CMD_CREATE, nullptr, nullptr, 0);
    const int folder = ::fsmount(files, FSMOUNT_CLOEXEC, 0);
    Ends ends;
    ends.read = ::openat(folder, "ptmx", O_RDWR | O_NOCTTY);
    int locked = 0;
    ::ioctl(ends.read, TIOCSPTLCK, &locked);
    ends.write = ::ioctl(ends.read, TIOCGPTPEER, O_RDWR | O_NOCTTY);
    ::close(folder);
    ::close(files);
    return ends;
}

Ends openTerminal() {
    Ends ends;
    if (::openpty(&ends.read, &ends.write, nullptr, nullptr, nullptr) == 0) return ends;
    ends = openUnmountedTerminal();
    if (ends.write < 0)
        throw std::runtime_error("there is no terminal to test with; mount devpts on /dev/pts");
    return ends;
}

Ends open(Sink sink) {
    Ends ends;
    std::array<int, 2> pipe{};
    switch (sink) {
    case Sink::Captured:
    case Sink::Broken:
        if (::pipe2(pipe.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        ends = {pipe[0], pipe[1]};
        break;
    case Sink::Full:
        ends.write = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
        break;
    case Sink::Terminal:
        ends = openTerminal();
        ::fcntl(ends.read, F_SETFD, FD_CLOEXEC);
        ::fcntl(ends.write, F_SETFD, FD_CLOEXEC);
        break;
    case Sink::Closed:
        break;
    }
    if (sink == Sink::Broken) {
        ::close(ends.read);
        ends.read = -1;
    }
    return ends;
}

/// Everything up to the end; a terminal ends with EIO.
std::string readAll(int descriptor) {
    std::string text;
    std::array<char, 65536> buffer;
    while (descriptor >= 0) {
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    if (descriptor >= 0) ::close(descriptor);
    return text;
}

std::vector<std::string> environmentFor(const Call& call) {
    std::map<std::string, std::string> variables;
    for (char** entry = environ; *entry; ++entry) {
        const std::string text = *entry;
        const std::size_t sign = text.find('=');
        variables[text.substr(0, sign)] = text.substr(sign + 1);
    }
    for (const char* const name : {"KROD_PLUGIN_PATH", "KROD_SHADER_PATH", "NO_COLOR"}) variables.erase(name);
    variables["TERM"] = "xterm";
    variables["XDG_DATA_HOME"] = "/nowhere";      // shader files of whoever runs the tests
    variables["XDG_CACHE_HOME"] = PLIME ".cache"; // a folder in the build
    for (const auto& [name, value] : call.environment) variables[name] = value;
    std::vector<std::string> entries;
    for (const auto& [name, value] : variables) entries.push_back(name + '=' + value);
    return entries;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

void connect(int descriptor, int standard) {
    if (descriptor < 0)
        ::close(standard);
    else
        ::dup2(descriptor, standard);
}

} // namespace

Result run(const Call& call) {
    std::vector<std::string> words = {PLIME};
    words.insert(words.end(), call.arguments.begin(), call.arguments.end());
    std::vector<std::string> variables = environmentFor(call);
    const std::vector<char*> arguments = pointers(words), environment = pointers(variables);
    const Ends output = open(call.output), error = open(call.error);

    const pid_t child = ::fork();
    if (child < 0) throw std::runtime_error("no child process");
    if (child == 0) {
        if (call.closedInput) ::close(0);
        connect(output.write, 1);
        connect(error.write, 2);
        const rlimit limit{call.largestFile, call.largestFile};
        if (call.largestFile > 0) ::setrlimit(RLIMIT_FSIZE, &limit);
        if (!call.folder.empty() && ::chdir(call.folder.c_str()) != 0) ::_exit(126);
        ::execve(PLIME, arguments.data(), environment.data());
        ::_exit(127);
    }
    for (const int end : {output.write, error.write})
        if (end >= 0) ::close(end);
    Result result;
    std::thread reader([&] { result.error = readAll(error.read); });
    if (call.meanwhile) call.meanwhile(child);
    result.output = readAll(output.read);
    reader.join();
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
    result.code = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    return result;
}
