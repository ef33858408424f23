// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/SmallerTiles.h"

#include "workbench/gl/RenderTarget.h"

#include <algorithm>
#include <cstdint>
#include <new>

namespace workbench {
namespace {

/// What is tried next; nothing when the tiles are as small as they can be.
std::optional<TileAttempt> nextAfter(const TileAttempt& failed) {
    const int side = std::max(failed.used / 2, SmallestTriedTile);
    if (side >= failed.used || side <= 2 * std::int64_t{failed.overlap}) return std::nullopt;
    return TileAttempt{side};
}

void warnOfNext(Report& report, const std::string& picture, const std::string& memory,
                const TileAttempt& failed, const TileAttempt& next) {
    report.warning({picture,
                    "does not fit into the " + memory + " in tiles of " + std::to_string(failed.used) +
                        " pixels, so it is made in tiles of at most " + std::to_string(*next.side),
                    "",
                    "",
                    "",
                    {}});
}

} // namespace

void withSmallerTiles(Report& report, const std::string& picture,
                      const std::function<void(TileAttempt& attempt)>& work) {
    std::optional<TileAttempt> attempt = TileAttempt{};
    while (attempt) {
        std::optional<TileAttempt> next;
        try {
            return work(*attempt);
        } catch (const GraphicsMemoryFailure&) {
            if (!(next = nextAfter(*attempt))) throw;
            warnOfNext(report, picture, "memory for graphics", *attempt, *next);
        } catch (const std::bad_alloc&) {
            if (!(next = nextAfter(*attempt))) throw;
            warnOfNext(report, picture, "memory", *attempt, *next);
        }
        attempt = next;
    }
}

} // namespace workbench
