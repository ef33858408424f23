// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/ShaderFiles.h"

#include "workbench/gl/dialect/TextScan.h"
#include "workbench/platform/TextFile.h"
#include "workbench/report/Failure.h"

#include "host/core/VActionNotifier.h"
#include "host/gl/Programmable.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <mutex>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

namespace workbench {
namespace {

namespace fs = std::filesystem;

struct Winner {
    fs::path path;
    std::string text;
};

struct Files {
    std::mutex mutex;
    std::vector<fs::path> folders;
    std::map<std::string, Winner> winners;    ///< by the name that the module asks for
    std::map<std::string, std::string> given; ///< texts that modules got last, by the names they asked for
    std::set<std::string> told;               ///< warnings
};

Files& files() {
    static Files all;
    return all;
}

/// What a file gives: a text, or why it counts as absent. A file that is not there has neither.
struct Reading {
    std::optional<std::string> text;
    std::string problem;
};

Reading readShaderFile(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) return {};
    if (!fs::is_regular_file(status)) return {std::nullopt, "is no regular file"};
    std::ifstream stream(path, std::ios::binary);
    std::string text(LargestShaderFile + 1, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (!stream && !stream.eof()) return {std::nullopt, "cannot be read"};
    text.resize(static_cast<std::size_t>(stream.gcount()));
    if (text.starts_with(ByteOrderMark)) text.erase(0, ByteOrderMark.size());
    if (text.empty()) return {std::nullopt, "is empty"};
    if (text.size() > LargestShaderFile) return {std::nullopt, "is larger than 64 KiB"};
    if (text.find('\0') != std::string::npos) return {std::nullopt, "is no text"};
    return {std::move(text), ""};
}

void requireNoVersion(const fs::path& path, const std::string& text) {
    const int version = scanText(text).version;
    if (version == 0) return;
    throw Failure(Fault::Shader, {path.string(),
                                  "cannot replace a module's shader",
                                  "a text without #version line",
                                  "#version " + std::to_string(version),
                                  "Remove that line; the module writes its own in front",
                                  {}});
}

/// What looking for a file has led to.
struct Search {
    std::optional<Winner> winner;
    std::vector<std::string> warnings; ///< about files that are not used
};

/// Takes the first usable file of that name. Names with folders in them are none.
Search search(const std::vector<fs::path>& folders, const std::string& name) {
    Search result;
    if (name.empty() || fs::path(name).filename() != name) return result;
    for (const fs::path& folder : folders) {
        const fs::path path = folder / name;
        Reading reading = readShaderFile(path);
        if (reading.text) {
            result.winner = Winner{path, std::move(*reading.text)};
            break;
        }
        if (!reading.problem.empty())
            result.warnings.push_back(path.string() + ' ' + reading.problem + " and is not used as a shader");
    }
    return result;
}

std::vector<fs::path> currentFolders() {
    Files& all = files();
    const std::lock_guard lock(all.mutex);
    return all.folders;
}

/// Gives back the warnings that are new. They are told outside of the lock: who hears them may ask for files.
std::vector<std::string> remember(const std::string& name, const Search& result,
                                  const std::string& builtInText) {
    Files& all = files();
    const std::lock_guard lock(all.mutex);
    all.given[name] = result.winner ? result.winner->text : builtInText;
    if (result.winner)
        all.winners[name] = *result.winner;
    else
        all.winners.erase(name);
    std::vector<std::string> news;
    for (const std::string& warning : result.warnings)
        if (all.told.insert(warning).second) news.push_back(warning);
    return news;
}

} // namespace

void setShaderFolders(const std::vector<fs::path>& folders) {
    Files& all = files();
    const std::lock_guard lock(all.mutex);
    all.folders.clear();
    all.winners.clear();
    all.told.clear();
    for (const fs::path& folder : folders)
        if (folder.is_absolute()) all.folders.push_back(folder);
}

std::vector<fs::path> environmentShaderFolders() {
    std::vector<fs::path> folders;
    const auto variable = [](const char* name) {
        const char* value = std::getenv(name);
        return std::string_view(value ? value : "");
    };
    std::string_view list = variable("KROD_SHADER_PATH");
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(':'), list.size());
        const fs::path folder(list.substr(0, end));
        if (folder.is_absolute()) folders.push_back(folder);
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    fs::path data(variable("XDG_DATA_HOME"));
    if (!data.is_absolute()) data = fs::path(variable("HOME")) / ".local" / "share";
    if (data.is_absolute()) folders.push_back(data / "krod" / "shaders");
    return folders;
}

std::vector<ShaderFile> usedShaderFiles() {
    Files& all = files();
    const std::lock_guard lock(all.mutex);
    std::vector<ShaderFile> used;
    for (const auto& [name, winner] : all.winners) used.push_back({name, winner.path});
    return used;
}

std::vector<std::string> askedShaderFiles() {
    Files& all = files();
    const std::lock_guard lock(all.mutex);
    std::vector<std::string> names;
    for (const auto& [name, text] : all.given) names.push_back(name);
    return names;
}

std::optional<ReplaceablePart> findReplaceablePart(const std::string& text) {
    Files& all = files();
    const std::lock_guard lock(all.mutex);
    for (const auto& [name, given] : all.given)
        if (!given.empty() && text.ends_with(given)) return ReplaceablePart{name, text.size() - given.size()};
    return std::nullopt;
}

std::optional<ShaderFileInText> findShaderFile(const std::string& text) {
    Files& all = files();
    const std::lock_guard lock(all.mutex);
    for (const auto& [name, winner] : all.winners)
        if (text.ends_with(winner.text))
            return ShaderFileInText{winner.path, text.size() - winner.text.size()};
    return std::nullopt;
}

} // namespace workbench

std::string krod::Programmable::OptionalFileRead(const std::string& fileName,
                                                 const std::string& builtInText) {
    const workbench::Search result = workbench::search(workbench::currentFolders(), fileName);
    for (const std::string& warning : workbench::remember(fileName, result, builtInText))
        VActionNotifier::Warning(warning);
    if (!result.winner) return builtInText;
    workbench::requireNoVersion(result.winner->path, result.winner->text);
    return result.winner->text;
}
