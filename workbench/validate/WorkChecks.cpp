// SPDX-License-Identifier: Apache-2.0
// Level 5 without OpenGL, and level 6 as far as it is about values.
#include "workbench/report/Failure.h"
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Guest.h"
#include "workbench/validate/Module.h"

#include <array>
#include <clocale>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <locale>
#include <utility>

namespace workbench::validate {
namespace {

using Texts = std::vector<std::string>;

/// Says what a module throws at its work. A module that waits for a text may refuse; others may not.
void noteThrown(Trial& trial, const std::string& who, const krod::VObject& object,
                const std::exception& error) {
    if (!waitsForText(object)) trial.fail(who + ": throws \"" + error.what() + '"');
}

/// Calls a function with each module in each of its settings: all initial, then one parameter after the
/// other.
void forEachSetting(
    Trial& trial, const Guest& guest,
    const std::function<std::vector<Value>(const krod::VParameter&)>& values,
    const std::function<void(const std::string& who, krod::VObject&, const krod::VValuePool&)>& call) {
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        call(maker.label, *object, {});
        for (const auto& input : std::as_const(*object).slots().inputs())
            for (const Value& value : values(*input.parameter)) {
                krod::VValuePool pool;
                pool.set(*input.parameter, value);
                const std::string who = maker.label + " with " + settingText(*input.parameter, *value);
                try {
                    call(who, *object, pool);
                } catch (const std::exception& error) {
                    noteThrown(trial, who, *object, error);
                }
            }
    }
}

/// The shader texts of every module at its initial and at drawn values.
Texts allTexts(const Guest& guest, std::uint32_t seed) {
    Trial dice({}, seed);
    Texts texts;
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        for (const auto& input : std::as_const(*object).slots().inputs())
            for (const Value& value : usualValues(*input.parameter, dice)) {
                krod::VValuePool pool;
                pool.set(*input.parameter, value);
                try {
                    for (std::string& text : shaderTexts(*object, pool))
                        texts.push_back(maker.label + '\n' + std::move(text));
                } catch (const Failure&) {
                    continue; // a module that waits for a file; the check "update" tells of others
                }
            }
    }
    return texts;
}

void compareTexts(Trial& trial, const Texts& first, const Texts& second, const std::string& circumstance) {
    if (!trial.require(first.size() == second.size(), "gives another number of shader texts " + circumstance))
        return;
    for (std::size_t i = 0; i < first.size(); ++i)
        if (first[i] != second[i])
            trial.fail(first[i].substr(0, first[i].find('\n')) + ": gives another shader text " +
                       circumstance);
}

/// Decimals with a comma and groups of three digits, as in much of the world.
class Commas : public std::numpunct<char> {
protected:
    [[nodiscard]] char do_decimal_point() const override { return ','; }
    [[nodiscard]] char do_thousands_sep() const override { return '.'; }
    [[nodiscard]] std::string do_grouping() const override { return "\3"; }
};

/// Sets commas for streams, and for the C library where it has such a locale.
void setCommas() {
    std::locale::global(std::locale(std::locale::classic(), new Commas));
    for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "nl_NL.UTF-8", "es_ES.UTF-8", "de_DE", "fr_FR"})
        if (std::setlocale(LC_ALL, name)) return;
}

} // namespace

void checkUpdate(Trial& trial) {
    const Guest guest(trial);
    const auto usual = [&trial](const krod::VParameter& parameter) { return usualValues(parameter, trial); };
    forEachSetting(trial, guest, usual, [&](const std::string& who, krod::VObject& object, const auto& pool) {
        trial.require(update(object, pool) || waitsForText(object), who + ": cannot be updated");
        static_cast<void>(shaderTexts(object, pool));
    });
}

void checkValueTexts(Trial& trial) {
    const Guest guest(trial);
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        for (const auto& input : std::as_const(*object).slots().inputs())
            for (const Value& value : {input.parameter->value().clone(), input.parameter->property("min"),
                                       input.parameter->property("max")}) {
                if (!value) continue;
                const Value copy = value->clone();
                const krod::TextResult result = copy->setFromText(value->text());
                trial.require(result && copy->text() == value->text(),
                              maker.label + ": has the value " + settingText(*input.parameter, *value) +
                                  ", which cannot be read again from its text");
            }
    }
}

void checkRepeatable(Trial& trial) {
    const Guest guest(trial);
    const auto seed = static_cast<std::uint32_t>(trial.draw(1U << 20U));
    compareTexts(trial, allTexts(guest, seed), allTexts(guest, seed), "for the same values");
}

void checkCommaLocale(Trial& trial) {
    const Guest guest(trial);
    const auto seed = static_cast<std::uint32_t>(trial.draw(1U << 20U));
    const Texts before = allTexts(guest, seed);
    setCommas();
    compareTexts(trial, before, allTexts(guest, seed), "where decimals have a comma");
}

void checkFallbacks(Trial& trial) {
    const Guest guest(trial);
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        krod::VValuePool nothing;
        const auto work = [&](const krod::VValuePool& pool, const std::string& what) {
            try {
                trial.require(update(*object, pool) || waitsForText(*object),
                              maker.label + ": cannot be updated while " + what + " cannot be read");
                static_cast<void>(shaderTexts(*object, pool));
            } catch (const std::exception& error) {
                noteThrown(trial, maker.label + ", while " + what + " cannot be read", *object, error);
            }
        };
        for (const auto& input : std::as_const(*object).slots().inputs()) {
            krod::VValuePool pool;
            pool.makeUnreadable(*input.parameter);
            nothing.makeUnreadable(*input.parameter);
            work(pool, '"' + input.name + '"');
        }
        work(nothing, "no parameter");
    }
}

void checkHostileValues(Trial& trial) {
    const Guest guest(trial);
    forEachSetting(trial, guest, hostileValues,
                   [&](const std::string&, krod::VObject& object, const auto& pool) {
                       try {
                           update(object, pool);
                           static_cast<void>(shaderTexts(object, pool));
                       } catch (const std::exception&) {
                           return; // refusing such a value is right
                       }
                   });
}

} // namespace workbench::validate
