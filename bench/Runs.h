// SPDX-License-Identifier: Apache-2.0
// Whole programs, as the operating system accounts for them, and pictures for them to work on.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace bench {

/// What one run of a program cost.
struct Run {
    int code = 0; ///< exit status; 127 when there is no such program
    double seconds = 0;
    double peakMegabytes = 0;            ///< largest resident memory
    std::uint64_t read = 0, written = 0; ///< bytes, through system calls; 0 where the system does not tell

    [[nodiscard]] bool isDone() const { return code == 0; }
};

/// Runs a program of the search path to its end; its standard output goes nowhere.
[[nodiscard]] Run run(const std::vector<std::string>& words);

/// Runs `plime process` from one picture to another through modules. Throws std::runtime_error when that fails.
Run process(const std::string& input, const std::string& output, const std::vector<std::string>& modules);

/// A folder of its own in the temporary folder, removed with all it holds.
class Folder {
public:
    /// Throws std::filesystem::filesystem_error.
    Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder();

    [[nodiscard]] std::string file(const char* name) const { return path / name; }

private:
    std::filesystem::path path;
};

/// Writes a square picture of half RGBA, uncompressed EXR.
void writeHalfPicture(const std::string& path, int side);

} // namespace bench
