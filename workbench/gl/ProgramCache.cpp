// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/ProgramCache.h"

#include "workbench/gl/ShaderCompiler.h"
#include "workbench/gl/ShaderGuard.h"
#include "workbench/report/Failure.h"

#include <chrono>
#include <functional>
#include <utility>

namespace workbench {
namespace {

/// Lengths in front, so that different texts never give the same key.
std::string keyOf(const ProgramTexts& texts, const std::string& driver) {
    std::string key = driver;
    for (const std::string* text :
         {&texts.vertexText, &texts.fragmentText, &texts.vertexLabel, &texts.fragmentLabel}) {
        key += ' ' + std::to_string(text->size()) + ':' + *text;
    }
    return key;
}

} // namespace

std::shared_ptr<CompiledProgram> ProgramCache::find(const ProgramTexts& texts) {
    std::string key = keyOf(texts, settings.driver);
    Outcome outcome;
    if (const auto known = index.find(key); known != index.end()) {
        ++counts.hits;
        entries.splice(entries.begin(), entries, known->second);
        outcome = known->second->outcome;
    } else {
        ++counts.misses;
        outcome = compile(texts);
        keep(std::move(key), outcome);
    }
    if (const auto* refused = std::get_if<std::shared_ptr<const Failure>>(&outcome)) throw Failure(**refused);
    return std::get<std::shared_ptr<CompiledProgram>>(outcome);
}

ProgramCache::Outcome ProgramCache::compile(const ProgramTexts& texts) {
    auto begin = std::chrono::steady_clock::now();
    Outcome outcome;
    try {
        const auto secondsPerPixel = requireHarmless(texts, settings.driver, settings.strict);
        begin = std::chrono::steady_clock::now(); // a trial is no work of the driver
        outcome = std::make_shared<CompiledProgram>(
            CompiledProgram{compileProgram(texts, settings.strict), secondsPerPixel});
    } catch (const Failure& failure) {
        if (failure.fault() != Fault::Shader) throw;
        ++counts.failures;
        outcome = std::make_shared<const Failure>(failure);
    }
    ++counts.compiles;
    counts.compileSeconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return outcome;
}

void ProgramCache::keep(std::string key, Outcome outcome) {
    if (settings.most == 0) return;
    while (entries.size() >= settings.most) {
        index.erase(entries.back().key);
        entries.pop_back();
        ++counts.evictions;
    }
    entries.push_front({std::move(key), std::move(outcome)});
    index.emplace(entries.front().key, entries.begin());
}

ProgramCacheStatistics ProgramCache::statistics() const noexcept {
    ProgramCacheStatistics now = counts;
    now.entries = entries.size();
    return now;
}

bool ProgramCache::isFirstReport(const std::string& fragmentText, const std::string& uniform) {
    return reportedUniforms.emplace(std::hash<std::string>{}(fragmentText), uniform).second;
}

} // namespace workbench
