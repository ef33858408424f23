// SPDX-License-Identifier: Apache-2.0
#include "Runs.h"

#include "workbench/files/Picture.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <stdexcept>

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int StripRows = 64;

[[noreturn]] void become(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    dup2(open("/dev/null", O_WRONLY), 1);
    execvp(arguments[0], arguments.data());
    _exit(127);
}

/// The counters of a process that has ended and is not reaped yet.
void readCounters(pid_t child, Run& run) {
    std::ifstream counters("/proc/" + std::to_string(child) + "/io");
    std::string name;
    for (std::uint64_t value = 0; counters >> name >> value;) {
        if (name == "rchar:") run.read = value;
        if (name == "wchar:") run.written = value;
    }
}

} // namespace

Run run(const std::vector<std::string>& words) {
    Run done;
    const auto start = Clock::now();
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("no process can be made");
    if (child == 0) become(words);
    siginfo_t info{};
    waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT);
    done.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    readCounters(child, done);
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    done.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128;
    done.peakMegabytes = static_cast<double>(usage.ru_maxrss) / 1024;
    return done;
}

Run process(const std::string& input, const std::string& output, const std::vector<std::string>& modules) {
    std::vector<std::string> words{PLIME, "process", input, "-o", output};
    for (const std::string& module : modules) words.insert(words.end(), {"--with", module});
    const Run done = run(words);
    if (!done.isDone()) throw std::runtime_error("plime ended with " + std::to_string(done.code));
    return done;
}

Folder::Folder()
    : path(std::filesystem::temp_directory_path() / ("plime-bench-" + std::to_string(getpid()))) {
    std::filesystem::create_directories(path);
}

Folder::~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

void writeHalfPicture(const std::string& path, int side) {
    workbench::PictureDescription description;
    description.width = description.height = side;
    description.hasAlpha = true;
    const auto writer =
        workbench::PictureWriter::create(path, description, {.compression = workbench::ExrCompression::None});
    std::vector<krod::RGBAHalf> rows(static_cast<std::size_t>(side) * StripRows);
    for (int first = 0; first < side; first += StripRows) {
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const auto step = (i * 7 + static_cast<std::size_t>(first)) % 4096;
            const half_float::half value(static_cast<float>(step) / 256);
            rows[i] = {value, value, value, half_float::half(1.0f)};
        }
        writer->writeRows(first, std::min(StripRows, side - first), rows.data());
    }
    writer->finish();
}

} // namespace bench
