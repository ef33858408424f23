// SPDX-License-Identifier: Apache-2.0
// A whole run of `plime process` on a picture of 16384x16384 half pixels through Hollywood/GammaCorrection: time and
// peak memory, as the operating system accounts for them. Needs 5 GB of disk in the temporary folder.
#include "workbench/files/Picture.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <vector>

namespace {

using namespace workbench;
using Clock = std::chrono::steady_clock;

constexpr int Side = 16384, Rows = 64;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void writeInput(const std::filesystem::path& path) {
    PictureDescription description;
    description.width = description.height = Side;
    description.hasAlpha = true;
    const auto writer = PictureWriter::create(path, description, {.compression = ExrCompression::None});
    std::vector<krod::RGBAHalf> rows(std::size_t{Side} * Rows);
    for (int first = 0; first < Side; first += Rows) {
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const auto value =
                half_float::half(static_cast<float>((i * 7 + static_cast<std::size_t>(first)) % 4096) / 256);
            rows[i] = {value, value, value, half_float::half(1.0f)};
        }
        writer->writeRows(first, Rows, rows.data());
    }
    writer->finish();
}

int run(const std::vector<const char*>& words) {
    const pid_t child = fork();
    if (child == 0) {
        std::vector<char*> arguments;
        for (const char* word : words) arguments.push_back(const_cast<char*>(word));
        arguments.push_back(nullptr);
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
}

} // namespace

int main() {
    const auto folder = std::filesystem::temp_directory_path() / "plime-bench-process";
    std::filesystem::create_directories(folder);
    const std::string input = folder / "in.exr", output = folder / "out.exr";
    writeInput(input);
    const auto start = Clock::now();
    const int code =
        run({PLIME, "process", input.c_str(), "-o", output.c_str(), "--with", "Hollywood/GammaCorrection"});
    const double seconds = secondsSince(start);
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    std::filesystem::remove_all(folder);
    if (code != 0) {
        std::fprintf(stderr, "plime ended with %d\n", code);
        return 1;
    }
    std::printf(
        "plime process, %dx%d half EXR, uncompressed: %.1f s, peak memory %ld MB   (wanted: under 400 MB)\n",
        Side, Side, seconds, usage.ru_maxrss / 1024);
    return 0;
}
