// SPDX-License-Identifier: Apache-2.0
// Messages for people, on standard error.
#pragma once

#include "workbench/report/Failure.h"

#include <cstddef>
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
    /// Leaves out warnings, notes and details.
    void setQuiet(bool quiet) noexcept { silent = quiet; }
    /// Prints notes and details too.
    void setVerbose(bool verbose) noexcept { talkative = verbose; }

    /// "plime: error: <sentence>", always printed.
    void error(const Diagnostic& message);
    /// "plime: warning: <sentence>", unless quiet: for what a user lost or can act on.
    void warning(const Diagnostic& message);
    /// "plime: note: <sentence>" when verbose; otherwise only counted: for what is good to know and no loss.
    void note(const Diagnostic& message);
    /// "plime: <text>", only when verbose: how the work is done. The text is a whole sentence.
    void detail(std::string_view text);
    /// Ends the messages of a command: "plime: 2 notes, -v shows them." unless they were printed or it is quiet.
    void finish();

private:
    void print(std::string_view kind, std::string_view colour, const Diagnostic& message);
    void write(std::string_view text);

    int descriptor;
    bool coloured = false;
    bool silent = false;
    bool talkative = false;
    std::size_t untoldNotes = 0;
};

} // namespace workbench
