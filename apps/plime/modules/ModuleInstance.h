// SPDX-License-Identifier: Apache-2.0
// A module object, made and set up from text.
#pragma once

#include "apps/plime/modules/Catalogue.h"
#include "apps/plime/modules/ModuleChain.h"
#include "host/core/VObject.h"
#include "host/core/VValuePool.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

/// Whether limits count.
enum class Limits { Checked, Unchecked };

/// Owns one module object and sets its parameters from text. Every mistake is caught here, with a sentence
/// that names module, parameter, expected and got; all failures are Failure(Usage) unless said otherwise.
class ModuleInstance {
public:
    /// Makes an object with the creator's own name. Throws Failure(Partial) when the creator makes none.
    explicit ModuleInstance(CatalogueEntry entry);
    /// Makes the object and does what the request says.
    ModuleInstance(CatalogueEntry entry, const ModuleRequest& request, Limits limits);

    /// Sets a parameter. A text parameter's value "@FILE" is read from that file; Failure(Input) when it
    /// cannot. The name of a file without "@" is refused where a program is meant. A value outside "min" and "max" is refused, unless limits are unchecked or it is the initial
    /// value; nothing is ever clamped. A flag list replaces the whole list and may hold only flags of the
    /// initial one. After a failure the parameter has its old value.
    void set(const std::string& parameter, const std::string& text, Limits limits);
    /// The same, but the text is always the value itself, even if it begins with "@".
    void setText(const std::string& parameter, const std::string& text, Limits limits);
    /// Remembers that a parameter is not to be readable.
    void unset(const std::string& parameter);
    /// Makes the parameters of unset() unreadable in a pool.
    void hideUnset(krod::VValuePool& pool) const;
    /// Whether unset() was called for the parameter.
    [[nodiscard]] bool isUnset(const std::string& parameter) const;
    /// The parameter of that name. Throws Failure(Usage), with a suggestion, when there is none.
    [[nodiscard]] krod::VParameter& parameter(const std::string& name) const;
    /// Which parameter holds exactly that text, and the file it was read from: 'parameter "code" from a.frag'.
    /// Empty when none does.
    [[nodiscard]] std::string originOf(const std::string& text) const;

    /// The files that its values come from: those of "@FILE", and its parameter "file".
    [[nodiscard]] std::vector<std::string> inputFiles() const;

    /// The file that a scene shows, its parameter "file"; empty for other modules.
    [[nodiscard]] std::string sceneFile() const;

    [[nodiscard]] const CatalogueEntry& entry() const noexcept { return row; }
    [[nodiscard]] krod::VObject& object() const noexcept { return *module; }
    /// Another reference to the object.
    [[nodiscard]] const krod::StrongPtr<krod::VObject>& reference() const noexcept { return module; }

private:
    void requireNoFileName(const std::string& name, const std::string& text) const;
    void requireKnownFlags(const krod::VParameter& parameter, const std::string& text) const;
    void requireWithinLimits(const krod::VParameter& parameter, const krod::VValueBase& value) const;
    [[nodiscard]] std::string who() const { return row.key; }

    CatalogueEntry row;
    krod::StrongPtr<krod::VObject> module;
    std::map<std::string, krod::StrongPtr<krod::VValueBase>> initial;
    std::vector<std::string> hidden;
    std::map<std::string, std::string> files; ///< of "@FILE", by parameter
};

/// Does a module's work. What it throws beyond Failure and std::bad_alloc becomes Failure(Partial) with the
/// module's key in front.
void inTheNameOf(const ModuleInstance& module, const std::function<void()>& work);

/// What a module says about itself, HTML allowed: its own texts, else its creator's.
struct ModuleTexts {
    std::optional<std::string> brief;
    std::optional<std::string> detailed;
};
[[nodiscard]] ModuleTexts textsOf(const ModuleInstance& module);

/// The object that `plime describe --json` shows for a module.
[[nodiscard]] Json toJson(const ModuleInstance& module);

} // namespace workbench
