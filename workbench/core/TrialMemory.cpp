// SPDX-License-Identifier: Apache-2.0
#include "workbench/core/TrialMemory.h"

#include "workbench/platform/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <utility>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace workbench {
namespace {

constexpr std::string_view FirstLine = "krod plug-in trials 1\n";
constexpr std::size_t MostKeys = 100;
constexpr std::size_t MostBytes = std::size_t{1} << 20;
constexpr int NumbersInFront = 5; // of a key: device, inode, size, and the times of content and status

std::int64_t nanoseconds(const timespec& time) {
    constexpr std::int64_t PerSecond = 1000000000;
    return std::int64_t{time.tv_sec} * PerSecond + time.tv_nsec;
}

/// What the system knows of a file; empty if there is none.
std::string factsOf(const char* path) {
    struct stat status {};
    if (::stat(path, &status) != 0) return {};
    return std::to_string(status.st_dev) + ' ' + std::to_string(status.st_ino) + ' ' +
           std::to_string(status.st_size) + ' ' + std::to_string(nanoseconds(status.st_mtim)) + ' ' +
           std::to_string(nanoseconds(status.st_ctim)) + ' ';
}

/// The library, or program, that this function is part of.
const char* ownFile() {
    Dl_info library{};
    return ::dladdr(reinterpret_cast<const void*>(&ownFile), &library) == 0 ? "" : library.dli_fname;
}

/// A number for a text: FNV-1a of 64 bits, https://www.rfc-editor.org/rfc/rfc9923.
std::string numberOf(std::string_view text) {
    std::uint64_t number = 0xcbf29ce484222325U;
    for (const char letter : text) number = (number ^ static_cast<unsigned char>(letter)) * 0x100000001b3U;
    return std::to_string(number);
}

/// Where the path begins in a key; npos if it is none.
std::size_t pathIn(std::string_view key) {
    std::size_t at = 0;
    for (int i = 0; i <= NumbersInFront; ++i) {
        std::uint64_t number = 0;
        const auto end = std::from_chars(key.data() + at, key.data() + key.size(), number);
        if (end.ec != std::errc() || end.ptr == key.data() + key.size() || *end.ptr != ' ')
            return std::string_view::npos;
        at = static_cast<std::size_t>(end.ptr - key.data()) + 1;
    }
    return at < key.size() && key[at] == '/' ? at : std::string_view::npos;
}

/// A file of this user alone, which no one else can have written; its size, or 0 if it is none.
std::size_t trustedSize(int file) {
    struct stat status {};
    const bool own = ::fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == ::geteuid() &&
                     (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
    const auto size = static_cast<std::size_t>(own ? status.st_size : 0);
    return size <= MostBytes ? size : 0;
}

std::string contentOf(const std::filesystem::path& path) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (file.get() < 0) return {};
    std::string content(trustedSize(file.get()), '\0');
    std::size_t size = 0;
    while (size < content.size()) {
        const ssize_t got = ::read(file.get(), content.data() + size, content.size() - size);
        if (got <= 0) break;
        size += static_cast<std::size_t>(got);
    }
    content.resize(size);
    return content;
}

bool writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(file, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

} // namespace

TrialMemory::TrialMemory(std::filesystem::path file, const std::filesystem::path& prober)
    : file(std::move(file)), mark(numberOf(factsOf(prober.c_str()) + factsOf(ownFile()))) {}

TrialMemory::Key TrialMemory::keyOf(const std::string& path) const {
    const std::string facts = factsOf(path.c_str());
    if (file.empty() || facts.empty() || path.find('\n') != std::string::npos) return {};
    return facts + mark + ' ' + path;
}

bool TrialMemory::knows(const Key& key) {
    if (key.empty()) return false;
    if (!known) known = read();
    return std::find(known->begin(), known->end(), key) != known->end();
}

void TrialMemory::keep(const Key& key) {
    if (key.empty()) return;
    std::vector<Key> keys = read(); // another program may have written it meanwhile
    const std::string_view path = std::string_view(key).substr(pathIn(key));
    std::erase_if(keys,
                  [path](const Key& other) { return std::string_view(other).substr(pathIn(other)) == path; });
    if (keys.size() >= MostKeys)
        keys.erase(keys.begin(), keys.end() - static_cast<std::ptrdiff_t>(MostKeys - 1));
    keys.push_back(key);
    write(keys);
    known = std::move(keys);
}

std::vector<TrialMemory::Key> TrialMemory::read() const {
    const std::string content = contentOf(file);
    std::string_view rest = content;
    if (!rest.starts_with(FirstLine)) return {};
    std::vector<Key> keys;
    rest.remove_prefix(FirstLine.size());
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        if (end == std::string_view::npos || pathIn(rest.substr(0, end)) == std::string_view::npos) return {};
        keys.emplace_back(rest.substr(0, end));
        rest.remove_prefix(end + 1);
    }
    return keys;
}

void TrialMemory::write(const std::vector<Key>& keys) const {
    std::string content(FirstLine);
    for (const Key& key : keys) content += key + '\n';
    std::error_code ignored;
    const std::filesystem::path folder = file.parent_path();
    std::filesystem::create_directories(folder.parent_path(), ignored);
    ::mkdir(folder.c_str(), S_IRWXU);
    std::string fresh = file.string() + ".XXXXXX";
    const Descriptor descriptor(::mkostemp(fresh.data(), O_CLOEXEC));
    if (descriptor.get() < 0) return;
    const bool whole = writeAll(descriptor.get(), content);
    if (!whole || ::rename(fresh.c_str(), file.c_str()) != 0) ::unlink(fresh.c_str());
}

} // namespace workbench
