// SPDX-License-Identifier: Apache-2.0
// Level 5: texts and pictures, compared with what is expected.
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Drawing.h"
#include "workbench/validate/Expectation.h"
#include "workbench/validate/Pictures.h"

#include <functional>
#include <sstream>

namespace workbench::validate {
namespace {

/// Calls a function with each module of which the expectation has the field, and that field.
void forEachExpected(
    Trial& trial, const char* field,
    const std::function<void(const std::string& label, krod::VObject&, const nlohmann::json&)>& call) {
    const Guest guest(trial);
    for (const Maker& maker : guest.makers()) {
        const auto* const expected = findExpected(trial, maker.label);
        if (expected && expected->contains(field)) call(maker.label, *maker.make(), expected->at(field));
    }
}

} // namespace

void checkShaderTexts(Trial& trial) {
    forEachExpected(
        trial, "shader", [&](const std::string& label, krod::VObject& object, const auto& expected) {
            const auto texts = shaderTexts(object);
            trial.require(texts.size() == 1 && texts[0] == expected.template get<std::string>(),
                          label + ": has another shader text than expected; compare it with `plime shader " +
                              label + '`');
        });
}

void checkShaderSettings(Trial& trial) {
    forEachExpected(trial, "settings",
                    [&](const std::string& label, krod::VObject& object, const auto& expected) {
                        std::istringstream sums(expected.template get<std::string>());
                        for (const SettingText& text : settingTexts(object)) {
                            std::string sum;
                            trial.require(sums >> sum && sum == text.sum,
                                          label + text.setting + ": has another shader text than expected");
                        }
                    });
}

void checkExpectedPictures(Trial& trial) {
    const auto session = openSession(trial);
    forEachExpected(
        trial, "picture", [&](const std::string& label, krod::VObject& object, const auto& expected) {
            Pixels picture;
            worksWell(trial, label, object,
                      [&] { picture = drawOrProcess(*session, object, {}, PictureSide, PictureSide); });
            if (picture.empty()) return;
            for (const auto& probe : expected.template get<std::vector<std::string>>())
                if (const std::string difference = deviation(picture, probe); !difference.empty())
                    trial.fail(label + ": " + difference);
        });
}

} // namespace workbench::validate
