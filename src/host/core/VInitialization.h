// SPDX-License-Identifier: Apache-2.0
// The handshake between the host and a plug-in.
#pragma once

#include "host/Export.h"

#include <string>

namespace krod {

/// What a plug-in tells the host of itself while it is loaded and unloaded, and what the host answers.
class KROD_API VInitialization {
public:
    /// [load · copies] A handshake with a plug-in that was built for the interface of `entryDate`
    /// ("2022_Feb_15").
    explicit VInitialization(std::string entryDate);
    virtual ~VInitialization();

    /// [load · borrows] The host's verdict for an interface key: above 0 for "KROD_API_VERSION" when the
    /// plug-in's date is the host's own, negative for another date, 0 for a key that the host does not know.
    [[nodiscard]] virtual int IsCompatible(const char* key);

    /// [load · borrows] A notification of the operating system about the library `plugin`: 0 loaded, 1
    /// unloaded, 2 thread attached, 3 thread detached. The result carries no meaning.
    static int initPlugin(int reason, const char* plugin, const char* key);

    /// [any] The date of the interface that this host implements.
    static const char* hostDate() noexcept;

private:
    std::string date;
};

} // namespace krod
