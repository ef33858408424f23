// SPDX-License-Identifier: Apache-2.0
// Creators and modules made up for tests.
#pragma once

#include "apps/plime/modules/Catalogue.h"
#include "host/core/VCreatorBase.h"

#include <string>
#include <vector>

namespace workbench {

/// A module with one parameter of each kind:
/// "samples" int 8, at most 16 · "gain" double 1.0, from 3.0 to 20.0 · "width" int 0, from 0 to 5 ·
/// "options" flags "-glow -halo" · "code" text "void main() {}" · "p" pair "0.5 0.5", from "0.0 0.0" to
/// "1.0 1.0"; and with an output "level".
class FakeModule : public krod::VObject {
public:
    FakeModule(const std::string& name, std::string detailed);
    [[nodiscard]] std::string help(int level) const override;

private:
    std::string detailed;
};

/// Makes FakeModules.
class FakeCreator : public krod::VCreatorBase {
public:
    /// Property form.
    FakeCreator(const std::string& category, const std::string& name, const std::string& source);
    /// Name form.
    explicit FakeCreator(const std::string& fullName);

    [[nodiscard]] krod::StrongPtr<krod::VObject> create(const std::string& name,
                                                        krod::VCreationContext& context) override;

    std::string detailedHelp; ///< of the modules; empty: none
};

/// What is registered now, as modules of no plug-in.
[[nodiscard]] Catalogue registeredModules();

/// The sentence of the Failure that a call throws, behind its exit code: "2 Display/X: …"; "" without one.
template <class Call>
std::string failureOf(Call&& call) {
    try {
        call();
    } catch (const Failure& failure) {
        return std::string(1, static_cast<char>('0' + static_cast<int>(failure.fault()))) + ' ' +
               failure.what();
    }
    return {};
}

} // namespace workbench
