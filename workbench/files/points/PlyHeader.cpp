// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/points/Ply.h"
#include "workbench/files/points/TextCursor.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace workbench {
namespace {

/// Walks through the head line by line; the cursor is made anew for each, since data may follow that is no
/// text.
class HeaderReader {
public:
    HeaderReader(const std::filesystem::path& path, std::string_view start)
        : file(path),
          text(start),
          lineEnd(text.starts_with("ply\r") && !text.starts_with("ply\r\n") ? '\r' : '\n') {}

    PlyHeader read() {
        if (nextLine() != "ply") fail("ply in the first line");
        for (;;) {
            const std::string_view line = nextLine();
            TextCursor words(file, line, header.lines);
            std::string_view keyword;
            if (!words.nextLine() || !words.nextField(' ', keyword)) continue;
            if (keyword == "end_header") break;
            readLine(keyword, words);
        }
        if (!hasFormat) fail("a line \"format\"");
        header.size = at;
        return std::move(header);
    }

private:
    std::string_view nextLine() {
        const auto end = text.find(lineEnd, at);
        ++header.lines;
        if (end == std::string_view::npos) fail("a head that ends with the line end_header");
        std::string_view line = text.substr(at, end - at);
        at = end + 1;
        if (line.ends_with('\r')) line.remove_suffix(1);
        return line;
    }

    [[noreturn]] void fail(const std::string& expected) const {
        throw Failure(Fault::Input, {file.string() + ", line " + std::to_string(header.lines) + ", column 1",
                                     "this is no PLY file that can be read",
                                     expected,
                                     "",
                                     "",
                                     {}});
    }

    void readLine(std::string_view keyword, TextCursor& words) {
        if (keyword == "comment" || keyword == "obj_info") return;
        if (keyword == "format")
            readFormat(word(words));
        else if (keyword == "element")
            readElement(words);
        else if (keyword == "property" && !header.elements.empty())
            header.elements.back().properties.push_back(readProperty(words));
        else if (!header.elements.empty()) // before them, some programs write a comment without its keyword
            words.fail("format, element, property, comment or end_header", keyword);
    }

    static std::string_view word(TextCursor& words) {
        std::string_view result;
        if (!words.nextField(' ', result)) words.failAtEnd("another word", "the end of the line");
        return result;
    }

    void readFormat(std::string_view name) {
        constexpr std::string_view Names[] = {"ascii", "binary_little_endian", "binary_big_endian"};
        const auto found = std::find(std::begin(Names), std::end(Names), name);
        if (found == std::end(Names)) fail("ascii, binary_little_endian or binary_big_endian");
        header.format = static_cast<PlyFormat>(found - std::begin(Names));
        hasFormat = true;
    }

    void readElement(TextCursor& words) {
        PlyElement element{std::string(word(words)), 0, {}};
        const std::string_view count = word(words);
        const auto [end, error] = std::from_chars(count.data(), count.data() + count.size(), element.count);
        if (error != std::errc{} || end != count.data() + count.size())
            words.fail("a number of entries", count);
        header.elements.push_back(std::move(element));
    }

    static PlyType readType(TextCursor& words) {
        constexpr std::pair<std::string_view, PlyType> Names[] = {
            {"char", PlyType::Int8},     {"int8", PlyType::Int8},     {"uchar", PlyType::UInt8},
            {"uint8", PlyType::UInt8},   {"short", PlyType::Int16},   {"int16", PlyType::Int16},
            {"ushort", PlyType::UInt16}, {"uint16", PlyType::UInt16}, {"int", PlyType::Int32},
            {"int32", PlyType::Int32},   {"uint", PlyType::UInt32},   {"uint32", PlyType::UInt32},
            {"float", PlyType::Float},   {"float32", PlyType::Float}, {"double", PlyType::Double},
            {"float64", PlyType::Double}};
        const std::string_view name = word(words);
        for (const auto& [known, type] : Names)
            if (known == name) return type;
        words.fail("a type such as float or uchar", name);
    }

    static PlyProperty readProperty(TextCursor& words) {
        PlyProperty property;
        TextCursor ahead = words;
        property.isList = word(ahead) == "list";
        if (property.isList) {
            words = ahead;
            property.countType = readType(words);
        }
        property.type = readType(words);
        property.name = word(words);
        return property;
    }

    const std::filesystem::path& file;
    std::string_view text;
    char lineEnd;
    std::size_t at = 0;
    PlyHeader header;
    bool hasFormat = false;
};

} // namespace

bool PlyHeader::hasFaces() const {
    return std::any_of(elements.begin(), elements.end(), [](const PlyElement& element) {
        return element.count > 0 && (element.name == "face" || element.name == "tristrips");
    });
}

bool looksLikePly(std::string_view start) { return start.starts_with("ply\n") || start.starts_with("ply\r"); }

PlyHeader readPlyHeader(const std::filesystem::path& path, std::string_view text) {
    return HeaderReader(path, text.substr(0, LongestPlyHeader)).read();
}

} // namespace workbench
