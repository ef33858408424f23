// SPDX-License-Identifier: Apache-2.0
// Named switches, as a parameter value.
#pragma once

#include "host/Export.h"

#include <string>
#include <string_view>
#include <vector>

namespace krod {

/// A list of named on/off flags. Text form: tokens with a blank between them, "+name" for on and "-name" for
/// off.
class KROD_API FlagList {
public:
    struct Flag {
        std::string name;
        bool on = false;
        friend bool operator==(const Flag&, const Flag&) = default;
    };

    FlagList() = default;
    /// [any · copies] Takes the flags of a text whose tokens are separated by `separator`. Tokens without
    /// sign or name are left out, of two flags with one name the later state holds; use VValueTrait to learn
    /// what is wrong.
    FlagList(std::string_view text, char separator);

    /// [any] Answers whether a flag of that name is listed and, only if so, gives its state.
    bool operator()(std::string_view name, bool& state) const noexcept;

    /// [any · borrows] All flags in the order of the text.
    [[nodiscard]] const std::vector<Flag>& flags() const noexcept { return list; }
    friend bool operator==(const FlagList&, const FlagList&) = default;

private:
    std::vector<Flag> list;
};

} // namespace krod
