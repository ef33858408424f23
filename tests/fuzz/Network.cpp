// SPDX-License-Identifier: Apache-2.0
// A saved network, read and written again.
#include "Target.h"

#include "workbench/network/NetworkFile.h"
#include "workbench/report/Failure.h"

#include <optional>

namespace {

using namespace workbench;

std::optional<Network> read(std::string_view text) {
    try {
        return networkFromText(text, "input");
    } catch (const Failure& failure) {
        fuzz::require(failure.fault() == Fault::Network, "a broken network is a fault of the network");
        fuzz::require(fuzz::isOneLine(failure.what()), "the message is one line");
        return {};
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto network = read(fuzz::textOf(data, size));
    if (!network) return 0;
    for (const auto layout : {NetworkLayout::Lines, NetworkLayout::OneLine}) {
        const std::string written = textOf(*network, layout);
        const auto again = read(written);
        fuzz::require(again.has_value(), "what was written can be read");
        fuzz::require(textOf(*again, layout) == written, "writing it again gives the same bytes");
    }
    return 0;
}
