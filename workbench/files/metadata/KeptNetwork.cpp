// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/metadata/KeptNetwork.h"

#include <algorithm>
#include <cstddef>

namespace workbench {
namespace {

constexpr std::string_view Marker = "--- krod:network ---\n";

} // namespace

std::string withNetwork(std::string text, const std::string& network) {
    if (!text.empty()) text += '\n';
    return text.append(Marker).append(network);
}

void separateNetwork(std::vector<Metadatum>& metadata) {
    const auto found = std::find_if(metadata.begin(), metadata.end(), [](const Metadatum& entry) {
        return (entry.name == "DocumentName" || entry.name == "ImageDescription") &&
               entry.text.find(Marker) != std::string::npos;
    });
    if (found == metadata.end()) return;
    const std::size_t at = found->text.find(Marker);
    Metadatum network{std::string(NetworkName), "string", found->text.substr(at + Marker.size()), ""};
    found->text.erase(at > 0 ? at - 1 : 0); // with the line break before the marker
    if (found->text.empty()) metadata.erase(found);
    std::erase_if(metadata, [](const Metadatum& entry) { return entry.name == NetworkName; });
    metadata.push_back(std::move(network));
}

} // namespace workbench
