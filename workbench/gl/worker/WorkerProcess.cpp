// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/worker/WorkerProcess.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace workbench {
namespace {

using Kind = TrialOutcome::Kind;
using Way = ChildEnding::Way;

/// What a worker that has not answered has met.
TrialOutcome outcomeOf(const ChildEnding& ending) {
    constexpr int CannotExecute = 127;
    switch (ending.way) {
    case Way::NotStarted:
        return {Kind::NotStarted, ending.reason};
    case Way::TooLong:
        return {Kind::TooLong, ending.reason};
    case Way::Signal:
        return {Kind::Killed, "signal " + std::to_string(ending.number)};
    case Way::Unknown:
        return {Kind::Killed, "without a word"};
    case Way::Exited:
        break;
    }
    if (ending.number == CannotExecute) return {Kind::NotStarted, "it cannot be loaded"};
    return {Kind::Killed, "exit code " + std::to_string(ending.number)};
}

/// The time of a pixel, which no trial can have found to be below 0 or above its own time.
double secondsIn(const std::string& nanoseconds, std::chrono::duration<double> most) {
    std::int64_t number = 0;
    std::from_chars(nanoseconds.data(), nanoseconds.data() + nanoseconds.size(), number);
    return std::clamp(1e-9 * static_cast<double>(number), 0.0, most.count());
}

} // namespace

TrialOutcome tryInWorker(const std::filesystem::path& worker, const ShaderTrial& trial,
                         const ChildLimits& limits) {
    constexpr std::size_t LongestAnswer = 4096;
    const Descriptor request = memoryFile("shader", packed(trial));
    Pipe answers;
    ChildProgram child(worker, {}, {request.get(), answers.write.get()}, limits);
    answers.write.close();
    const std::string answer = child.read(answers.read.get(), LongestAnswer).value_or("");
    const auto is = [&](TrialAnswer wanted) {
        return !answer.empty() && answer[0] == static_cast<char>(wanted);
    };
    if (is(TrialAnswer::Drawn)) return {Kind::Drawn, "", secondsIn(answer.substr(1), limits.time)};
    if (is(TrialAnswer::Refused)) return {Kind::Refused, ""};
    if (is(TrialAnswer::NoOpenGL)) return {Kind::NotStarted, answer.substr(1)};
    return outcomeOf(child.wait());
}

} // namespace workbench
