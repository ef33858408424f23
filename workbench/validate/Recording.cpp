// SPDX-License-Identifier: Apache-2.0
#include "workbench/validate/Recording.h"

#include "workbench/validate/Drawing.h"
#include "workbench/validate/Expectation.h"
#include "workbench/validate/Pictures.h"

namespace workbench::validate {

nlohmann::ordered_json record(const Subject& subject, nlohmann::ordered_json expectation) {
    const Trial trial(subject, 0);
    const Guest guest(trial);
    const auto session = openSession(trial);
    for (auto& module : expectation.at("modules"))
        for (const Maker& maker : guest.makers()) {
            if (maker.label != expectedLabel(nlohmann::json(module))) continue;
            const Object object = maker.make();
            const auto texts = settingTexts(*object);
            for (const char* field : {"shader", "settings", "picture"}) module.erase(field);
            if (!texts.empty() && !texts.front().sum.empty()) {
                module["shader"] = shaderTexts(*maker.make()).front();
                std::string sums;
                for (const SettingText& text : texts) sums += (sums.empty() ? "" : " ") + text.sum;
                module["settings"] = sums;
            }
            const Pixels picture = drawOrProcess(*session, *object, {}, PictureSide, PictureSide);
            if (!picture.empty()) module["picture"] = probesOf(picture);
        }
    return expectation;
}

} // namespace workbench::validate
