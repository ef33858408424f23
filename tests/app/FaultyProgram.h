// SPDX-License-Identifier: Apache-2.0
// Runs the built program with faults: see faults/SystemFaults.cpp and faults/GraphicsFaults.cpp.
#pragma once

#include "tests/app/PictureProgram.h"

#include <csignal>
#include <functional>
#include <map>
#include <string>

using Environment = std::map<std::string, std::string>;

/// The n-th call of that name fails with an error number; 0: each of them. "any" is every call that works on
/// files.
[[nodiscard]] Environment failing(const std::string& call, int number, int error);
/// Just before the n-th call of that name a signal comes, so many times.
[[nodiscard]] Environment signalled(const std::string& call, int number, int signal, int times = 1);
/// Textures of more samples do not fit into the memory for graphics.
[[nodiscard]] Environment withTexturesUpTo(int samples);
/// A thousand signals a second interrupt what waits.
[[nodiscard]] Environment inAStorm();
/// How many calls of that name the program makes, in a run that must succeed.
[[nodiscard]] int callsOf(const Words& words, const std::string& call, const std::filesystem::path& scratch);

/// A disk of so many bytes in a folder, which only this process sees and those that it starts.
class SmallDisk {
public:
    SmallDisk(std::filesystem::path folder, std::size_t bytes);
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    ~SmallDisk();

    /// Whether the system lets this test have one.
    [[nodiscard]] bool isThere() const noexcept { return mounted; }

private:
    std::filesystem::path folder;
    bool mounted = false;
};
