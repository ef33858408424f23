// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/metadata/Iptc.h"

#include "workbench/files/metadata/Entries.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace workbench {
namespace {

using namespace std::string_view_literals;

struct Field {
    std::uint8_t number;
    std::string_view name;
};
constexpr Field Fields[] = {
    {5, "IPTC:ObjectName"},
    {7, "IPTC:EditStatus"},
    {10, "IPTC:Urgency"},
    {12, "IPTC:SubjectReference"},
    {15, "IPTC:Category"},
    {20, "IPTC:SuppCategory"},
    {25, "Keywords"},
    {26, "IPTC:ContentLocationCode"},
    {27, "IPTC:ContentLocationName"},
    {40, "IPTC:Instructions"},
    {55, "IPTC:DateCreated"},
    {60, "IPTC:TimeCreated"},
    {62, "IPTC:DigitalCreationDate"},
    {63, "IPTC:DigitalCreationTime"},
    {65, "IPTC:OriginatingProgram"},
    {70, "IPTC:ProgramVersion"},
    {80, "IPTC:Creator"},
    {85, "IPTC:AuthorsPosition"},
    {90, "IPTC:City"},
    {92, "IPTC:Sublocation"},
    {95, "IPTC:State"},
    {100, "IPTC:CountryCode"},
    {101, "IPTC:Country"},
    {103, "IPTC:TransmissionReference"},
    {105, "IPTC:Headline"},
    {110, "IPTC:Provider"},
    {115, "IPTC:Source"},
    {116, "IPTC:CopyrightNotice"},
    {118, "IPTC:Contact"},
    {120, "IPTC:Caption"},
    {122, "IPTC:CaptionWriter"},
};
constexpr std::uint8_t KeywordsNumber = 25;
constexpr std::string_view Separator = "; ";

/// A Photoshop block is its name and resources: mark, number, an empty name, length, data.
constexpr std::string_view BlockName = "Photoshop 3.0\0"sv;
constexpr std::string_view ResourceMark = "8BIM\x04\x04"sv;
/// Of one field, and of all in a segment with the heads before them.
constexpr std::size_t LongestField = 32767, MostBytes = 65000;

std::size_t number(std::string_view bytes, std::size_t at, std::size_t size) {
    std::size_t value = 0;
    for (std::size_t i = at; i < at + size && i < bytes.size(); ++i)
        value = value << 8U | static_cast<unsigned char>(bytes[i]);
    return value;
}

std::string bigEndian(std::size_t value, std::size_t size) {
    std::string bytes;
    for (std::size_t i = size; i-- > 0;) bytes += static_cast<char>(value >> (8 * i) & 0xffU);
    return bytes;
}

/// The data of the resource with the fields; empty where there is none.
std::string_view fieldsOf(std::string_view block) {
    if (!block.starts_with(BlockName)) return {};
    for (std::size_t at = BlockName.size(); at + 12 <= block.size();) {
        if (block.substr(at, 4) != "8BIM") return {};
        const std::size_t name = 1 + number(block, at + 6, 1), data = at + 6 + name + name % 2 + 4;
        if (data > block.size()) return {};
        const std::size_t size = number(block, data - 4, 4);
        if (block.substr(at, ResourceMark.size()) == ResourceMark) return block.substr(data, size);
        at = data + size + size % 2;
    }
    return {};
}

const Field* fieldNamed(std::string_view name) {
    const auto* found =
        std::find_if(std::begin(Fields), std::end(Fields), [&](auto& f) { return f.name == name; });
    return found == std::end(Fields) ? nullptr : found;
}

void appendField(std::uint8_t field, std::string_view text, std::vector<Metadatum>& metadata) {
    const auto* known =
        std::find_if(std::begin(Fields), std::end(Fields), [&](auto& f) { return f.number == field; });
    if (known == std::end(Fields)) return;
    const auto there =
        std::find_if(metadata.begin(), metadata.end(), [&](auto& e) { return e.name == known->name; });
    if (there == metadata.end())
        metadata.push_back(textEntry(known->name, std::string(text)));
    else if (field == KeywordsNumber)
        there->text.append(Separator).append(text);
}

std::vector<std::string_view> partsOf(std::string_view text, std::uint8_t field) {
    std::vector<std::string_view> parts;
    for (std::size_t end = 0;
         field == KeywordsNumber && (end = text.find(Separator)) != std::string_view::npos;
         text.remove_prefix(end + Separator.size()))
        parts.push_back(text.substr(0, end));
    parts.push_back(text);
    return parts;
}

} // namespace

void appendIptc(std::string_view block, std::vector<Metadatum>& metadata) {
    const std::string_view fields = fieldsOf(block);
    for (std::size_t at = 0; at + 5 <= fields.size() && fields[at] == '\x1c';) {
        const std::size_t length = number(fields, at + 3, 2); // above 32767 it is the length of a length
        if (length > LongestField || length > fields.size() - at - 5) return;
        if (fields[at + 1] == 2)
            appendField(static_cast<std::uint8_t>(fields[at + 2]), fields.substr(at + 5, length), metadata);
        at += 5 + length;
    }
}

bool isIptcField(const Metadatum& entry) { return entry.type == "string" && fieldNamed(entry.name); }

std::string iptcBlock(const std::vector<const Metadatum*>& entries, std::vector<std::string>& dropped) {
    std::string fields;
    for (const Metadatum* entry : entries) {
        const std::uint8_t field = fieldNamed(entry->name)->number;
        std::string added;
        bool fits = true;
        for (const std::string_view part : partsOf(entry->text, field)) {
            fits = fits && part.size() <= LongestField;
            added.append("\x1c\x02").append(1, static_cast<char>(field));
            added.append(bigEndian(part.size(), 2)).append(part);
        }
        if (fits && fields.size() + added.size() <= MostBytes)
            fields += added;
        else
            dropped.push_back(entry->name);
    }
    if (fields.empty()) return "";
    // As UTF-8, which record 1 says, and record 2 in its fourth version.
    fields.insert(0, "\x1c\x01\x5a\0\x03\x1b%G\x1c\x02\0\0\x02\0\x04"sv);
    std::string block(BlockName);
    block.append(ResourceMark).append(2, '\0').append(bigEndian(fields.size(), 4)).append(fields);
    if (fields.size() % 2 != 0) block += '\0';
    return block;
}

} // namespace workbench
