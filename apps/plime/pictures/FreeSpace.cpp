// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/FreeSpace.h"

#include "workbench/report/Failure.h"

#include <string>
#include <system_error>

namespace workbench {

namespace fs = std::filesystem;

void requireFreeSpace(const fs::path& output, std::uint64_t picture, std::uint64_t tiles) {
    std::error_code problem;
    const fs::path folder = fs::absolute(output, problem).parent_path();
    const fs::space_info room = fs::space(folder, problem);
    if (problem || room.capacity == 0 || room.available >= picture + tiles) return;
    throw Failure(Fault::Output, {output.string(),
                                  tiles > 0 ? "may not fit on its disk beside its finished tiles"
                                            : "may not fit on its disk",
                                  std::to_string(picture + tiles) + " bytes free",
                                  std::to_string(room.available),
                                  "Make room on the disk, or choose another place",
                                  {}});
}

} // namespace workbench
