// SPDX-License-Identifier: Apache-2.0
// From a network as data to modules that work.
#pragma once

#include "apps/plime/modules/Catalogue.h"
#include "apps/plime/modules/ModuleInstance.h"
#include "workbench/network/Network.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace workbench {

/// What a view draws.
struct ShownObject {
    const ModuleInstance* scene = nullptr;
    std::vector<const ModuleInstance*> displays; ///< the first one nearest to the scene
};

/// The modules of a network: made, set up and connected. Every mistake of the network is Failure(Network) with the
/// line and the name of the object or view.
class NetworkModules {
public:
    /// `who` names the network in messages. Values outside of limits are refused unless limits are unchecked.
    NetworkModules(const Catalogue& catalogue, Network network, std::string who, Limits limits);

    /// Obeys "OBJECT.PARAMETER=VALUE" for each of the texts; "@FILE" is read as -p reads it. All parameters that
    /// share the value are set. Throws Failure(Usage), also where one parameter is set twice.
    void set(const std::vector<std::string>& settings, Limits limits);

    /// The network as it is now.
    [[nodiscard]] Network network() const;
    /// All modules, by the names of their objects.
    [[nodiscard]] const std::unordered_map<std::string, std::shared_ptr<ModuleInstance>>&
    all() const noexcept {
        return modules;
    }
    /// What is drawn for a view that shows an object.
    [[nodiscard]] ShownObject shownBy(const NetworkView& view) const;
    /// The tile modules of a view, in the order of their work.
    [[nodiscard]] std::vector<std::shared_ptr<ModuleInstance>> processorsOf(const NetworkView& view) const;

private:
    using End = NetworkSharing::End;

    void setUp(const Catalogue& catalogue, const NetworkObject& object, Limits limits);
    void share(const NetworkSharing& sharing, Limits limits);
    /// Sets one parameter; a failure names its object.
    void setOf(const End& end, const std::string& text, Limits limits);
    void connect(const NetworkObject& object);
    void requireDrawable(const NetworkView& view) const;
    [[nodiscard]] std::vector<End> endsWith(const End& end) const;
    /// Does something to an object; what is wrong with it is wrong with the network.
    template <class Work>
    void inPlace(NetworkPlace place, const std::string& object, const Work& work) const;

    Network given;
    std::string who;
    std::unordered_map<std::string, std::shared_ptr<ModuleInstance>> modules;
};

} // namespace workbench
