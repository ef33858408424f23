// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/OutputPattern.h"

#include "workbench/report/Failure.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace workbench {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view Stem = "stem", Extension = "ext";

/// The word of letters in braces that the text begins with, without the braces; else nothing.
std::string_view placeholderAt(std::string_view text) {
    if (!text.starts_with('{')) return {};
    const std::size_t end = text.find('}');
    if (end == std::string_view::npos) return {};
    const std::string_view word = text.substr(1, end - 1);
    const bool isWord = std::ranges::all_of(
        word, [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; });
    return isWord ? word : std::string_view{};
}

} // namespace

void requireKnownPlaceholders(std::string_view pattern, const std::vector<std::string_view>& known,
                              const std::string& expected) {
    for (; !pattern.empty(); pattern.remove_prefix(1)) {
        const std::string_view word = placeholderAt(pattern);
        if (word.empty() || std::ranges::find(known, word) != known.end()) continue;
        throw Failure(Fault::Usage,
                      {"-o", "has an unknown placeholder", expected, '{' + std::string(word) + '}', "", {}});
    }
}

OutputPattern::OutputPattern(std::string pattern) : text(std::move(pattern)) {
    for (std::string_view rest = text; !rest.empty(); rest.remove_prefix(1)) {
        const std::string_view word = placeholderAt(rest);
        takesStem |= word == Stem;
        takesExtension |= word == Extension;
    }
    requireKnownPlaceholders(text, {Stem, Extension},
                             "{stem}, the name of the input without its extension, or {ext}, its extension");
}

std::string OutputPattern::outputFor(const std::string& input) const {
    const std::string stem = fs::path(input).stem().string();
    std::string extension = fs::path(input).extension().string();
    if (extension.starts_with('.')) extension.erase(0, 1);
    std::string output;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view word = placeholderAt(rest);
        output += word == Stem ? stem : word == Extension ? extension : std::string(1, rest.front());
        rest.remove_prefix(word.empty() ? 1 : word.size() + 2);
    }
    return output;
}

std::vector<PictureJob> planOutputs(const std::vector<std::string>& inputs, const OutputPattern& pattern) {
    std::vector<PictureJob> jobs;
    for (const std::string& input : inputs) {
        if (input.empty())
            throw Failure(
                Fault::Usage,
                {"process", "has an input without a name", "the path of a picture", "\"\"", "", {}});
        jobs.push_back({input, pattern.outputFor(input)});
    }
    return jobs;
}

void requireFolders(const std::vector<PictureJob>& jobs) {
    for (const PictureJob& job : jobs) {
        const fs::path folder = fs::path(job.output).parent_path();
        std::error_code error;
        if (folder.empty() || fs::is_directory(folder, error)) continue;
        throw Failure(Fault::Output,
                      {job.output,
                       "cannot be written, because the folder " + folder.string() + " does not exist",
                       "",
                       "",
                       "Create it first, or correct the path",
                       {}});
    }
}

} // namespace workbench
