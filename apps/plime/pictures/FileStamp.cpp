// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/FileStamp.h"

#include <set>
#include <system_error>

namespace workbench {

namespace fs = std::filesystem;

std::string fileStamp(const fs::path& file) {
    std::error_code problem;
    const fs::path path = fs::absolute(file, problem);
    std::string text = path.string();
    const auto size = fs::file_size(path, problem);
    if (!problem) text += ' ' + std::to_string(size);
    const auto changed = fs::last_write_time(path, problem);
    if (!problem) text += ' ' + std::to_string(changed.time_since_epoch().count());
    return text + '\n';
}

std::vector<fs::path> shaderFilesIn(const std::vector<fs::path>& folders) {
    std::vector<fs::path> all;
    for (const fs::path& folder : folders) {
        std::set<fs::path> files;
        std::error_code problem;
        for (fs::directory_iterator entry(folder, problem), end; !problem && entry != end;
             entry.increment(problem))
            if (entry->path().extension() == ".frag") files.insert(entry->path());
        all.insert(all.end(), files.begin(), files.end());
    }
    return all;
}

std::string shaderFileStamps(const std::vector<fs::path>& folders) {
    std::string text;
    for (const fs::path& file : shaderFilesIn(folders)) text += fileStamp(file);
    return text;
}

} // namespace workbench
