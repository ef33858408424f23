// SPDX-License-Identifier: Apache-2.0
#include "workbench/validate/Trial.h"

#include <algorithm>
#include <array>
#include <exception>
#include <stdexcept>

namespace workbench::validate {
namespace {

constexpr std::array<std::pair<Kind, std::string_view>, 6> KindTexts = {{{Kind::Pass, "pass"},
                                                                         {Kind::Warn, "warn"},
                                                                         {Kind::Fail, "fail"},
                                                                         {Kind::Crash, "crash"},
                                                                         {Kind::Timeout, "timeout"},
                                                                         {Kind::Skip, "skip"}}};

Outcome outcomeOf(Kind kind, std::vector<std::string> notes) {
    Outcome outcome{kind, std::move(notes.front()), {}};
    outcome.details.assign(std::next(notes.begin()), notes.end());
    return outcome;
}

} // namespace

std::string_view kindText(Kind kind) noexcept {
    return std::ranges::find(KindTexts, kind, &std::pair<Kind, std::string_view>::first)->second;
}

Kind kindFrom(std::string_view text) {
    const auto* const found = std::ranges::find(KindTexts, text, &std::pair<Kind, std::string_view>::second);
    if (found == KindTexts.end()) throw std::invalid_argument("no kind of outcome: " + std::string(text));
    return found->first;
}

double Trial::drawBetween(double least, double most) {
    constexpr double Steps = 65536;
    const double share = static_cast<double>(draw(65537)) / Steps;
    return least * (1 - share) + most * share;
}

void Trial::fail(std::string sentence) {
    if (faults.size() < MostNotes) faults.push_back(std::move(sentence));
}

void Trial::warn(std::string sentence) {
    if (oddities.size() < MostNotes) oddities.push_back(std::move(sentence));
}

Outcome Trial::outcome() const {
    if (!faults.empty()) return outcomeOf(Kind::Fail, faults);
    if (!oddities.empty()) return outcomeOf(Kind::Warn, oddities);
    return {};
}

Outcome perform(const Check& check, Trial& trial) {
    try {
        check.function(trial);
    } catch (const Skipped& skipped) {
        return {Kind::Skip, skipped.reason, {}};
    } catch (const std::exception& error) {
        std::string text = error.what();
        while (text.ends_with('.')) text.pop_back();
        trial.fail(std::move(text));
    } catch (...) {
        trial.fail("something that is no std::exception was thrown");
    }
    return trial.outcome();
}

} // namespace workbench::validate
