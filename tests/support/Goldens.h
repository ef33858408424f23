// SPDX-License-Identifier: Apache-2.0
// Comparison with stored texts, byte by byte.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace support {

/// The goldens of one test folder: <folder>/<Module>/<case>.<kind>.
class Goldens {
public:
    /// `actual` receives the texts that differ, under the same names.
    Goldens(std::filesystem::path folder, std::filesystem::path actual);

    /// Whether the golden of that name, "CMYKObjectDisplay/defaults.frag", has exactly these bytes. If not, the answer
    /// names module, case, the first line that differs, the actual text's path and how to bless it.
    [[nodiscard]] testing::AssertionResult match(const std::string& name, const std::string& text) const;

private:
    std::filesystem::path folder, actual;
};

/// The bytes of a file. Throws std::runtime_error when it cannot be read.
[[nodiscard]] std::string readFile(const std::filesystem::path& path);
/// Writes a file and the folders above it. Throws std::runtime_error when that fails.
void writeFile(const std::filesystem::path& path, const std::string& bytes);

} // namespace support
