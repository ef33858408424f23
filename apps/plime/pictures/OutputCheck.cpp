// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/OutputCheck.h"

#include "apps/plime/commandline/Session.h"
#include "apps/plime/pictures/FileStamp.h"
#include "apps/plime/pictures/NamedFiles.h"
#include "apps/plime/pictures/TileJournal.h"
#include "workbench/files/OutputFile.h"
#include "workbench/report/Failure.h"

#include <map>
#include <utility>

#include <sys/stat.h>

namespace workbench {

namespace fs = std::filesystem;

OutputCheck::Identity OutputCheck::identityOf(const fs::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) return {status.st_dev, status.st_ino, ""};
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    if (::stat(folder.c_str(), &status) == 0) return {status.st_dev, status.st_ino, path.filename().string()};
    return {0, 0, fs::absolute(path).lexically_normal().string()};
}

OutputCheck::File OutputCheck::fileOf(const std::string& path, std::string purpose, std::string asked) {
    const fs::path file = linkTarget(path);
    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    return {path, std::move(purpose), std::move(asked), identityOf(file), identityOf(folder)};
}

void OutputCheck::addInput(const std::string& path) {
    std::error_code problem;
    if (path.empty() || !fs::exists(path, problem)) return; // whoever reads it says so
    inputs.push_back(fileOf(path, "", ""));
}

void OutputCheck::addInputs(const ModuleInstance& module) {
    for (const std::string& file : module.inputFiles()) addInput(file);
    if (const std::string file = module.sceneFile(); !file.empty()) models.push_back(file);
}

void OutputCheck::addInputs(Session& session) {
    for (const PluginAttempt& plugin : session.plugins()) addInput(plugin.path);
    for (const fs::path& file : shaderFilesIn(session.shaderFolders())) addInput(file.string());
}

void OutputCheck::addPicture(const std::string& path, const std::string& purpose) {
    outputs.push_back(fileOf(path, purpose, asked));
    folders.push_back(fileOf(TileJournal::folderOf(path).string(), purpose, asked));
}

void OutputCheck::addNetwork(const std::string& path) {
    outputs.push_back(fileOf(path, "--save-network", "--save-network " + path));
}

void OutputCheck::refuseInput(const File& output, const File& input) const {
    std::string other = output.path == input.path ? "" : "is the same file as " + input.path + ", which ";
    throw Failure(
        Fault::Usage,
        {output.path, other + "is read by this command and would be replaced", "", output.asked, advice, {}});
}

void OutputCheck::refuseSecond(const File& output, const File& other) const {
    throw Failure(Fault::Usage,
                  {output.path,
                   "would be written twice, for " + other.purpose + " and for " + output.purpose,
                   "",
                   output.asked,
                   advice,
                   {}});
}

void OutputCheck::requireNotNamed(const File& output) const {
    std::error_code problem;
    if (!fs::exists(output.path, problem)) return;
    for (const std::string& model : models)
        if (namesFile(model, output.path))
            throw Failure(Fault::Usage, {output.path,
                                         "belongs to " + model +
                                             ", which is read by this command, and would be "
                                             "replaced",
                                         "",
                                         output.asked,
                                         advice,
                                         {}});
}

void OutputCheck::refusePlace(const File& file, const File& tiles) const {
    throw Failure(Fault::Usage, {file.path,
                                 "lies where the tiles of " + tiles.purpose + " are kept, in " + tiles.path,
                                 "",
                                 tiles.asked,
                                 advice,
                                 {}});
}

void OutputCheck::require() const {
    std::map<Identity, const File*> read, written;
    for (const File& input : inputs) read.emplace(input.identity, &input);
    for (const File& output : outputs) {
        if (const auto found = read.find(output.identity); found != read.end())
            refuseInput(output, *found->second);
        if (const auto [other, isNew] = written.emplace(output.identity, &output); !isNew)
            refuseSecond(output, *other->second);
        requireNotNamed(output);
    }
    std::map<Identity, const File*> kept;
    for (const File& folder : folders) kept.emplace(folder.identity, &folder);
    for (const auto* const list : {&inputs, &outputs})
        for (const File& file : *list)
            for (const Identity& place : {file.identity, file.folder})
                if (const auto found = kept.find(place); found != kept.end())
                    refusePlace(file, *found->second);
}

} // namespace workbench
