// SPDX-License-Identifier: Apache-2.0
#include "tests/validate/Validation.h"

#include <algorithm>

std::string Validation::kindOf(const std::string& check) const {
    for (const auto& line : report.at("checks"))
        if (line.at("name") == check) return line.at("kind");
    return "not run";
}

std::string Validation::findings() const {
    std::string text;
    for (const auto& line : report.at("checks"))
        if (line.at("kind") != "pass" && line.at("kind") != "skip") {
            text += line.at("kind").get<std::string>() + ' ' + line.at("name").get<std::string>() + ": " +
                    line.at("sentence").get<std::string>() + '\n';
            for (const auto& detail : line.at("details")) text += "    " + detail.get<std::string>() + '\n';
        }
    return text;
}

std::vector<std::string> Validation::with(const std::vector<std::string>& kinds) const {
    std::vector<std::string> names;
    for (const auto& line : report.at("checks"))
        if (std::ranges::find(kinds, line.at("kind").get<std::string>()) != kinds.end())
            names.push_back(line.at("name"));
    return names;
}

Validation validation(const std::string& plugin, std::vector<std::string> arguments,
                      const std::map<std::string, std::string>& environment) {
    arguments.insert(arguments.begin(), {"--gpu", "software", "validate", plugin, "--json"});
    Call call{arguments};
    call.environment = environment;
    call.environment.emplace("MESA_SHADER_CACHE_DISABLE", "true");
    const Result result = run(call);
    return {result.code, nlohmann::json::parse(result.output, nullptr, false), result.error};
}
