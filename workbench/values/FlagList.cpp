// SPDX-License-Identifier: Apache-2.0
#include "host/values/FlagList.h"

#include <algorithm>
#include <unordered_map>

namespace krod {

FlagList::FlagList(std::string_view text, char separator) {
    std::unordered_map<std::string_view, std::size_t> places; // of names in the list
    while (!text.empty()) {
        const std::size_t length = std::min(text.find(separator), text.size());
        const std::string_view token = text.substr(0, length);
        text.remove_prefix(std::min(length + 1, text.size()));
        if (token.size() < 2 || (token[0] != '+' && token[0] != '-')) continue;

        const std::string_view name = token.substr(1);
        const bool on = token[0] == '+';
        const auto [known, isNew] = places.emplace(name, list.size());
        if (isNew)
            list.push_back({std::string(name), on});
        else
            list[known->second].on = on;
    }
}

bool FlagList::operator()(std::string_view name, bool& state) const noexcept {
    const auto flag = std::ranges::find(list, name, &Flag::name);
    if (flag == list.end()) return false;
    state = flag->on;
    return true;
}

} // namespace krod
