// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/modules/ModuleInstance.h"

#include "apps/plime/terminal/Suggest.h"
#include "apps/plime/terminal/Text.h"
#include "workbench/gl/ArrayLimit.h"
#include "workbench/platform/TextFile.h"

#include <algorithm>
#include <filesystem>
#include <new>
#include <utility>

namespace workbench {
namespace {

using krod::FlagList;
using krod::StrongPtr;
using krod::TypedValue;
using krod::VParameter;
using krod::VValueBase;

[[noreturn]] void refuse(const std::string& who, std::string what, std::string expected, std::string got,
                         std::string advice) {
    throw Failure(Fault::Usage,
                  {who, std::move(what), std::move(expected), std::move(got), std::move(advice), {}});
}

constexpr const char* SceneFile = "file"; // the parameter of scenes that names one

constexpr std::size_t LongestQuote = 60; // columns; a value may be a whole file

std::string quoted(const std::string& text) { return '"' + shortened(printable(text), LongestQuote) + '"'; }

/// Whether a <= b; values without an order, and a limit that is not there, are in order.
bool inOrder(const VValueBase* a, const VValueBase* b) {
    if (!a || !b) return true;
    if (const auto* low = dynamic_cast<const TypedValue<int>*>(a))
        if (const auto* high = dynamic_cast<const TypedValue<int>*>(b)) return low->value() <= high->value();
    if (const auto* low = dynamic_cast<const TypedValue<double>*>(a))
        if (const auto* high = dynamic_cast<const TypedValue<double>*>(b))
            return low->value() <= high->value();
    using Pair = krod::FixedArray<double, 2>;
    if (const auto* low = dynamic_cast<const TypedValue<Pair>*>(a))
        if (const auto* high = dynamic_cast<const TypedValue<Pair>*>(b))
            return low->value()[0] <= high->value()[0] && low->value()[1] <= high->value()[1];
    return true;
}

std::string limitsText(const VValueBase* least, const VValueBase* most) {
    if (least && most) return least->text() + " to " + most->text();
    return least ? "at least " + least->text() : "at most " + most->text();
}

/// "+a or -a, +b or -b": every flag of a list in both its states.
std::string bothStates(const FlagList& flags) {
    std::string text;
    for (const FlagList::Flag& flag : flags.flags())
        text += (text.empty() ? "" : ", ") + ('+' + flag.name) + " or -" + flag.name;
    return text;
}

std::vector<std::string> namesOf(const FlagList& flags) {
    std::vector<std::string> names;
    for (const FlagList::Flag& flag : flags.flags()) names.push_back(flag.name);
    return names;
}

std::vector<std::string> tokensOf(const std::string& text) {
    std::vector<std::string> tokens;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        if (end > at) tokens.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return tokens;
}

} // namespace

ModuleInstance::ModuleInstance(CatalogueEntry entry) : row(std::move(entry)) {
    krod::VCreationContext context;
    module = row.creator->create("", context);
    if (!module) throw Failure(Fault::Partial, {who(), "its creator makes no object", "", "", "", {}});
    for (const auto& input : std::as_const(*module).slots().inputs())
        initial.emplace(input.name, input.parameter->value().clone());
}

ModuleInstance::ModuleInstance(CatalogueEntry entry, const ModuleRequest& request, Limits limits)
    : ModuleInstance(std::move(entry)) {
    for (const ParameterSetting& setting : request.settings) set(setting.name, setting.text, limits);
    for (const std::string& name : request.unset) unset(name);
}

void ModuleInstance::set(const std::string& name, const std::string& text, Limits limits) {
    const bool isText = dynamic_cast<const TypedValue<std::string>*>(&parameter(name).value()) != nullptr;
    const bool isFile = isText && text.starts_with('@');
    if (isFile && text.size() == 1)
        refuse(who(), "parameter \"" + name + "\" is to be read from a file without a name", "@FILE",
               quoted(text), "");
    if (isText && !isFile) requireNoFileName(name, text);
    setText(name, isFile ? readTextFile(text.substr(1)) : text, limits);
    if (isFile) files.emplace(name, text.substr(1));
}

/// A program is never the name of a file; a scene's "file" is.
void ModuleInstance::requireNoFileName(const std::string& name, const std::string& text) const {
    std::error_code problem;
    const bool isName = text.find_first_of("\n;{}") == std::string::npos;
    if (name == SceneFile || !isName || !std::filesystem::is_regular_file(text, problem)) return;
    refuse(who(), "parameter \"" + name + "\" is the name of a file, whose text is not read without \"@\"",
           "the text, or @FILE", quoted(text), "Did you mean " + name + "=@" + text + "?");
}

void ModuleInstance::setText(const std::string& name, const std::string& text, Limits limits) {
    VParameter& target = parameter(name);
    requireKnownFlags(target, text);
    const StrongPtr<VValueBase> value = target.value().clone();
    if (const krod::TextResult result = value->setFromText(text); !result)
        refuse(who(), "parameter \"" + name + "\" cannot take this value", result.expected, quoted(text), "");
    if (limits == Limits::Checked) requireWithinLimits(target, *value);
    if (const auto right = exceededArrayLimit(row.key, name, *value))
        refuse(who(), tooLongArrays(name), *right, value->text(), "");
    target.setValue(value);
    files.erase(name);
}

std::string ModuleInstance::originOf(const std::string& text) const {
    for (const auto& input : std::as_const(*module).slots().inputs()) {
        const auto* const value = dynamic_cast<const TypedValue<std::string>*>(&input.parameter->value());
        if (!value || value->value() != text) continue;
        const auto file = files.find(input.name);
        return "parameter \"" + input.name + '"' + (file == files.end() ? "" : " from " + file->second);
    }
    return {};
}

std::vector<std::string> ModuleInstance::inputFiles() const {
    std::vector<std::string> paths;
    for (const auto& [parameter, file] : files) paths.push_back(file);
    paths.push_back(sceneFile());
    return paths;
}

std::string ModuleInstance::sceneFile() const {
    const auto file = std::as_const(*module).slots().input(SceneFile);
    return file ? file->value().text() : "";
}

void ModuleInstance::unset(const std::string& name) {
    static_cast<void>(parameter(name));
    hidden.push_back(name);
}

bool ModuleInstance::isUnset(const std::string& name) const {
    return std::ranges::find(hidden, name) != hidden.end();
}

void ModuleInstance::hideUnset(krod::VValuePool& pool) const {
    for (const std::string& name : hidden) pool.makeUnreadable(parameter(name));
}

VParameter& ModuleInstance::parameter(const std::string& name) const {
    if (const StrongPtr<VParameter> found = module->slots().input(name)) return *found;
    std::vector<std::string> names;
    std::string list;
    for (const auto& input : module->slots().inputs()) {
        names.push_back(input.name);
        list += (list.empty() ? "" : ", ") + input.name;
    }
    refuse(who(), "has no parameter " + quoted(name), "", "",
           didYouMean(name, names, list.empty() ? "It has none" : "It has " + list));
}

void ModuleInstance::requireKnownFlags(const VParameter& target, const std::string& text) const {
    const auto* const flags = dynamic_cast<const TypedValue<FlagList>*>(initial.at(target.name()).get());
    if (!flags || flags->value().flags().empty()) return;
    const std::vector<std::string> known = namesOf(flags->value());
    for (const std::string& token : tokensOf(text)) {
        const bool isSigned = token.starts_with('+') || token.starts_with('-');
        const std::string name = isSigned ? token.substr(1) : token;
        const bool isKnown = std::ranges::find(known, name) != known.end();
        if (isSigned && isKnown) continue;
        refuse(who(),
               "parameter \"" + target.name() +
                   (isKnown ? "\" has a flag without sign" : "\" has an unknown flag"),
               bothStates(flags->value()), quoted(token), isKnown ? "" : didYouMean(name, known, ""));
    }
}

void ModuleInstance::requireWithinLimits(const VParameter& target, const VValueBase& value) const {
    const StrongPtr<VValueBase> least = target.property("min");
    const StrongPtr<VValueBase> most = target.property("max");
    if (inOrder(least.get(), &value) && inOrder(&value, most.get())) return;
    if (value.text() == initial.at(target.name())->text()) return;
    refuse(who(), "parameter \"" + target.name() + "\" is outside its limits",
           limitsText(least.get(), most.get()), value.text(),
           exceededArrayLimit(row.key, target.name(), value) ? "" : "Set it nevertheless with --unchecked");
}

void inTheNameOf(const ModuleInstance& module, const std::function<void()>& work) {
    try {
        work();
    } catch (const Failure& failure) {
        if (failure.fault() != Fault::Shader) throw;
        Diagnostic message = failure.diagnostic(); // its labels are the same for all modules
        message.who = module.entry().key + ", " + message.who;
        throw Failure(failure.fault(), message);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        const std::string& key = module.entry().key;
        const std::string text = error.what();
        const bool named = text.starts_with(key + ": ");
        throw Failure(Fault::Partial, {key, named ? text.substr(key.size() + 2) : text, "", "", "", {}});
    }
}

ModuleTexts textsOf(const ModuleInstance& module) {
    const auto first = [](std::string own, const std::optional<std::string>& creators) {
        return own.empty() ? creators : std::optional<std::string>(std::move(own));
    };
    return {first(module.object().help(0), module.entry().brief),
            first(module.object().help(krod::VObject::Detailed), module.entry().help)};
}

Json toJson(const ModuleInstance& module) {
    const auto limit = [](const VParameter& parameter, const char* key) {
        const StrongPtr<VValueBase> value = parameter.property(key);
        return value ? Json(value->text()) : Json(nullptr);
    };
    const krod::VSlotContainer& slots = module.object().slots();
    Json json = toJson(module.entry());
    Json& parameters = json["parameters"] = Json::array();
    for (const auto& [name, expertLevel, parameter] : slots.inputs())
        parameters.push_back({{"name", name},
                              {"type", parameter->typeName()},
                              {"value", parameter->value().text()},
                              {"min", limit(*parameter, "min")},
                              {"max", limit(*parameter, "max")},
                              {"expert", expertLevel}});
    Json& inputs = json["inputs"] = Json::array();
    for (const auto& [name, type] : slots.sinks()) inputs.push_back({{"name", name}, {"type", type}});
    Json& outputs = json["outputs"] = Json::array();
    for (const auto& [name, parameter] : slots.outputs())
        outputs.push_back({{"name", name}, {"type", parameter->typeName()}});
    const ModuleTexts texts = textsOf(module);
    json["description"] = {{"short", jsonText(texts.brief)}, {"detailed", jsonText(texts.detailed)}};
    return json;
}

} // namespace workbench
