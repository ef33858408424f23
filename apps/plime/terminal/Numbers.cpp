// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/terminal/Numbers.h"

#include "workbench/report/Failure.h"

#include <charconv>
#include <limits>
#include <system_error>

namespace workbench {
namespace {

[[noreturn]] void refuse(const std::string& option, const std::string& expected, std::string_view got) {
    throw Failure(Fault::Usage,
                  {option, "has a wrong value", expected, '"' + std::string(got) + '"', "", {}});
}

} // namespace

int wholeNumber(const std::string& option, std::string_view text, int least, int most) {
    int value = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end || value < least || value > most)
        refuse(option, "a whole number from " + std::to_string(least) + " to " + std::to_string(most), text);
    return value;
}

std::uint64_t byteSize(const std::string& option, std::string_view text) {
    const char* const end = text.data() + text.size();
    std::uint64_t value = 0;
    const auto result = std::from_chars(text.data(), end, value);
    const std::string_view unit(result.ptr, static_cast<std::size_t>(end - result.ptr));
    const bool known = unit.empty() || unit == "K" || unit == "M" || unit == "G";
    const int shift = unit == "K" ? 10 : unit == "M" ? 20 : unit == "G" ? 30 : 0;
    const std::uint64_t most = std::numeric_limits<std::uint64_t>::max() >> shift;
    if (result.ec != std::errc() || !known || value == 0 || value > most)
        refuse(option, "a size such as 700M or 2G", text);
    return value << shift;
}

} // namespace workbench
