// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/modules/PluginSetup.h"

#include "workbench/core/PluginEntry.h"

#include <algorithm>
#include <string_view>
#include <system_error>
#include <utility>

namespace workbench {
namespace {

namespace fs = std::filesystem;

/// One run over all sources.
class Loading {
public:
    explicit Loading(PluginManager& manager) : manager(manager) {}

    void path(const fs::path& given, PluginOrigin origin) {
        std::error_code error;
        const fs::path whole = fs::absolute(given, error).lexically_normal();
        if (fs::is_directory(whole, error))
            folder(whole, origin);
        else
            library(whole, origin);
    }

    std::vector<PluginAttempt> attempts;

private:
    void folder(const fs::path& whole, PluginOrigin origin) {
        std::vector<fs::path> files;
        std::error_code error;
        for (fs::directory_iterator entry(whole, error), end; !error && entry != end; entry.increment(error))
            if (entry->path().extension() == ".so") files.push_back(entry->path());
        if (error) {
            attempts.push_back(
                {whole.string(), origin, PluginAttempt::Outcome::Failed, "",
                 Diagnostic{whole.string(), "cannot be searched for plug-ins", "", error.message(), "", {}}});
            return;
        }
        if (files.empty())
            attempts.push_back({whole.string(), origin, PluginAttempt::Outcome::Empty, "", std::nullopt});
        std::ranges::sort(files);
        for (const fs::path& file : files) library(file, origin);
    }

    void library(const fs::path& file, PluginOrigin origin) {
        PluginAttempt attempt{file.string(), origin, PluginAttempt::Outcome::Failed, "", std::nullopt};
        try {
            if (std::error_code error; !fs::exists(file, error) && !error)
                throw Failure(Fault::Plugin, {attempt.path, "does not exist", "", "", "Check the path", {}});
            attempt.name = PluginEntry::read(file).name;
            if (isLoaded(attempt.name)) {
                attempt.outcome = PluginAttempt::Outcome::PassedOver;
            } else {
                static_cast<void>(manager.load(attempt.path));
                attempt.outcome = PluginAttempt::Outcome::Loaded;
            }
        } catch (const Failure& failure) {
            attempt.reason = failure.diagnostic();
        }
        attempts.push_back(std::move(attempt));
    }

    [[nodiscard]] bool isLoaded(const std::string& name) const {
        return std::ranges::any_of(attempts, [&](const PluginAttempt& attempt) {
            return attempt.outcome == PluginAttempt::Outcome::Loaded && attempt.name == name;
        });
    }

    PluginManager& manager;
};

std::vector<std::string> splitAtColons(std::string_view list) {
    std::vector<std::string> parts;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(':'), list.size());
        if (end > 0) parts.emplace_back(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return parts;
}

} // namespace

std::vector<fs::path> defaultPluginFolders(const fs::path& executableFolder) {
    const fs::path parent = executableFolder.parent_path();
    return {parent / "plugins", parent / PLIME_PLUGIN_FOLDER};
}

fs::path executableFolder() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path();
}

std::vector<PluginAttempt> loadPlugins(PluginManager& manager, const PluginSources& sources) {
    Loading loading(manager);
    for (const std::string& path : sources.commandLine) loading.path(path, PluginOrigin::CommandLine);
    for (const std::string& path : splitAtColons(sources.environment))
        loading.path(path, PluginOrigin::Environment);
    const auto folder = std::ranges::find_if(sources.defaultFolders, [](const fs::path& candidate) {
        std::error_code error;
        return fs::is_directory(candidate, error);
    });
    if (folder != sources.defaultFolders.end()) loading.path(*folder, PluginOrigin::Default);
    return std::move(loading.attempts);
}

} // namespace workbench
