// SPDX-License-Identifier: Apache-2.0
#include "workbench/network/Network.h"

#include <algorithm>
#include <set>

namespace workbench {

const NetworkObject* Network::object(const std::string& name) const noexcept {
    const auto found = std::ranges::find(objects, name, &NetworkObject::name);
    return found == objects.end() ? nullptr : &*found;
}

Network partFor(const Network& network, const NetworkView& view) {
    std::set<std::string> needed(view.processors.begin(), view.processors.end());
    for (const NetworkObject* at = network.object(view.shows); at && needed.insert(at->name).second;)
        at = network.object(at->input);
    Network part;
    std::ranges::copy_if(network.objects, std::back_inserter(part.objects),
                         [&](const NetworkObject& object) { return needed.contains(object.name); });
    for (NetworkSharing sharing : network.shared) {
        std::erase_if(sharing.ends, [&](const auto& end) { return !needed.contains(end.object); });
        if (sharing.ends.size() >= 2) part.shared.push_back(std::move(sharing));
    }
    part.views.push_back(view);
    return part;
}

void changePaths(Network& network, const std::function<std::string(const std::string& path)>& change) {
    for (NetworkObject& object : network.objects)
        for (NetworkParameter& parameter : object.parameters)
            if (parameter.name == "file" && !parameter.text.empty()) parameter.text = change(parameter.text);
    for (NetworkView& view : network.views)
        if (!view.picture.empty()) view.picture = change(view.picture);
}

} // namespace workbench
