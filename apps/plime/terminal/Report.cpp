// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/terminal/Report.h"

#include "apps/plime/terminal/Text.h"

#include <cerrno>
#include <cstdlib>
#include <string>

#include <unistd.h>

namespace workbench {
namespace {

constexpr std::string_view Red = "\x1b[1;31m";
constexpr std::string_view Yellow = "\x1b[1;33m";
constexpr std::string_view Plain = "\x1b[0m";

bool environmentAllowsColour() {
    const char* const refused = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    return (!refused || !*refused) && terminal && std::string_view(terminal) != "dumb";
}

} // namespace

Report::Report(int descriptor) : descriptor(descriptor) { setColour(Colour::Auto); }

void Report::setColour(Colour colour) {
    coloured = colour == Colour::Always ||
               (colour == Colour::Auto && ::isatty(descriptor) != 0 && environmentAllowsColour());
}

void Report::error(const Diagnostic& message) { print("error: ", Red, message); }

void Report::warning(const Diagnostic& message) {
    if (!silent) print("warning: ", Yellow, message);
}

void Report::note(const Diagnostic& message) {
    if (silent) return;
    if (talkative)
        print("note: ", "", message);
    else
        ++untoldNotes;
}

void Report::detail(std::string_view text) {
    if (talkative && !silent) write("plime: " + printable(text) + '\n');
}

void Report::finish() {
    if (untoldNotes == 1) write("plime: 1 note, -v shows it.\n");
    if (untoldNotes > 1) write("plime: " + std::to_string(untoldNotes) + " notes, -v shows them.\n");
    untoldNotes = 0;
}

void Report::print(std::string_view kind, std::string_view colour, const Diagnostic& message) {
    std::string text = "plime: ";
    const bool painted = coloured && !colour.empty();
    if (painted) text += colour;
    text += kind;
    if (painted) text += Plain;
    text += printable(message.sentence()) + '\n';
    for (const std::string& detail : message.details) text += "  " + printable(detail) + '\n';
    write(text);
}

void Report::write(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

} // namespace workbench
