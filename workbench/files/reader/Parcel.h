// SPDX-License-Identifier: Apache-2.0
// Numbers and texts in a row of bytes, for a process on the same machine.
#pragma once

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

namespace workbench {

/// What came is not what was agreed upon.
class BrokenParcel : public std::runtime_error {
public:
    BrokenParcel() : std::runtime_error("an answer that cannot be right") {}
};

/// Packs one thing after the other.
class ParcelWriter {
public:
    ParcelWriter& number(std::uint64_t value);
    ParcelWriter& integer(std::int64_t value) { return number(static_cast<std::uint64_t>(value)); }
    ParcelWriter& text(std::string_view value);

    [[nodiscard]] const std::string& bytes() const { return packed; }

private:
    std::string packed;
};

/// Unpacks in the same order. Nothing that is packed is believed: whatever does not fit throws BrokenParcel.
class ParcelReader {
public:
    /// The bytes are borrowed.
    explicit ParcelReader(std::string_view bytes) : left(bytes) {}

    [[nodiscard]] std::uint64_t number(std::uint64_t most = std::numeric_limits<std::uint64_t>::max());
    [[nodiscard]] int integer(int least = std::numeric_limits<int>::min(),
                              int most = std::numeric_limits<int>::max());
    [[nodiscard]] bool flag() { return number(1) == 1; }
    [[nodiscard]] std::string text();
    /// How many things follow, each of them `bytes` bytes long at least.
    [[nodiscard]] std::uint64_t count(std::size_t bytes) { return number(left.size() / bytes); }
    /// Nothing may be left.
    void end() const;

private:
    std::string_view left;
};

} // namespace workbench
