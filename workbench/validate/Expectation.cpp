// SPDX-License-Identifier: Apache-2.0
#include "workbench/validate/Expectation.h"

#include "workbench/platform/TextFile.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace workbench::validate {
namespace {

using Json = nlohmann::json;

Json textOrNull(const std::optional<std::string>& text) { return text ? Json(*text) : Json(nullptr); }

Json limit(const krod::VParameter& parameter, const char* key) {
    const auto value = parameter.property(key);
    return value ? Json(value->text()) : Json(nullptr);
}

std::string cut(const Json& value) {
    std::string text = value.dump(-1, ' ', false, Json::error_handler_t::replace);
    return text.size() > 60 ? text.substr(0, 60) + "…" : text;
}

/// Compares one field that the expectation names.
void compare(Trial& trial, const std::string& who, const char* field, const Json& actual,
             const Json& expected) {
    const auto wanted = expected.find(field);
    if (wanted == expected.end() || *wanted == actual) return;
    trial.fail(who + ": has " + cut(actual) + " as " + field + ", not " + cut(*wanted));
}

/// Compares two lists of named things, each by `fields`.
void compareLists(Trial& trial, const std::string& label, const char* what, const Json& actual,
                  const Json& expected, std::initializer_list<const char*> fields) {
    for (std::size_t i = 0; i < std::max(actual.size(), expected.size()); ++i) {
        if (i >= actual.size()) {
            trial.fail(label + ": lacks the " + what + ' ' + expected[i].value("name", ""));
        } else if (i >= expected.size()) {
            trial.fail(label + ": has the " + what + ' ' + actual[i].value("name", "") +
                       ", which is not expected");
        } else {
            const std::string who = label + ", " + what + ' ' + actual[i].value("name", "");
            for (const char* field : fields) compare(trial, who, field, actual[i].at(field), expected[i]);
        }
    }
}

[[noreturn]] void refuse(const std::filesystem::path& path, std::string what, std::string got) {
    throw Failure(Fault::Input, {path.string(),
                                 std::move(what),
                                 "an object with the modules of the plug-in as \"modules\"",
                                 std::move(got),
                                 "",
                                 {}});
}

} // namespace

Json readExpectation(const std::filesystem::path& path) {
    Json json = Json::parse(readTextFile(path.string()), nullptr, false);
    if (json.is_discarded()) refuse(path, "is no expectation file", "something that is no JSON");
    const auto modules = json.is_object() ? json.find("modules") : json.end();
    const auto isModule = [](const Json& module) { return module.is_object() && module.contains("key"); };
    if (!json.is_object() || modules == json.end() || !modules->is_array() ||
        !std::ranges::all_of(*modules, isModule))
        refuse(path, "is no expectation file", "other JSON");
    return json;
}

std::string expectedLabel(const Json& module) {
    const auto source = module.find("source");
    const bool hasSource = source != module.end() && source->is_string();
    return module.value("key", "") + (hasSource ? '@' + source->get<std::string>() : "");
}

const Json* findExpected(const Trial& trial, const std::string& label) {
    if (!trial.expectation().is_object()) return nullptr;
    for (const Json& module : trial.expectation().at("modules"))
        if (expectedLabel(module) == label) return &module;
    return nullptr;
}

bool isExpected(const Trial& trial, const std::string& label, const char* key) {
    const Json* const module = findExpected(trial, label);
    return module && module->value(key, false);
}

void compareTexts(Trial& trial, const krod::VCreatorBase& creator, const std::string& label,
                  const Json& module) {
    const krod::VCreatorProperties& texts = creator.properties();
    compare(trial, label, "key", creator.keyname(), module);
    compare(trial, label, "category", textOrNull(texts.category), module);
    compare(trial, label, "name", creator.name(), module);
    compare(trial, label, "short", textOrNull(texts.description), module);
    compare(trial, label, "help", textOrNull(texts.help), module);
    compare(trial, label, "group", textOrNull(texts.group), module);
    compare(trial, label, "source", textOrNull(texts.source), module);
    compare(trial, label, "order", creator.order(), module);
}

void compareModule(Trial& trial, const krod::VObject& object, const std::string& label, const Json& module) {
    const krod::VSlotContainer& slots = object.slots();
    Json parameters = Json::array(), inputs = Json::array(), outputs = Json::array();
    for (const auto& [name, level, parameter] : slots.inputs())
        parameters.push_back({{"name", name},
                              {"type", parameter->typeName()},
                              {"value", parameter->value().text()},
                              {"min", limit(*parameter, "min")},
                              {"max", limit(*parameter, "max")},
                              {"expert", level}});
    for (const auto& [name, type] : slots.sinks()) inputs.push_back({{"name", name}, {"type", type}});
    for (const auto& [name, parameter] : slots.outputs())
        outputs.push_back({{"name", name}, {"type", parameter->typeName()}});
    const auto lists = [&](const char* key, const char* what, const Json& actual,
                           std::initializer_list<const char*> fields) {
        if (module.contains(key)) compareLists(trial, label, what, actual, module.at(key), fields);
    };
    lists("parameters", "parameter", parameters, {"name", "type", "value", "min", "max", "expert"});
    lists("inputs", "input", inputs, {"name", "type"});
    lists("outputs", "output", outputs, {"name", "type"});
}

} // namespace workbench::validate
