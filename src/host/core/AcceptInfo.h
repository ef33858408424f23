// SPDX-License-Identifier: Apache-2.0
// What a display can be attached to.
#pragma once

#include <string>
#include <vector>

namespace krod {

/// One thing of an object that another object accepts: the object itself or one of its outputs.
struct AcceptInfo {
    std::string output;   ///< name of the output, empty for the object itself
    std::string typeName; ///< the host's name of its type
    double ranking = 0;   ///< lower comes first
};

using AcceptInfoList = std::vector<AcceptInfo>;

} // namespace krod
