// SPDX-License-Identifier: Apache-2.0
// Damage by chance, the same in every run: what the campaigns on files of all kinds share.
#pragma once

#include <algorithm>
#include <cstdio>
#include <map>
#include <random>
#include <string>

/// How many of the damages lie in the head of the file, and how many in windows that slide over all of it.
struct DamageAmount {
    int heads, windows;
};

/// What came of the damaged files, each with its count.
using Outcomes = std::map<std::string, int>;

/// Changes up to a tenth of the bytes between two places.
inline std::string damaged(std::string bytes, std::size_t from, std::size_t to, std::mt19937& random) {
    const std::size_t most = std::max<std::size_t>((to - from) / 10, 1);
    for (std::size_t left = 1 + random() % most; left > 0; --left)
        bytes[from + random() % (to - from)] = static_cast<char>(random());
    return bytes;
}

/// Damages a good file behind its first four bytes, by which it is known, and counts what `outcome` makes of it.
template <typename Outcome>
Outcomes outcomesOfDamage(const std::string& good, std::size_t head, DamageAmount amount, Outcome outcome) {
    std::mt19937 random{1};
    Outcomes outcomes;
    constexpr std::size_t Magic = 4;
    for (int i = 0; i < amount.heads; ++i)
        ++outcomes[outcome(damaged(good, Magic, std::min(head, good.size()), random))];
    const std::size_t window = std::max<std::size_t>(good.size() / 50, 16);
    for (int i = 0; i < amount.windows; ++i) {
        const std::size_t from = Magic + (good.size() - window - Magic) * static_cast<std::size_t>(i) /
                                             static_cast<std::size_t>(amount.windows);
        ++outcomes[outcome(damaged(good, from, from + window, random))];
    }
    return outcomes;
}

/// Prints and returns one line with all counts.
inline std::string recordOf(const std::string& name, const Outcomes& outcomes) {
    std::string record = name + ':';
    for (const auto& [what, count] : outcomes) record += ' ' + std::to_string(count) + ' ' + what + ',';
    std::printf("%s\n", record.c_str());
    return record;
}
