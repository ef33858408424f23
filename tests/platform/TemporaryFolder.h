// SPDX-License-Identifier: Apache-2.0
// A folder for the files of one test.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

/// Exists as long as the object does, with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "platform-test-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
        folder = name;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() { std::filesystem::remove_all(folder); }

    [[nodiscard]] std::filesystem::path path(const std::string& name) const { return folder / name; }

    /// Writes a file and returns its path.
    [[nodiscard]] std::filesystem::path file(const std::string& name, const std::vector<char>& bytes) const {
        std::ofstream stream(path(name), std::ios::binary | std::ios::trunc);
        stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        stream.close();
        if (!stream) throw std::runtime_error("temporary file not written");
        return path(name);
    }

private:
    std::filesystem::path folder;
};

inline std::vector<char> contentOf(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}
