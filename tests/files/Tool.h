// SPDX-License-Identifier: Apache-2.0
// Files made and judged by programs that are not ours.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>

/// Runs a command line of the shell, with what it prints on both streams as the result. It must succeed.
inline std::string tool(const std::string& command) {
    std::string printed;
    std::FILE* const output = ::popen(("{ " + command + "; } 2>&1").c_str(), "r");
    if (!output) {
        ADD_FAILURE() << "no shell: " << command;
        return printed;
    }
    std::array<char, 4096> part{};
    while (const std::size_t size = std::fread(part.data(), 1, part.size(), output))
        printed.append(part.data(), size);
    const int status = ::pclose(output);
    EXPECT_EQ(status, 0) << command << '\n' << printed;
    return printed;
}
