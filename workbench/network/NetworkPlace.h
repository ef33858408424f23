// SPDX-License-Identifier: Apache-2.0
// Where something stands in a network file, for messages.
#pragma once

namespace workbench {

/// A line, from 1; 0 for what does not come from a file.
struct NetworkPlace {
    int line = 0;
};

} // namespace workbench
