// SPDX-License-Identifier: Apache-2.0
#include "Files.h"

#include <unistd.h>

namespace bench {

Folder::Folder()
    : path(std::filesystem::temp_directory_path() / ("plime-bench-" + std::to_string(getpid()))) {
    std::filesystem::create_directories(path);
}

Folder::~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

} // namespace bench
