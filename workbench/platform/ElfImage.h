// SPDX-License-Identifier: Apache-2.0
// The bytes of a library file, and where the loader puts them.
#pragma once

#include "workbench/platform/ElfFile.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <elf.h>

namespace workbench {

/// Leaves the checks of a library file; ElfFile::inspect turns it into its result.
struct ElfRefusal {
    ElfProblem problem;
    Diagnostic reason;
};

[[noreturn]] void refuse(ElfProblem problem, std::string what, std::string expected = {},
                         std::string got = {}, std::string advice = {});
/// "is damaged: WHAT".
[[noreturn]] void refuseDamaged(const std::string& what);
/// "12 bytes".
[[nodiscard]] std::string bytesText(std::uint64_t count);

/// The bytes of the file. Everything read from it is checked against its end; `what` is said if it lies
/// beyond.
class ElfImage {
public:
    explicit ElfImage(std::vector<std::byte> content) : bytes(std::move(content)) {}

    [[nodiscard]] bool empty() const { return bytes.empty(); }
    [[nodiscard]] bool startsWith(std::string_view mark) const;
    void require(std::uint64_t offset, std::uint64_t size, const char* what) const;

    template <typename T>
    [[nodiscard]] T at(std::uint64_t offset, const char* what) const {
        require(offset, sizeof(T), what);
        T value;
        std::memcpy(&value, bytes.data() + offset, sizeof(T));
        return value;
    }

    template <typename T>
    [[nodiscard]] std::vector<T> table(std::uint64_t offset, std::uint64_t count, const char* what) const {
        if (count > bytes.size() / sizeof(T)) refuseTooShort(what, "a longer file");
        require(offset, count * sizeof(T), what);
        std::vector<T> values(static_cast<std::size_t>(count));
        if (count != 0) std::memcpy(values.data(), bytes.data() + offset, values.size() * sizeof(T));
        return values;
    }

    /// The text at `offset` up to its zero byte, which must lie within `limit` bytes.
    [[nodiscard]] std::string text(std::uint64_t offset, std::uint64_t limit) const;

private:
    [[noreturn]] void refuseTooShort(const char* what, std::string expected) const;

    std::vector<std::byte> bytes;
};

/// The parts of the file that a loader maps, and where an address of the loaded library lies in the file.
class ElfSegments {
public:
    ElfSegments(const ElfImage& image, const Elf64_Ehdr& header);

    /// The place in the file of that many bytes; `what` is said if they are not all there.
    [[nodiscard]] std::uint64_t offsetOf(std::uint64_t address, std::uint64_t size, const char* what) const;
    /// All bytes of the file from `address` to the end of its segment.
    [[nodiscard]] std::uint64_t bytesFrom(std::uint64_t address) const;
    /// Whether that many bytes lie in one segment of the loaded library, which the library may write to.
    [[nodiscard]] bool isWritable(std::uint64_t address, std::uint64_t size) const;
    /// Whether the address lies in the loaded library, or just behind it.
    [[nodiscard]] bool isInside(std::uint64_t address) const;
    [[nodiscard]] const Elf64_Phdr& dynamic() const;

private:
    std::vector<Elf64_Phdr> all;
};

} // namespace workbench
