// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/GpuChoice.h"

#include "workbench/report/Failure.h"

#include <charconv>
#include <system_error>

namespace workbench {
namespace {

bool looksLikeNumber(std::string_view text) {
    if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

} // namespace

std::string GpuChoice::text() const {
    switch (kind) {
    case Kind::Automatic:
        return "auto";
    case Kind::Software:
        return "software";
    case Kind::Index:
        return std::to_string(index);
    case Kind::Name:
        return name;
    }
    return {};
}

GpuChoice parseGpuChoice(std::string_view text) {
    if (text == "auto") return {};
    if (text == "software") return {GpuChoice::Kind::Software, 0, ""};
    if (!text.empty() && !looksLikeNumber(text)) return {GpuChoice::Kind::Name, 0, std::string(text)};
    GpuChoice choice{GpuChoice::Kind::Index, 0, ""};
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, choice.index);
    if (result.ec != std::errc() || result.ptr != end || choice.index < 0)
        throw Failure(Fault::Usage, {"--gpu",
                                     "does not name a device",
                                     "auto, software, a device number or a part of a device's name",
                                     '"' + std::string(text) + '"',
                                     "See the devices with: plime doctor",
                                     {}});
    return choice;
}

} // namespace workbench
