// SPDX-License-Identifier: Apache-2.0
// Runs load_tool, for what ends a process or cannot be undone in one.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

/// What the tool prints after the line "-- end" when it is told to end in that way; see LoadTool.cpp.
inline std::string toolOutput(const std::string& way) {
    const std::string command = "'" LOAD_TOOL "' " + way + " '" TOVAR_PLIME "'";
    std::string text;
    FILE* pipe = ::popen(command.c_str(), "r");
    for (int letter = 0; pipe != nullptr && (letter = std::fgetc(pipe)) != EOF;)
        text += static_cast<char>(letter);
    EXPECT_TRUE(pipe != nullptr && ::pclose(pipe) == 0) << text;
    const std::string mark = "-- end\n";
    const std::size_t end = text.find(mark);
    return end == std::string::npos ? "no end: " + text : text.substr(end + mark.size());
}
