// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/ShaderGuard.h"

#include "workbench/gl/RenderSession.h"
#include "workbench/gl/ShaderFiles.h"
#include "workbench/gl/check/ShaderCheck.h"
#include "workbench/gl/worker/WorkerProcess.h"
#include "workbench/platform/EglContext.h"
#include "workbench/report/Failure.h"

#include "host/core/VActionNotifier.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <system_error>
#include <utility>

namespace workbench {
namespace {

constexpr std::uint64_t MostMemory = std::uint64_t{4} << 30; // address space of a software driver
constexpr std::uint64_t MostFileSize = std::uint64_t{16} << 20; // the driver's cache on the disk
constexpr std::uint64_t MostFiles = 32;
constexpr std::chrono::seconds UsualTime{8}, ProcessorTimeInAddition{2};

struct Verdict {
    std::string why;            ///< it is not drawn with; empty: it is
    std::string advice;
    double secondsPerPixel = 0; ///< of a trial
};

struct Guard {
    std::mutex mutex;
    ShaderGuardSettings settings;
    std::map<std::string, Verdict> verdicts; // by driver and texts
    bool warned = false;
};

Guard& guard() {
    static Guard only;
    return only;
}

std::string placeOf(const ShaderObjection& objection, const std::string& text) {
    if (objection.line == 0) return "the text";
    const auto file = findShaderFile(text);
    if (!file) return "text line " + std::to_string(objection.line);
    const auto begin = text.begin() + static_cast<std::ptrdiff_t>(file->offset);
    const int before = static_cast<int>(std::count(text.begin(), begin, '\n'));
    return objection.line > before ? file->path.string() + " line " + std::to_string(objection.line - before)
                                   : "text line " + std::to_string(objection.line);
}

void requireNoObjection(const std::string& text, const std::string& label) {
    const auto objection = objectionTo(text);
    if (!objection) return;
    const bool counted = objection->limit != 0 || objection->got != 0;
    throw Failure(Fault::Shader,
                  {label,
                   "is not compiled, because " + placeOf(*objection, text) + ' ' + objection->what,
                   counted ? "at most " + std::to_string(objection->limit) : "",
                   counted ? std::to_string(objection->got) : "",
                   "",
                   {}});
}

bool mayComeFromUser(const ProgramTexts& texts) {
    return texts.vertexLabel == TileVertexLabel || findShaderFile(texts.fragmentText).has_value();
}

ShaderTrial trialOf(const ProgramTexts& texts, bool strict) {
    const auto& session = RenderSession::require(texts.fragmentLabel);
    return {.gpu = session.options().gpu.text(),
            .strict = strict,
            .vertexText = texts.vertexText,
            .fragmentText = texts.fragmentText};
}

/// Drivers of hardware need any number of addresses.
ChildLimits limitsOf(const ProgramTexts& texts, std::chrono::milliseconds time) {
    const bool software = RenderSession::require(texts.fragmentLabel).properties().software;
    return {.time = time,
            .processorTime = std::chrono::ceil<std::chrono::seconds>(time) + ProcessorTimeInAddition,
            .memory = software ? MostMemory : 0,
            .fileSize = MostFileSize,
            .files = MostFiles};
}

Verdict verdictOf(const TrialOutcome& outcome) {
    if (outcome.kind == TrialOutcome::Kind::Killed)
        return {"ended the shader compiler (" + outcome.reason + ')', ""};
    if (outcome.kind == TrialOutcome::Kind::TooLong)
        return {"took longer than " + outcome.reason, "KROD_SHADER_SECONDS can allow more"};
    return {"", "", outcome.secondsPerPixel};
}

TrialOutcome outcomeOf(const ProgramTexts& texts, bool strict, const ShaderGuardSettings& settings) {
    try {
        return tryInWorker(settings.worker, trialOf(texts, strict), limitsOf(texts, settings.time));
    } catch (const std::system_error& error) {
        return {TrialOutcome::Kind::NotStarted, error.what()};
    }
}

void warnOnce(const std::string& reason) {
    Guard& all = guard();
    {
        const std::lock_guard lock(all.mutex);
        if (std::exchange(all.warned, true)) return;
    }
    krod::VActionNotifier::Warning(
        "programs of users are compiled without a trial, because the shader worker "
        "does not work: " +
        reason);
}

/// Looks the program up among those that were tried, and tries it if it is not there.
Verdict verdictOn(const ProgramTexts& texts, const std::string& driver, bool strict,
                      const ShaderGuardSettings& settings) {
    const std::string key =
        driver + '\0' + (strict ? 's' : ' ') + texts.vertexText + '\0' + texts.fragmentText;
    Guard& all = guard();
    {
        const std::lock_guard lock(all.mutex);
        if (const auto known = all.verdicts.find(key); known != all.verdicts.end()) return known->second;
    }
    const TrialOutcome outcome = outcomeOf(texts, strict, settings);
    if (outcome.kind == TrialOutcome::Kind::NotStarted) {
        warnOnce(outcome.reason);
        return {};
    }
    const std::lock_guard lock(all.mutex);
    return all.verdicts.emplace(key, verdictOf(outcome)).first->second;
}

} // namespace

std::chrono::milliseconds ShaderGuardSettings::usualTime() {
    constexpr int MostSeconds = 3600;
    const char* const text = std::getenv("KROD_SHADER_SECONDS");
    int seconds = 0;
    if (text != nullptr) std::from_chars(text, text + std::strlen(text), seconds);
    return seconds > 0 && seconds <= MostSeconds ? std::chrono::seconds(seconds) : UsualTime;
}

void setShaderGuard(ShaderGuardSettings settings) {
    Guard& all = guard();
    const std::lock_guard lock(all.mutex);
    all.settings = std::move(settings);
    all.verdicts.clear();
    all.warned = false;
}

ShaderGuardSettings shaderGuard() {
    const std::lock_guard lock(guard().mutex);
    return guard().settings;
}

std::optional<double> requireHarmless(const ProgramTexts& texts, const std::string& driver, bool strict) {
    const ShaderGuardSettings settings = shaderGuard();
    if (settings.checkTexts) {
        requireNoObjection(texts.vertexText, texts.vertexLabel);
        requireNoObjection(texts.fragmentText, texts.fragmentLabel);
    }
    if (!mayComeFromUser(texts)) return {};
    const Verdict verdict = settings.worker.empty() ? Verdict{} : verdictOn(texts, driver, strict, settings);
    if (verdict.why.empty()) return verdict.secondsPerPixel;
    const auto file = findShaderFile(texts.fragmentText);
    throw Failure(Fault::Shader,
                  {texts.fragmentLabel,
                   (file ? "with " + file->path.string() + ", its program " : "its program ") + verdict.why,
                   "",
                   "",
                   verdict.advice,
                   {}});
}

} // namespace workbench
