// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/SharedLibrary.h"

#include "workbench/platform/ElfFile.h"
#include "workbench/report/Failure.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

namespace workbench {
namespace {

/// The name behind "undefined symbol: " in the loader's text, up to a comma or the end; empty if there is
/// none.
std::string undefinedSymbol(std::string_view loaderText) {
    constexpr std::string_view Mark = "undefined symbol: ";
    const std::size_t at = loaderText.find(Mark);
    if (at == std::string_view::npos) return {};
    const std::string_view rest = loaderText.substr(at + Mark.size());
    return std::string(rest.substr(0, rest.find_first_of(", \n")));
}

[[noreturn]] void throwLoadFailure(const std::filesystem::path& path, const std::string& loaderText) {
    Diagnostic message;
    message.who = path.string();
    message.what = "cannot be loaded";
    const std::string name = undefinedSymbol(loaderText);
    if (name.empty()) {
        const std::string prefix = path.string() + ": ";
        message.got = loaderText.starts_with(prefix) ? loaderText.substr(prefix.size()) : loaderText;
        message.advice = "Install what the library needs, or build it again on this machine";
    } else {
        message.expected = "every symbol to be defined by this host or by the library's dependencies";
        message.got = "the undefined symbol \"" + demangle(name.c_str()) + '"';
        message.advice = "Build the plug-in again with the headers of this host";
        message.details.push_back(loaderText);
    }
    throw Failure(Fault::Plugin, std::move(message));
}

struct SegmentSearch {
    const link_map* map;
    std::vector<AddressRange> found;
};

int collectSegments(dl_phdr_info* info, std::size_t, void* data) {
    auto& search = *static_cast<SegmentSearch*>(data);
    if (info->dlpi_addr != search.map->l_addr || std::strcmp(info->dlpi_name, search.map->l_name) != 0)
        return 0;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = info->dlpi_phdr[i];
        if (segment.p_type != PT_LOAD) continue;
        const std::uintptr_t begin = info->dlpi_addr + segment.p_vaddr;
        search.found.push_back({begin, begin + segment.p_memsz});
    }
    return 1;
}

std::vector<AddressRange> segmentsOf(void* handle) {
    SegmentSearch search{nullptr, {}};
    if (::dlinfo(handle, RTLD_DI_LINKMAP, &search.map) != 0) return {};
    ::dl_iterate_phdr(collectSegments, &search);
    return search.found;
}

/// Whether the library has asked the loader never to remove it.
bool refusesRemoval(void* handle) {
    const link_map* map = nullptr;
    if (::dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0) return false;
    for (const ElfW(Dyn)* entry = map->l_ld; entry->d_tag != DT_NULL; ++entry)
        if (entry->d_tag == DT_FLAGS_1) return (entry->d_un.d_val & DF_1_NODELETE) != 0;
    return false;
}

} // namespace

std::string demangle(const char* name) {
    int status = -1;
    // Short names such as "i" are types to the demangler: only names of the C++ scheme are asked for.
    if (std::strncmp(name, "_Z", 2) != 0) return name;
    const std::unique_ptr<char, decltype(&std::free)> text(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), &std::free);
    return status == 0 ? text.get() : name;
}

SharedLibrary::SharedLibrary(const std::filesystem::path& path) : file(path) {
    if (!path.is_absolute())
        throw Failure(Fault::Plugin, {path.string(),
                                      "is not searched for",
                                      "an absolute path",
                                      "a relative one",
                                      "Name the library with its folder",
                                      {}});
    handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char* text = ::dlerror();
        throwLoadFailure(path, text == nullptr ? "unknown reason" : text);
    }
    segments = segmentsOf(handle);
    std::error_code ignored;
    canonicalFile = std::filesystem::canonical(path, ignored);
}

SharedLibrary::SharedLibrary(SharedLibrary&& other) noexcept
    : file(std::move(other.file)),
      canonicalFile(std::move(other.canonicalFile)),
      handle(std::exchange(other.handle, nullptr)),
      segments(std::exchange(other.segments, {})),
      unloading(std::move(other.unloading)) {}

SharedLibrary& SharedLibrary::operator=(SharedLibrary&& other) noexcept {
    SharedLibrary taken(std::move(other));
    std::swap(file, taken.file);
    std::swap(canonicalFile, taken.canonicalFile);
    std::swap(handle, taken.handle);
    std::swap(segments, taken.segments);
    std::swap(unloading, taken.unloading);
    return *this;
}

SharedLibrary::~SharedLibrary() {
    if (handle != nullptr) ::dlclose(handle);
}

void* SharedLibrary::symbol(const std::string& name) const noexcept {
    return handle == nullptr ? nullptr : ::dlsym(handle, name.c_str());
}

AddressRange SharedLibrary::range() const noexcept {
    if (segments.empty()) return {};
    AddressRange whole = segments.front();
    for (const AddressRange& segment : segments) {
        whole.begin = std::min(whole.begin, segment.begin);
        whole.end = std::max(whole.end, segment.end);
    }
    return whole;
}

bool SharedLibrary::contains(const void* address) const noexcept {
    return std::any_of(segments.begin(), segments.end(),
                       [address](const AddressRange& segment) { return segment.contains(address); });
}

Unloading SharedLibrary::close() {
    if (handle == nullptr) return unloading;
    ::dlclose(std::exchange(handle, nullptr));
    unloading = verdict();
    if (unloading.unmapped) segments.clear();
    return unloading;
}

Unloading SharedLibrary::verdict() const {
    void* const again = ::dlopen(file.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (again == nullptr) {
        if (!isMapped()) return {true, ""};
        return {false, "its file is still mapped into memory"};
    }
    const bool pinned = refusesRemoval(again);
    ::dlclose(again);
    if (pinned) return {false, "it is linked with -z nodelete"};
    const ElfFile contents = ElfFile::inspect(file);
    if (!contents.uniqueNames.empty())
        return {false,
                "it defines the unique symbol \"" + demangle(contents.uniqueNames.front().c_str()) + '"'};
    return {false, "another handle, a thread's destructor or another library still holds it"};
}

/// Asks the system instead of the loader: a line of the list reads "begin-end rwxp offset device inode path".
bool SharedLibrary::isMapped() const {
    const AddressRange former = range();
    std::ifstream mappings("/proc/self/maps");
    for (std::string line; std::getline(mappings, line);) {
        AddressRange mapping;
        const char* const lineEnd = line.data() + line.size();
        const auto first = std::from_chars(line.data(), lineEnd, mapping.begin, 16);
        if (first.ptr == lineEnd) continue;
        std::from_chars(first.ptr + 1, lineEnd, mapping.end, 16);
        const bool overlaps = mapping.begin < former.end && former.begin < mapping.end;
        if (overlaps && line.find(canonicalFile.string()) != std::string::npos) return true;
    }
    return false;
}

} // namespace workbench
