// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/NamedFiles.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace workbench {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t BlockSize = std::size_t{1} << 20;
constexpr std::size_t LongestPath = 4096; // PATH_MAX of Linux

using Visit = std::function<void(const std::string& path)>;

/// What may stand before a path in a model: quotes and everything that is not text.
bool endsPath(char c) {
    return static_cast<unsigned char>(c) < ' ' ||
           std::string_view("\"'<>|*").find(c) != std::string_view::npos;
}

/// Every path that ends where a name ends: the longest, and those behind each of its blanks. Windows' strokes and the
/// blanks of addresses are put right.
void visitPathsTo(std::string_view before, const Visit& visit) {
    const auto from = std::find_if(before.rbegin(), before.rend(), endsPath).base();
    std::string path(from, before.end());
    std::ranges::replace(path, '\\', '/');
    for (std::size_t at = path.find("%20"); at != std::string::npos; at = path.find("%20", at))
        path.replace(at, 3, " ");
    for (std::size_t at = 0; at != std::string::npos; at = path.find(' ', at + 1))
        visit(path.substr(at == 0 ? 0 : at + 1));
}

/// Calls `visit` with every path in a file that ends with the text.
void visitPaths(const fs::path& file, const std::string& ending, const Visit& visit) {
    std::ifstream in(file, std::ios::binary);
    std::string text;
    std::vector<char> block(BlockSize);
    while (in) {
        in.read(block.data(), static_cast<std::streamsize>(block.size()));
        const std::size_t seen = text.size();
        text.append(block.data(), static_cast<std::size_t>(in.gcount()));
        const std::string_view all = text;
        for (std::size_t at = all.find(ending, seen - std::min(seen, ending.size() - 1));
             at != std::string_view::npos; at = all.find(ending, at + 1)) {
            const std::size_t end = at + ending.size();
            visitPathsTo(all.substr(end - std::min(end, LongestPath), std::min(end, LongestPath)), visit);
        }
        text.erase(0, text.size() - std::min(text.size(), LongestPath));
    }
}

bool namesDirectly(const fs::path& file, const fs::path& folder, const fs::path& other) {
    const std::string name = other.filename().string();
    std::string escaped;
    for (const char c : name) escaped += c == ' ' ? "%20" : std::string(1, c);
    bool found = false;
    const auto compare = [&](const std::string& path) {
        std::error_code problem;
        found = found || fs::equivalent(folder / path, other, problem);
    };
    visitPaths(file, name, compare);
    if (escaped != name) visitPaths(file, escaped, compare);
    return found;
}

} // namespace

bool namesFile(const fs::path& model, const fs::path& other) {
    const fs::path folder = model.has_parent_path() ? model.parent_path() : fs::path(".");
    if (namesDirectly(model, folder, other)) return true;
    bool found = false;
    visitPaths(model, ".mtl", [&](const std::string& path) {
        std::error_code problem;
        if (!found && fs::is_regular_file(folder / path, problem))
            found =
                fs::equivalent(folder / path, other, problem) || namesDirectly(folder / path, folder, other);
    });
    return found;
}

} // namespace workbench
