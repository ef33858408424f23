// SPDX-License-Identifier: Apache-2.0
// Which plug-in library is being loaded or unloaded on this thread.
#pragma once

#include "host/Export.h"

namespace workbench {

/// Number of a plug-in library; 0 is the host itself.
using LibraryId = int;

/// Attributes every registration and withdrawal on this thread to one library, from construction to
/// destruction. Outside of any scope registrations belong to the host.
class KROD_API LibraryScope {
public:
    explicit LibraryScope(LibraryId library) noexcept;
    LibraryScope(const LibraryScope&) = delete;
    LibraryScope& operator=(const LibraryScope&) = delete;
    ~LibraryScope();

    /// The library of the innermost scope on this thread, or 0.
    [[nodiscard]] static LibraryId current() noexcept;

private:
    LibraryId outer;
};

} // namespace workbench
