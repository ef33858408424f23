// SPDX-License-Identifier: Apache-2.0
// What the plug-in probe and the host agree on: the probe answers letter by letter, while it works.
#pragma once

#include "workbench/report/Failure.h"

#include <cstddef>
#include <string>
#include <vector>

namespace workbench {

/// The file of the probe on which it answers. The three standard ones belong to the plug-in.
inline constexpr int ProbeAnswerDescriptor = 3;

/// Bytes of addresses around the plug-in that the probe leaves without memory: no instruction reaches further.
inline constexpr std::size_t ProbeDistance = std::size_t{4} << 30;

/// What has happened. An answer without Started is none: the probe itself does not work.
enum class ProbeAnswer : char {
    Started = 's',
    Loaded = 'l',      ///< the entry has said yes
    Unloaded = 'u',    ///< nothing follows
    Refused = 'r',     ///< in good order; the packed message follows
    OutOfMemory = 'm', ///< while it was loaded; nothing follows
    Exception = 'x',   ///< left the library while it was loaded; its text follows
};

/// A message as bytes: its fields with zeros between them.
[[nodiscard]] inline std::string packed(const Diagnostic& message) {
    std::string bytes = message.who;
    for (const std::string* field : {&message.what, &message.expected, &message.got, &message.advice})
        bytes += '\0' + *field;
    for (const std::string& detail : message.details) bytes += '\0' + detail;
    return bytes;
}

/// The message of those bytes; fields that are missing are empty.
[[nodiscard]] inline Diagnostic unpacked(const std::string& bytes) {
    std::vector<std::string> fields(1);
    for (const char letter : bytes) {
        if (letter == '\0')
            fields.emplace_back();
        else
            fields.back() += letter;
    }
    constexpr std::size_t Fixed = 5;
    if (fields.size() < Fixed) fields.resize(Fixed);
    return {fields[0], fields[1], fields[2], fields[3], fields[4], {fields.begin() + Fixed, fields.end()}};
}

} // namespace workbench
