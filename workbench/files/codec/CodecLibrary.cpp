// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/codec/CodecLibrary.h"

#include "workbench/platform/ProcessLimits.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>

#include <dlfcn.h>

namespace workbench {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> foldersFromEnvironment(const std::string& list) {
    std::vector<fs::path> folders;
    for (std::size_t begin = 0; begin <= list.size();) {
        const std::size_t end = std::min(list.find(':', begin), list.size());
        if (end > begin) folders.emplace_back(list.substr(begin, end - begin));
        begin = end + 1;
    }
    return folders;
}

std::vector<fs::path> codecFolders() {
    if (const char* list = std::getenv("KROD_CODEC_PATH"); list && *list) return foldersFromEnvironment(list);
    Dl_info info{};
    if (::dladdr(reinterpret_cast<void*>(&codecFunction), &info) == 0 || !info.dli_fname) return {};
    std::error_code ignored;
    const fs::path folder = fs::absolute(info.dli_fname, ignored).parent_path();
    return {folder, folder / "krod", folder / "../lib", folder / "../lib/krod"};
}

} // namespace

void* codecFunction(const std::string& file, const char* function, const std::string& package,
                    std::uint64_t addresses) {
    constexpr std::uint64_t Files = 8;
    requireRoomFor(file, addresses, Files);
    std::vector<std::string> tried;
    for (const auto& folder : codecFolders()) {
        const fs::path candidate = (folder / file).lexically_normal();
        std::error_code ignored;
        if (!fs::exists(candidate, ignored)) {
            tried.push_back(candidate.string() + ": not there");
            continue;
        }
        void* library = ::dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (void* found = library ? ::dlsym(library, function) : nullptr) return found;
        const char* reason = ::dlerror();
        tried.push_back(candidate.string() + ": " + (reason ? reason : "no reason given"));
    }
    throw Failure(Fault::Input, {file, "this codec library cannot be opened", "", "",
                                 "Install the package " + package +
                                     ", which it needs, or name the library's folder in KROD_CODEC_PATH",
                                 std::move(tried)});
}

} // namespace workbench
