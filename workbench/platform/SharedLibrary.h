// SPDX-License-Identifier: Apache-2.0
// A loaded library: its symbols, its place in memory, and whether closing has really removed it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace workbench {

/// The readable form of a mangled C++ name; other names come back as they are.
[[nodiscard]] std::string demangle(const char* name);

/// Addresses from `begin` up to, but without, `end`.
struct AddressRange {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;

    [[nodiscard]] bool contains(const void* address) const noexcept {
        const auto value = reinterpret_cast<std::uintptr_t>(address);
        return value >= begin && value < end;
    }
};

/// What closing a library has led to.
struct Unloading {
    bool unmapped = false; ///< the library is gone from memory
    std::string reason; ///< otherwise why it is still there, as the end of a sentence: "it is linked with …"
};

/// Owns one handle of a library. Not safe for use by several threads at once; loading different libraries is.
class SharedLibrary {
public:
    /// Loads the library with all its symbols resolved at once and visible to nobody else; its static
    /// initialisers run. Look at it with ElfFile::inspect before: a broken file can end the process here.
    /// Throws Failure(Plugin) for a relative path and for whatever the loader refuses; undefined symbols are
    /// named.
    explicit SharedLibrary(const std::filesystem::path& path);

    SharedLibrary(SharedLibrary&& other) noexcept;
    SharedLibrary& operator=(SharedLibrary&& other) noexcept;
    ~SharedLibrary();

    [[nodiscard]] const std::filesystem::path& path() const noexcept { return file; }
    [[nodiscard]] bool isOpen() const noexcept { return handle != nullptr; }

    /// The address of a symbol that this library or one of its dependencies defines; null if there is none.
    [[nodiscard]] void* symbol(const std::string& name) const noexcept;

    /// The same as a function; the caller vouches for the type.
    template <typename Function>
    [[nodiscard]] Function* function(const std::string& name) const noexcept {
        return reinterpret_cast<Function*>(symbol(name));
    }

    /// From the library's lowest to its highest address; empty after it has been unmapped.
    [[nodiscard]] AddressRange range() const noexcept;

    /// Whether the address lies in one of the library's segments, for example the vtable of an object.
    [[nodiscard]] bool contains(const void* address) const noexcept;

    /// Gives up the handle and reports whether the library is really gone. A second call reports the first
    /// result.
    Unloading close();

private:
    [[nodiscard]] Unloading verdict() const;
    [[nodiscard]] bool isMapped() const;

    std::filesystem::path file;
    std::filesystem::path canonicalFile; ///< as the system names it in the list of mappings
    void* handle = nullptr;
    std::vector<AddressRange> segments;
    Unloading unloading;
};

} // namespace workbench
