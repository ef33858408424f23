// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/terminal/Report.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <string>

#include <unistd.h>

namespace workbench {
namespace {

/// What a report writes.
std::string written(const std::function<void(Report&)>& use) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) return "no pipe";
    {
        Report report(ends[1]);
        use(report);
    }
    ::close(ends[1]);
    std::array<char, 4096> buffer{};
    const ssize_t count = ::read(ends[0], buffer.data(), buffer.size());
    ::close(ends[0]);
    return {buffer.data(), static_cast<std::size_t>(count > 0 ? count : 0)};
}

const Diagnostic Message = {"file\n.obj",      "cannot be read", "a model",
                            "a \x1b[2Jfolder", "Give a file",    {"first\r", "second"}};

TEST(Report_warning, that_is_an_exclamation_gets_no_full_stop) {
    EXPECT_EQ(written([](Report& report) {
                  report.warning({"", "Could not register it!", "", "", "", {}});
              }),
              "plime: warning: Could not register it!\n");
}

TEST(Report_error, is_one_line_with_its_details_indented_and_nothing_for_a_terminal_to_obey) {
    EXPECT_EQ(
        written([](Report& report) { report.error(Message); }),
        "plime: error: file\\n.obj: cannot be read — expected a model, got a \\x1b[2Jfolder. Give a file.\n"
        "  first\\r\n  second\n");
}

TEST(Report_quiet, leaves_out_warnings_but_not_errors) {
    EXPECT_EQ(written([](Report& report) {
                  report.setQuiet(true);
                  report.warning(Message);
                  report.note(Message);
                  report.detail("Something.");
                  report.finish();
                  report.error({"", "it failed", "", "", "", {}});
              }),
              "plime: error: it failed.\n");
}

TEST(Report_detail, is_printed_only_when_verbose) {
    const auto tell = [](Report& report) {
        report.detail("Something.");
        report.finish();
    };
    EXPECT_EQ(written(tell), "");
    EXPECT_EQ(written([&](Report& report) {
                  report.setVerbose(true);
                  tell(report);
              }),
              "plime: Something.\n");
}

TEST(Report_note, is_counted_in_the_last_line_and_printed_when_verbose) {
    const Diagnostic message = {"a.exr", "has two layers", "", "", "", {}};
    const auto tell = [&](Report& report, int times) {
        for (; times > 0; --times) report.note(message);
        report.finish();
    };
    EXPECT_EQ(written([&](Report& report) { tell(report, 1); }), "plime: 1 note, -v shows it.\n");
    EXPECT_EQ(written([&](Report& report) { tell(report, 2); }), "plime: 2 notes, -v shows them.\n");
    EXPECT_EQ(written([&](Report& report) {
                  report.setVerbose(true);
                  tell(report, 2);
              }),
              "plime: note: a.exr: has two layers.\nplime: note: a.exr: has two layers.\n");
}

TEST(Report_colour, is_there_when_asked_for_and_not_where_no_terminal_is) {
    const Diagnostic message = {"", "it failed", "", "", "", {}};
    EXPECT_EQ(written([&](Report& report) {
                  report.setColour(Colour::Always);
                  report.error(message);
              }),
              "plime: \x1b[1;31merror: \x1b[0mit failed.\n");
    EXPECT_EQ(written([&](Report& report) { report.warning(message); }), "plime: warning: it failed.\n");
}

} // namespace
} // namespace workbench
