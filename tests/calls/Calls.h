// SPDX-License-Identifier: Apache-2.0
// What the plug-in asks of the host's core. This program has functions of its own under the names of the host's, which
// come first, write down the call and pass it on.
#pragma once

#include "host/core/VCreationPreferences.h"
#include "host/memory/StrongPtr.h"

#include <string>
#include <vector>

namespace calls {

/// The calls while it lives, one line each. One at a time.
class Record {
public:
    Record();
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;
    ~Record();

    /// The lines until now; the record starts anew.
    [[nodiscard]] static std::vector<std::string> take();
    /// The same as one text, each line with a line end.
    [[nodiscard]] static std::string text();
};

/// What the host answers otherwise than usual.
struct Changes {
    krod::StrongPtr<krod::VCreationPreferences> preferences; ///< of every creator that is made, unless empty
    unsigned stateBits = 0;                                  ///< set on every parameter that an object gets
    int failing = 0; ///< the number of the call that finds no memory, counted down; 0: none does
};
[[nodiscard]] Changes& changes();

} // namespace calls
