// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/terminal/Suggest.h"

#include "apps/plime/terminal/Text.h"

#include <algorithm>

namespace workbench {
namespace {

/// Longer texts are not typed by hand and would take quadratic time.
constexpr std::size_t LongestTyped = 100;

} // namespace

std::size_t editDistance(std::string_view a, std::string_view b) {
    const std::string from = lowerCase(a);
    const std::string to = lowerCase(b);
    std::vector<std::size_t> beforeLast, last(to.size() + 1), current(to.size() + 1);
    for (std::size_t j = 0; j <= to.size(); ++j) last[j] = j;
    for (std::size_t i = 1; i <= from.size(); ++i) {
        current[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
            current[j] = std::min({last[j] + 1, current[j - 1] + 1, replaced});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1])
                current[j] = std::min(current[j], beforeLast[j - 2] + 1);
        }
        beforeLast = last;
        last = current;
    }
    return last[to.size()];
}

std::optional<std::string> nearest(std::string_view typed, const std::vector<std::string>& candidates) {
    if (typed.empty() || typed.size() > LongestTyped) return std::nullopt;
    std::optional<std::string> best;
    // The farthest that still looks like a slip; of two letters, each is half of what was meant. Of a key, the
    // category is not counted: it is rarely wrong and would excuse too much.
    const std::size_t length =
        typed.size() - (typed.find('/') == std::string_view::npos ? 0 : typed.find('/') + 1);
    std::size_t bestDistance = length < 3 ? 0 : 1 + length / 4;
    for (const std::string& candidate : candidates) {
        std::size_t distance = editDistance(typed, candidate);
        if (const std::size_t stroke = candidate.find('/'); stroke != std::string::npos)
            distance =
                std::min(distance, editDistance(typed, std::string_view(candidate).substr(stroke + 1)));
        if (distance > bestDistance || (best && distance == bestDistance)) continue;
        best = candidate;
        bestDistance = distance;
    }
    return best;
}

std::string didYouMean(std::string_view typed, const std::vector<std::string>& candidates,
                       const std::string& otherwise) {
    const std::optional<std::string> meant = nearest(typed, candidates);
    return meant ? "Did you mean \"" + *meant + "\"?" : otherwise;
}

} // namespace workbench
