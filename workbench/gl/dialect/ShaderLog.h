// SPDX-License-Identifier: Apache-2.0
// Reading the messages of GLSL compilers and showing them at the line that they mean.
#pragma once

#include "workbench/gl/dialect/LineTable.h"

#include <string>
#include <string_view>
#include <vector>

namespace workbench {

enum class LogSeverity { Error, Warning, Note };

/// One message of a compiler or linker.
struct LogEntry {
    LogSeverity severity = LogSeverity::Note;
    std::string region;  ///< "" if the message has no place; "shim" for lines that are not the text's
    int line = 0;        ///< within the region; 0 if the message has no place
    int column = 0;      ///< in the text's line, counted in bytes from 1; 0 if unknown
    int textLine = 0;    ///< in the whole text; 0 if the message has no place in it
    std::string message; ///< as the driver words it
    std::vector<std::string> further; ///< its continuation lines, for example the candidates of an overload
};

/// Reads the log of a driver: "0:3(17): error: …" (Mesa), "0(3) : error C1115: …" (NVIDIA), "ERROR: 0:3: …"
/// (Intel, AMD). Lines of another form become notes without a place. Never fails.
[[nodiscard]] std::vector<LogEntry> parseShaderLog(std::string_view log, const LineTable& table);

/// The entry for people: "body line 3, column 17: error: …", its continuation lines, then the line itself
/// with up to three neighbours of the same region on each side and a caret below the column. Control
/// characters are replaced.
[[nodiscard]] std::vector<std::string> renderLogEntry(const LogEntry& entry, const LineTable& table);

} // namespace workbench
