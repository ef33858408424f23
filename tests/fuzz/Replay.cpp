// SPDX-License-Identifier: Apache-2.0
// A fuzz target as an ordinary program: runs the files given, or those of the folders given, once each.
#include "Target.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

std::vector<std::filesystem::path> filesOf(const std::filesystem::path& path) {
    if (!std::filesystem::is_directory(path)) return {path};
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(path)) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

/// The name is told first, so that the last one told is the one that ends the process.
void run(const std::filesystem::path& file) {
    std::fprintf(stderr, "%s\n", file.c_str());
    std::ifstream in(file, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
    fuzz::require(in.good() || in.eof(), "the input can be read");
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

} // namespace

int main(int count, char** arguments) {
    std::size_t inputs = 0;
    for (int i = 1; i < count; ++i)
        for (const auto& file : filesOf(arguments[i])) {
            run(file);
            ++inputs;
        }
    fuzz::require(inputs > 0, "there is at least one input");
}
