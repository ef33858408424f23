// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/modules/SceneInput.h"

#include "apps/plime/terminal/Suggest.h"
#include "apps/plime/terminal/Text.h"
#include "workbench/files/FileContent.h"
#include "workbench/files/InputKind.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <filesystem>

namespace workbench {
namespace {

/// Generated scenes stand in the group "Demo".
bool isDemo(const CatalogueEntry& entry) { return entry.category == "Scene" && entry.group == "Demo"; }
std::string demoName(const CatalogueEntry& entry) { return std::string(DemoPrefix) + lowerCase(entry.name); }

std::unique_ptr<ModuleInstance> makeDemo(const Catalogue& catalogue, const std::string& input) {
    std::vector<std::string> names;
    for (const CatalogueEntry& entry : catalogue.entries()) {
        if (!isDemo(entry)) continue;
        if (demoName(entry) == lowerCase(input)) return std::make_unique<ModuleInstance>(entry);
        names.push_back(demoName(entry));
    }
    throw Failure(
        Fault::Usage,
        {input, "is no demo", "", "", didYouMean(input, names, "See \"plime render --list-demos\""), {}});
}

std::string keyOf(InputKind kind) {
    switch (kind) {
    case InputKind::Model:
        return "Scene/Model";
    case InputKind::Points:
        return "Scene/Points";
    case InputKind::Picture:
        return "Scene/Picture";
    }
    return "";
}

CatalogueEntry moduleFor(const Catalogue& catalogue, const std::string& input, InputKind kind) {
    const std::string key = keyOf(kind);
    for (const CatalogueEntry& entry : catalogue.entries())
        if (entry.key == key) return entry;
    throw Failure(Fault::Plugin, {input,
                                  "cannot be shown: the module " + key + " is not loaded",
                                  "",
                                  "",
                                  "See \"plime doctor\" for the plug-ins that were tried",
                                  {}});
}

} // namespace

std::unique_ptr<ModuleInstance> makeSceneInput(const Catalogue& catalogue, const std::string& input) {
    if (input.starts_with(DemoPrefix)) return makeDemo(catalogue, input);
    const CatalogueEntry entry = moduleFor(catalogue, input, classifyInput(input));
    auto module = std::make_unique<ModuleInstance>(entry);
    const auto file = module->object().slots().input("file");
    file->setValue(krod::makeValue(input));
    return module;
}

void warnOfNothingToDraw(Report& report, const ModuleInstance& scene, const std::string& input,
                         const krod::BoundingSphere& bounds) {
    const bool isMesh = scene.entry().key == keyOf(InputKind::Model);
    if (bounds.radius > 0 || (bounds.radius == 0 && !isMesh)) return;
    report.warning({input, "draws nothing: it has no extent", "", "", "See what is in the file", {}});
}

void noteContent(Report& report, const ModuleInstance& scene, const std::string& input) {
    if (const auto* const content = dynamic_cast<const FileContent*>(&scene.object()))
        for (const std::string& note : content->facts().notes) report.note({input, note, "", "", "", {}});
}

std::string demoList(const Catalogue& catalogue) {
    std::string text;
    for (const CatalogueEntry& entry : catalogue.entries())
        if (isDemo(entry)) text += padded(demoName(entry), 16) + printable(entry.brief.value_or("")) + '\n';
    return text;
}

} // namespace workbench
