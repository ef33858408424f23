// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/commandline/Session.h"

#include "workbench/core/PluginTrial.h"
#include "workbench/gl/ShaderFiles.h"

#include <cstdlib>

namespace workbench {

const std::vector<PluginAttempt>& Session::plugins() {
    if (!attempts) {
        const char* const environment = std::getenv("KROD_PLUGIN_PATH");
        manager.setTrial(PluginTrial(usualPluginTrial()));
        attempts = loadPlugins(manager, {global.plugins, environment ? environment : "",
                                         defaultPluginFolders(executableFolder())});
    }
    return *attempts;
}

std::vector<std::filesystem::path> Session::shaderFolders() const {
    std::vector<std::filesystem::path> folders;
    for (const std::string& folder : global.shaderFolders)
        folders.push_back(std::filesystem::absolute(folder));
    for (auto& folder : environmentShaderFolders()) folders.push_back(std::move(folder));
    return folders;
}

const Catalogue& Session::catalogue() {
    if (modules) return *modules;
    for (const PluginAttempt& attempt : plugins()) {
        const bool asked = attempt.origin == PluginOrigin::CommandLine;
        if (attempt.outcome == PluginAttempt::Outcome::Failed) {
            if (asked) throw Failure(Fault::Plugin, *attempt.reason);
            messages.warning(*attempt.reason);
        } else if (attempt.outcome == PluginAttempt::Outcome::Empty && asked) {
            throw Failure(Fault::Plugin, {attempt.path, "holds no plug-in", "files *.so", "none", "", {}});
        } else if (attempt.outcome == PluginAttempt::Outcome::PassedOver) {
            messages.detail(attempt.path + " is passed over: \"" + attempt.name + "\" is loaded already.");
        } else if (attempt.outcome == PluginAttempt::Outcome::Loaded) {
            messages.detail(attempt.path + " is loaded as \"" + attempt.name + "\".");
        }
    }
    modules = Catalogue::registered([this](LibraryId library) { return manager.find(library); });
    return *modules;
}

void Session::noteShaderFiles() const {
    for (const ShaderFile& file : usedShaderFiles())
        messages.detail(file.name + " is taken from " + file.path.string() + ".");
}

} // namespace workbench
