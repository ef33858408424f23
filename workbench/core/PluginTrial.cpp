// SPDX-License-Identifier: Apache-2.0
#include "workbench/core/PluginTrial.h"

#include "workbench/core/TrialMemory.h"
#include "workbench/core/probe/ProbeAnswer.h"

#include "host/core/VActionNotifier.h"

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

namespace workbench {
namespace {

namespace fs = std::filesystem;
using Way = ChildEnding::Way;

/// What the probe has said, and how it has ended.
struct Trial {
    std::string answer;
    ChildEnding ending;
};

Trial tryOut(const std::string& path, const PluginTrialSettings& settings) {
    constexpr std::size_t LongestAnswer = std::size_t{64} << 10;
    Pipe answers;
    std::vector<int> files(ProbeAnswerDescriptor, -1);
    files.push_back(answers.write.get());
    ChildProgram probe(settings.probe, {path}, files, settings.limits);
    answers.write.close();
    std::string answer = probe.read(answers.read.get(), LongestAnswer).value_or("");
    return {std::move(answer), probe.wait()};
}

[[noreturn]] void refuse(const std::string& path, const std::string& why, std::string got = {}) {
    throw Failure(Fault::Plugin, {path,
                                  "is not loaded, because " + why,
                                  "",
                                  std::move(got),
                                  "\"plime validate " + path + "\" finds the cause",
                                  {}});
}

/// A text of foreign code as one line of reasonable length.
std::string legible(std::string text) {
    constexpr std::size_t Longest = 200;
    if (text.size() > Longest) text = text.substr(0, Longest) + "...";
    for (char& letter : text)
        if (static_cast<unsigned char>(letter) < ' ' || letter == '\x7f') letter = '?';
    return text;
}

bool is(char letter, ProbeAnswer answer) { return letter == static_cast<char>(answer); }

/// Throws for a library that did not come and go in good order.
void judge(const std::string& path, const Trial& trial) {
    const std::string process = "a process that loaded it on trial " + trial.ending.text();
    if (trial.answer.size() < 2) refuse(path, process);
    const char next = trial.answer[1];
    if (is(next, ProbeAnswer::OutOfMemory)) refuse(path, "it runs out of memory while it is loaded");
    if (is(next, ProbeAnswer::Exception))
        refuse(path, "it throws an exception while it is loaded",
               '"' + legible(trial.answer.substr(2)) + '"');
    if (is(next, ProbeAnswer::Refused)) throw Failure(Fault::Plugin, unpacked(trial.answer.substr(2)));
    if (trial.answer.size() < 3 || !is(trial.answer[2], ProbeAnswer::Unloaded))
        refuse(path, process + " when it unloaded it");
}

fs::path cacheFolder() {
    const auto absolute = [](const char* name) {
        const char* const text = std::getenv(name);
        return text != nullptr && *text == '/' ? fs::path(text) : fs::path();
    };
    if (fs::path own = absolute("XDG_CACHE_HOME"); !own.empty()) return own;
    const fs::path home = absolute("HOME");
    return home.empty() ? home : home / ".cache";
}

} // namespace

PluginTrialSettings usualPluginTrial() {
    PluginTrialSettings settings{.probe = helperProgram("plime-plugin-probe"),
                                 .limits = {.time = std::chrono::seconds(10),
                                            .processorTime = std::chrono::seconds(2),
                                            .memory = ProbeDistance + (std::uint64_t{2} << 30),
                                            .files = 64}};
    if (const fs::path folder = cacheFolder(); !folder.empty())
        settings.memory = folder / "krod" / "plug-in-trials";
    constexpr int MostSeconds = 3600;
    const char* const text = std::getenv("KROD_PROBE_SECONDS");
    int seconds = 0;
    if (text != nullptr) std::from_chars(text, text + std::strlen(text), seconds);
    if (seconds > 0 && seconds <= MostSeconds)
        settings.limits.time = settings.limits.processorTime = std::chrono::seconds(seconds);
    return settings;
}

struct PluginTrial::State {
    PluginTrialSettings settings;
    TrialMemory memory;
    bool warned = false;

    void warnOnce(const std::string& reason) {
        if (std::exchange(warned, true)) return;
        krod::VActionNotifier::Warning(
            "plug-ins are loaded without a trial, because the plug-in probe does not work: " + reason);
    }
};

PluginTrial::PluginTrial(PluginTrialSettings settings)
    : state(std::make_shared<State>(State{settings, TrialMemory(settings.memory, settings.probe)})) {}

void PluginTrial::operator()(const std::string& path) const {
    const TrialMemory::Key key = state->memory.keyOf(path);
    if (state->memory.knows(key)) return;
    Trial trial;
    try {
        trial = tryOut(path, state->settings);
    } catch (const std::system_error& error) {
        return state->warnOnce(error.what());
    }
    if (trial.answer.empty() && trial.ending.way != Way::TooLong)
        return state->warnOnce(trial.ending.way == Way::NotStarted ? trial.ending.reason
                                                                   : "it " + trial.ending.text());
    judge(path, trial);
    state->memory.keep(key);
}

} // namespace workbench
