// SPDX-License-Identifier: Apache-2.0
#include "tests/support/Goldens.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace support {
namespace {

namespace fs = std::filesystem;

/// Line number, counted from 1, and the line itself with its control characters visible.
struct Place {
    std::ptrdiff_t line;
    std::string text;
};

Place placeOf(const std::string& text, std::size_t offset) {
    const auto position = text.begin() + static_cast<std::ptrdiff_t>(std::min(offset, text.size()));
    const std::size_t before = offset == 0 ? std::string::npos : text.rfind('\n', offset - 1);
    const std::size_t begin = before == std::string::npos ? 0 : before + 1;
    const std::string line =
        begin < text.size() ? text.substr(begin, text.find('\n', begin) - begin) : "(end of text)";
    return {std::count(text.begin(), position, '\n') + 1, testing::PrintToString(line)};
}

std::string differenceOf(const std::string& expected, const std::string& got) {
    const auto [first, second] = std::mismatch(expected.begin(), expected.end(), got.begin(), got.end());
    const auto offset = static_cast<std::size_t>(first - expected.begin());
    const Place wanted = placeOf(expected, offset), found = placeOf(got, offset);
    return "byte " + testing::PrintToString(offset) + ", line " + testing::PrintToString(wanted.line) +
           "\n  expected " + wanted.text + "\n  got      " + found.text;
}

} // namespace

Goldens::Goldens(fs::path folder, fs::path actual) : folder(std::move(folder)), actual(std::move(actual)) {}

testing::AssertionResult Goldens::match(const std::string& name, const std::string& text) const {
    const fs::path golden = folder / name, written = actual / name;
    const bool present = fs::exists(golden);
    const std::string expected = present ? readFile(golden) : "";
    fs::remove(written);
    if (present && expected == text) return testing::AssertionSuccess();

    writeFile(written, text);
    const fs::path path(name);
    const std::string test = folder.parent_path().filename().string();
    return testing::AssertionFailure()
           << "module " << path.parent_path().string() << ", case " << path.stem().string() << ": "
           << (present ? "differs from its golden at " + differenceOf(expected, text) : "has no golden yet")
           << "\n  golden   " << golden.string() << "\n  actual   " << written.string()
           << "\n  If the new text is right: scripts/bless " << test << ' ' << name;
}

std::string readFile(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (!stream) throw std::runtime_error("cannot be read: " + path.string());
    return bytes;
}

void writeFile(const fs::path& path, const std::string& bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    stream << bytes;
    stream.close();
    if (!stream) throw std::runtime_error("cannot be written: " + path.string());
}

} // namespace support
