// SPDX-License-Identifier: Apache-2.0
// Messages for people, on standard error.
#pragma once

#include "workbench/report/Failure.h"

#include <string_view>

namespace workbench {

/// When messages are coloured.
enum class Colour {
    Auto, ///< on a terminal, unless NO_COLOR is set or TERM is "dumb"
    Always,
    Never,
};

/// Prints one line per message, details indented below it. Control characters of foreign texts are escaped,
/// so that no file name or module can play tricks on a terminal. A standard error that cannot be written is
/// passed over.
class Report {
public:
    /// The file descriptor to print to; it is borrowed.
    explicit Report(int descriptor = 2);

    void setColour(Colour colour);
    /// Leaves out warnings and notes.
    void setQuiet(bool quiet) noexcept { silent = quiet; }
    /// Prints notes too.
    void setVerbose(bool verbose) noexcept { talkative = verbose; }

    /// "plime: error: <sentence>", always printed.
    void error(const Diagnostic& message);
    /// "plime: warning: <sentence>", unless quiet.
    void warning(const Diagnostic& message);
    /// "plime: <text>", only when verbose. The text is a whole sentence.
    void note(std::string_view text);

private:
    void print(std::string_view kind, std::string_view colour, const Diagnostic& message);
    void write(std::string_view text);

    int descriptor;
    bool coloured = false;
    bool silent = false;
    bool talkative = false;
};

} // namespace workbench
