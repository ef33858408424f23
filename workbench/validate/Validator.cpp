// SPDX-License-Identifier: Apache-2.0
#include "workbench/validate/Validator.h"

#include "workbench/report/Failure.h"
#include "workbench/validate/ChildProcess.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <string_view>
#include <utility>

#include <unistd.h>

namespace workbench::validate {
namespace {

using Json = nlohmann::ordered_json;

/// KROD_VALIDATE_SECONDS takes the place of every check's own limit, for slow machines and instrumented
/// builds.
std::chrono::seconds limitOf(const Check& check) {
    int seconds = 0;
    if (const char* text = std::getenv("KROD_VALIDATE_SECONDS"))
        std::from_chars(text, text + std::strlen(text), seconds);
    return std::chrono::seconds(seconds > 0 ? seconds : check.seconds);
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        if (end > at) lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    if (lines.size() > 5) lines.erase(lines.begin(), lines.end() - 5);
    return lines;
}

std::string signalText(int signal) {
    const char* const name = ::sigabbrev_np(signal);
    return name ? "SIG" + std::string(name) : "signal " + std::to_string(signal);
}

/// What a child wrote; anything else than one whole outcome counts as nothing.
Outcome parseOutcome(const Ending& ending) {
    const Json json = Json::parse(ending.result, nullptr, false);
    if (json.is_object() && ending.number == 0) {
        try {
            return {kindFrom(json.at("kind").get<std::string>()), json.at("sentence").get<std::string>(),
                    json.at("details").get<std::vector<std::string>>()};
        } catch (const std::exception&) {
            return {Kind::Fail, "its process handed over no outcome that can be read", {}};
        }
    }
    return {Kind::Fail,
            "its process ended with exit code " + std::to_string(ending.number) +
                " before the check was done",
            linesOf(ending.errors)};
}

Outcome outcomeOf(const Ending& ending, std::chrono::seconds limit) {
    switch (ending.way) {
    case Ending::Way::Signal:
        return {Kind::Crash, "its process was ended by " + signalText(ending.number), linesOf(ending.errors)};
    case Ending::Way::TimedOut:
        return {Kind::Timeout,
                "its process had not ended after " + std::to_string(limit.count()) + " seconds",
                linesOf(ending.errors)};
    case Ending::Way::Stopped:
        return {Kind::Skip, "it was interrupted", {}};
    case Ending::Way::Exited:
        break;
    }
    return parseOutcome(ending);
}

Result runOne(const Check& check, std::uint32_t seed, const Plan& plan, const std::function<bool()>& stop) {
    std::vector<std::string> arguments = plan.arguments;
    arguments.insert(arguments.end(), {"--in-child", repeatText(check, seed)});
    const std::chrono::seconds limit = limitOf(check);
    return {&check, seed, outcomeOf(runChild(arguments, limit, stop), limit)};
}

std::vector<const Check*> selection(const Plan& plan) {
    std::vector<const Check*> selected;
    for (const Check& check : checks())
        if (plan.only ? &check == plan.only
                      : check.level <= plan.level && (plan.expectation || !check.expects))
            selected.push_back(&check);
    return selected;
}

} // namespace

std::vector<Result> validate(const Plan& plan, const std::function<void(const Result&)>& each,
                             const std::function<bool()>& stop) {
    std::vector<Result> results;
    std::map<std::string_view, std::string_view> failed; // a check, and the one to repair first
    std::random_device entropy;
    for (const Check* check : selection(plan)) {
        if (stop && stop()) break;
        Result result{check, plan.only ? plan.seed : entropy() % 1000000U, {}};
        const auto missing = failed.find(check->needs);
        if (missing != failed.end() && !plan.only) {
            result.outcome = {Kind::Skip, "\"" + std::string(missing->second) + "\" has to pass first", {}};
            failed[check->name] = missing->second;
        } else {
            result = runOne(*check, result.seed, plan, stop);
            if (isFinding(result.outcome.kind)) failed[check->name] = check->name;
        }
        each(result);
        results.push_back(std::move(result));
    }
    return results;
}

std::string repeatText(const Check& check, std::uint32_t seed) {
    return std::string(check.name) + ':' + std::to_string(seed);
}

std::pair<const Check*, std::uint32_t> parseRepeat(const std::string& option, const std::string& text) {
    const std::size_t colon = std::min(text.find(':'), text.size());
    const Check* const check = findCheck(text.substr(0, colon));
    std::uint32_t seed = 0;
    const char* const end = text.data() + text.size();
    const bool hasSeed = colon < text.size();
    const auto read = std::from_chars(text.data() + std::min(colon + 1, text.size()), end, seed);
    if (!check)
        throw Failure(
            Fault::Usage,
            {option, "names no check", "TEST:SEED", '"' + text + '"', "See \"plime validate --list\"", {}});
    if (hasSeed && (read.ec != std::errc() || read.ptr != end))
        throw Failure(
            Fault::Usage,
            {option, "has a wrong seed", "TEST:SEED with a whole number as seed", '"' + text + '"', "", {}});
    return {check, seed};
}

void handOver(const Outcome& outcome) noexcept {
    const Json json = {
        {"kind", kindText(outcome.kind)}, {"sentence", outcome.sentence}, {"details", outcome.details}};
    const std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
    for (std::string_view rest = text; !rest.empty();) {
        const ssize_t written = ::write(ResultDescriptor, rest.data(), rest.size());
        if (written <= 0) break;
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
}

void performInChild(const Check& check, std::uint32_t seed, Subject subject) {
    auto& trial = *new Trial(std::move(subject), seed); // outlives everything, for checks that exit
    handOver(perform(check, trial));
    ::_exit(0);
}

} // namespace workbench::validate
