// SPDX-License-Identifier: Apache-2.0
// plime validate: what is wrong with a plug-in?
#include "apps/plime/commandline/Session.h"
#include "apps/plime/commands/Commands.h"
#include "apps/plime/terminal/Interruption.h"
#include "apps/plime/terminal/Json.h"
#include "apps/plime/terminal/Numbers.h"
#include "apps/plime/terminal/Text.h"
#include "workbench/platform/TextFile.h"
#include "workbench/validate/Expectation.h"
#include "workbench/validate/Recording.h"
#include "workbench/validate/Validator.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <tuple>

namespace workbench {
namespace {

using namespace validate;

constexpr std::string_view Help = R"(Usage: plime validate PLUGIN.so [--level N] [--expect FILE] [--json]
       plime validate PLUGIN.so --reproduce TEST:SEED [--expect FILE] [--json]
       plime validate PLUGIN.so --record --expect FILE
       plime validate --list [--json]

Says what is wrong with a plug-in. Each check runs in a process of its own, so
that a plug-in that crashes or hangs is a finding and not the end. Higher levels
ask more: 1 the file, none of its code runs, 2 loading and unloading, 3 the
catalogue, 4 objects, 5 normal work, 6 hostile values, 7 OpenGL under stress,
8 many lives, 9 faults around it, 10 ten minutes of drawn operations. A plug-in
that passes level 5 works; before it is given away it should pass level 9.

Prints one line for each check: pass, warn, fail, crash, timeout or skip. A check
that draws values and passes is printed as TEST:SEED. Ends with exit code 0 when
nothing has to be repaired, and 1 when something has.

  --level N              run the checks up to this level, 1 to 10; 5 if left out
  --expect FILE          compare with what this file expects of the plug-in
  --reproduce TEST:SEED  run this one check alone, with the same drawn values
  --record               print the file again, with the shader texts and pictures
                         that the plug-in gives now as those to be expected
  --list                 list the checks and their levels
  --json                 one object, for scripts

A check that does not end is stopped after 30 seconds, one that draws after 120,
a long one after 300, the last one after 1500. KROD_VALIDATE_SECONDS sets another
number for all of them, KROD_VALIDATE_SOAK that of the last one's work.

Examples:
  plime validate build/plugins/my_plugin.so
  plime validate my_plugin.so --level 9 --expect my_plugin.expect.json
  plime validate my_plugin.so --reproduce destruction-order:4711
)";

constexpr std::size_t KindColumns = 7, NameColumns = 21;

Json toJson(const Check& check) {
    return {{"name", check.name},
            {"level", check.level},
            {"sentence", check.sentence},
            {"random", check.random},
            {"expects", check.expects}};
}

Json toJson(const Result& result) {
    Json json{{"name", result.check->name},
              {"level", result.check->level},
              {"kind", kindText(result.outcome.kind)},
              {"sentence", result.outcome.sentence.empty() ? Json() : Json(result.outcome.sentence)},
              {"details", result.outcome.details}};
    json["seed"] = result.check->random ? Json(result.seed) : Json();
    return json;
}

std::string listText() {
    std::string text;
    for (const Check& check : checks())
        text += padded(std::to_string(check.level), 2) + "  " + padded(check.name, NameColumns) + "  " +
                std::string(check.sentence) + (check.expects ? " (with --expect)" : "") + '\n';
    return text;
}

Json listJson() {
    Json list = Json::array();
    for (const Check& check : checks()) list.push_back(toJson(check));
    return list;
}

/// A word that a shell takes as it is.
std::string shellWord(const std::string& word) {
    std::string quoted = "'";
    for (const char letter : word) quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    quoted += '\'';
    const bool isPlain = std::ranges::all_of(word, [](unsigned char letter) {
        return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
               (letter >= 'a' && letter <= 'z') ||
               std::string_view("/._-+:,").find(static_cast<char>(letter)) != std::string_view::npos;
    });
    return isPlain && !word.empty() ? word : quoted;
}

class ValidateCommand : public Command {
public:
    [[nodiscard]] std::string_view name() const noexcept override { return "validate"; }
    [[nodiscard]] std::string_view purpose() const noexcept override {
        return "say what is wrong with a plug-in";
    }
    [[nodiscard]] std::string_view help() const noexcept override { return Help; }
    [[nodiscard]] Syntax syntax() override {
        return {{{"--level", &level},
                 {"--expect", &expect},
                 {"--reproduce", &reproduce},
                 {"--record", &recording},
                 {"--list", &list},
                 {"--json", &asJson},
                 {"--in-child", &inChild}}, // how the program calls itself
                {{"PLUGIN.so", &plugin}},
                nullptr,
                {}};
    }

    int run(Session& session) override {
        if (list) {
            session.streams().write(asJson ? document(listJson()) : listText());
            return 0;
        }
        requirePlugin();
        gpu = session.options().gpu;
        if (inChild) {
            const auto [check, seed] = parseRepeat("--in-child", *inChild);
            performInChild(*check, seed, subject(session));
        }
        if (recording) {
            session.streams().write(document(recorded(session)));
            return 0;
        }
        return report(session);
    }

private:
    void requirePlugin() {
        if (!plugin)
            throw Failure(
                Fault::Usage,
                {"plime validate", "PLUGIN.so is missing", "", "", "See \"plime help validate\"", {}});
        std::error_code error;
        if (!std::filesystem::exists(*plugin, error))
            throw Failure(Fault::Usage, {*plugin, "does not exist", "", "", "Check the path", {}});
        path = std::filesystem::absolute(*plugin).lexically_normal();
    }

    [[nodiscard]] Json recorded(const Session& session) const {
        if (!expect)
            throw Failure(
                Fault::Usage,
                {"--record", "completes an expectation file", "", "", "Name one with --expect", {}});
        const Subject what = subject(session);
        return record(what, Json::parse(readTextFile(*expect)));
    }

    Subject subject(const Session& session) const {
        return {path, expect ? readExpectation(*expect) : nlohmann::json(), session.options().gpu};
    }

    Plan plan(const Session& session) const {
        Plan plan;
        if (level) plan.level = wholeNumber("--level", *level, 1, MostLevel);
        if (reproduce) std::tie(plan.only, plan.seed) = parseRepeat("--reproduce", *reproduce);
        plan.expectation = expect.has_value();
        plan.arguments = {"validate", path.string(), "--gpu", session.options().gpu.text()};
        if (expect) plan.arguments.insert(plan.arguments.end(), {"--expect", *expect});
        if (plan.only && plan.only->expects && !expect)
            throw Failure(Fault::Usage, {std::string(plan.only->name),
                                         "compares with an expectation file",
                                         "",
                                         "",
                                         "Name one with --expect",
                                         {}});
        return plan;
    }

    /// The command that repeats a check with the same drawn values.
    [[nodiscard]] std::string command(const Result& result) const {
        return "plime validate " + shellWord(*plugin) + " --reproduce " +
               repeatText(*result.check, result.seed) + (expect ? " --expect " + shellWord(*expect) : "") +
               (gpu.kind == GpuChoice::Kind::Automatic ? "" : " --gpu " + shellWord(gpu.text()));
    }

    [[nodiscard]] std::string lineOf(const Result& result) const {
        const Outcome& outcome = result.outcome;
        const bool drawn = result.check->random && outcome.kind != Kind::Skip;
        std::string text = padded(kindText(outcome.kind), KindColumns) + "  ";
        if (outcome.kind == Kind::Pass)
            return text + (drawn ? repeatText(*result.check, result.seed) : std::string(result.check->name)) +
                   '\n';
        text += padded(result.check->name, NameColumns) + "  " + printable(outcome.sentence) + ".\n";
        const std::string indent(KindColumns + NameColumns + 4, ' ');
        for (const std::string& detail : outcome.details) text += indent + printable(detail) + '\n';
        if (drawn) text += indent + command(result) + '\n';
        return text;
    }

    /// Checks that are skipped for one reason.
    [[nodiscard]] std::string lineOf(const std::vector<Result>& skipped) const {
        if (skipped.size() == 1) return lineOf(skipped.front());
        return padded(kindText(Kind::Skip), KindColumns) + "  " +
               padded(std::to_string(skipped.size()) + " checks", NameColumns) + "  " +
               printable(skipped.front().outcome.sentence) + ".\n";
    }

    int report(Session& session) const {
        const Plan what = plan(session);
        if (expect)
            static_cast<void>(readExpectation(*expect)); // its mistakes are told before anything is run
        std::vector<Result> skipped;                     // one after the other, for one reason
        const auto flush = [&] {
            if (!skipped.empty()) session.streams().write(lineOf(skipped));
            skipped.clear();
        };
        const auto each = [&](const Result& result) {
            if (asJson) return;
            const bool isSkipped = result.outcome.kind == Kind::Skip;
            if (!isSkipped || (!skipped.empty() && skipped[0].outcome.sentence != result.outcome.sentence))
                flush();
            if (isSkipped)
                skipped.push_back(result);
            else
                session.streams().write(lineOf(result));
        };
        const std::vector<Result> results = validate::validate(what, each, interrupted);
        flush();
        throwIfInterrupted();
        const auto count = [&](Kind kind) {
            return std::ranges::count(results, kind,
                                      [](const Result& result) { return result.outcome.kind; });
        };
        const auto findings = count(Kind::Fail) + count(Kind::Crash) + count(Kind::Timeout);
        session.streams().write(asJson ? document(json(results, what, count))
                                       : summary(results.size(), findings, count));
        return findings == 0 ? 0 : static_cast<int>(Fault::Partial);
    }

    template <class Count>
    [[nodiscard]] Json json(const std::vector<Result>& results, const Plan& what, const Count& count) const {
        Json object{{"plugin", path.string()}, {"level", what.level}, {"checks", Json::array()}};
        for (const Result& result : results) {
            Json line = toJson(result);
            if (result.check->random) line["reproduce"] = command(result);
            object["checks"].push_back(std::move(line));
        }
        for (const Kind kind : {Kind::Pass, Kind::Warn, Kind::Fail, Kind::Crash, Kind::Timeout, Kind::Skip})
            object["summary"][std::string(kindText(kind))] = count(kind);
        return object;
    }

    template <class Count>
    [[nodiscard]] static std::string summary(std::size_t checks, std::ptrdiff_t findings,
                                             const Count& count) {
        return std::to_string(checks) + (checks == 1 ? " check: " : " checks: ") +
               std::to_string(count(Kind::Pass)) + " passed, " + std::to_string(count(Kind::Warn)) +
               " with a warning, " + std::to_string(findings) + " with a finding, " +
               std::to_string(count(Kind::Skip)) + " skipped\n";
    }

    std::optional<std::string> plugin, level, expect, reproduce, inChild;
    std::filesystem::path path;
    GpuChoice gpu;
    bool list = false, recording = false, asJson = false;
};

} // namespace

std::unique_ptr<Command> makeValidateCommand() { return std::make_unique<ValidateCommand>(); }

} // namespace workbench
