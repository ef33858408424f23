// SPDX-License-Identifier: Apache-2.0
// Content that is made when it is first needed.
#pragma once

#include "host/core/VActionNotifier.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>

namespace workbench::objects {

/// Content that follows from settings: made at the first call of `get`, and made anew when the settings
/// differ.
template <class Settings, class Content>
class Kept {
public:
    /// The content for the settings; `make(settings)` gives it where it is not at hand. When `make` throws,
    /// nothing is kept and the next call tries again.
    template <class Make>
    const Content& get(const Settings& settings, const Make& make) {
        if (content && madeFrom == settings) return *content;
        content.reset();
        madeFrom = settings;
        return content.emplace(make(settings));
    }

private:
    Settings madeFrom;
    std::optional<Content> content;
};

/// What `read(file)` gives; for an empty name a warning and empty content, since a module that was just made
/// has no file yet.
template <class Read>
auto readNamed(const char* module, const std::string& file, const Read& read) {
    using Content = decltype(read(std::filesystem::path()));
    if (!file.empty()) return read(std::filesystem::path(file));
    krod::VActionNotifier::Warning(std::string(module) +
                                   ": draws nothing, because its parameter \"file\" is empty");
    return Content{};
}

/// "1 texture is", "3 textures are".
inline std::string countText(std::uint64_t count, const std::string& noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? " is" : "s are");
}

/// Warns that so many of a file's points or vertices are left out, as "2 of 4 points".
inline void warnOfLeftOut(const std::string& file, const std::string& howMany, const char* also = "") {
    krod::VActionNotifier::Warning(file + ": " + howMany +
                                   " have values that are not finite and are left out" + also);
}

} // namespace workbench::objects
