// SPDX-License-Identifier: Apache-2.0
// One list out of two lists of what a display can be attached to.
#pragma once

#include "host/core/AcceptInfo.h"

#include <algorithm>

namespace plime::display {

/// Both lists in ascending order of ranking; of equal rankings the first list's entries come first.
[[nodiscard]] inline krod::AcceptInfoList mergedByRanking(krod::AcceptInfoList first,
                                                          const krod::AcceptInfoList& second) {
    first.insert(first.end(), second.begin(), second.end());
    std::ranges::stable_sort(first, {}, &krod::AcceptInfo::ranking);
    return first;
}

} // namespace plime::display
