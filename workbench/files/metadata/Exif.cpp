// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/metadata/Exif.h"

#include "workbench/files/metadata/Entries.h"
#include "workbench/files/metadata/ExifTags.h"

#include <libexif/exif-data.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <utility>

namespace workbench {
namespace {

using namespace std::string_view_literals;

/// Before the directory in JPEG files, and wherever libexif reads or writes one.
constexpr std::string_view Prefix = "Exif\0\0"sv;
/// Of all fields together; a JPEG segment holds 65,533 bytes with the heads of the directories.
constexpr std::size_t MostBytes = 60000;
/// Before the text of a user's comment: ASCII, as its eight bytes say.
constexpr std::string_view AsciiMark = "ASCII\0\0\0"sv;

struct Unref {
    void operator()(ExifData* data) const { exif_data_unref(data); }
};
using Exif = std::unique_ptr<ExifData, Unref>;

Exif emptyExif() {
    Exif exif(exif_data_new());
    if (!exif) throw std::bad_alloc();
    for (const ExifDataOption option :
         {EXIF_DATA_OPTION_IGNORE_UNKNOWN_TAGS, EXIF_DATA_OPTION_FOLLOW_SPECIFICATION,
          EXIF_DATA_OPTION_DONT_CHANGE_MAKER_NOTE})
        exif_data_unset_option(exif.get(), option);
    return exif;
}

std::string withoutBlanks(std::string text) {
    text.resize(std::min(text.find('\0'), text.size()));
    while (text.ends_with(' ')) text.pop_back();
    return text;
}

std::int32_t wholeNumber(const ExifEntry& entry, ExifByteOrder order, const unsigned char* at) {
    switch (entry.format) {
    case EXIF_FORMAT_SHORT:
        return exif_get_short(at, order);
    case EXIF_FORMAT_SSHORT:
        return exif_get_sshort(at, order);
    case EXIF_FORMAT_LONG:
        return static_cast<std::int32_t>(
            std::min<ExifLong>(exif_get_long(at, order), std::numeric_limits<std::int32_t>::max()));
    case EXIF_FORMAT_SLONG:
        return exif_get_slong(at, order);
    default:
        return *at;
    }
}

/// 0/0 stands for an unknown value.
float realNumber(const ExifEntry& entry, ExifByteOrder order, const unsigned char* at) {
    double over = 0, under = 0;
    if (entry.format == EXIF_FORMAT_SRATIONAL) {
        const ExifSRational value = exif_get_srational(at, order);
        over = value.numerator;
        under = value.denominator;
    } else {
        const ExifRational value = exif_get_rational(at, order);
        over = value.numerator;
        under = value.denominator;
    }
    return static_cast<float>(under == 0 ? 0 : over / under);
}

/// Bytes without a meaning of their own; a few fields write their text in these.
Metadatum entryOfBytes(const std::string& name, ExifTag tag, std::string bytes) {
    if (isVersion(tag)) return textEntry(name, withoutBlanks(std::move(bytes)));
    if (tag == EXIF_TAG_USER_COMMENT && bytes.starts_with(AsciiMark))
        return textEntry(name, withoutBlanks(bytes.substr(AsciiMark.size())));
    return bytesEntry(name, std::move(bytes));
}

Metadatum entryOf(const std::string& name, const ExifEntry& entry, ExifByteOrder order) {
    const std::size_t size = exif_format_get_size(entry.format);
    const std::string bytes(reinterpret_cast<const char*>(entry.data), entry.size);
    if (entry.format == EXIF_FORMAT_ASCII) return textEntry(name, withoutBlanks(bytes));
    if (size == 1) return entryOfBytes(name, entry.tag, bytes);
    std::vector<std::int32_t> whole;
    std::vector<float> real;
    for (std::size_t at = 0; size > 0 && at + size <= entry.size; at += size) {
        if (size == 8)
            real.push_back(realNumber(entry, order, entry.data + at));
        else
            whole.push_back(wholeNumber(entry, order, entry.data + at));
    }
    return size == 8 ? floatEntry(name, real) : intEntry(name, whole);
}

struct Found {
    std::vector<Metadatum>& metadata;
    ExifByteOrder order;
};

void appendEntry(ExifEntry* entry, void* user) {
    auto& found = *static_cast<Found*>(user);
    const std::string name = fieldName(entry->tag, exif_entry_get_ifd(entry));
    if (name.empty() || !entry->data || entry->size == 0) return;
    Metadatum read = entryOf(name, *entry, found.order);
    if (name == "ResolutionUnit") read = textEntry(name, resolutionUnit(numberIn(&read).value_or(1)));
    const auto isThere = [&](const Metadatum& other) { return other.name == name; };
    if (std::none_of(found.metadata.begin(), found.metadata.end(), isThere))
        found.metadata.push_back(std::move(read));
}

/// The fraction with the smallest denominator that is the float.
std::pair<std::int64_t, std::int64_t> fractionOf(double value) {
    constexpr double Most = 2147483647;
    const double wanted = std::min(std::abs(value), Most);
    double rest = wanted;
    std::int64_t over = 1, lastOver = 0, under = 0, lastUnder = 1;
    for (int step = 0; step < 40; ++step) {
        const double whole = std::floor(rest);
        const double nextOver = whole * static_cast<double>(over) + static_cast<double>(lastOver);
        const double nextUnder = whole * static_cast<double>(under) + static_cast<double>(lastUnder);
        if (nextOver > Most || nextUnder > Most) break;
        lastOver = std::exchange(over, static_cast<std::int64_t>(nextOver));
        lastUnder = std::exchange(under, static_cast<std::int64_t>(nextUnder));
        if (static_cast<float>(nextOver / nextUnder) == static_cast<float>(wanted) || rest == whole) break;
        rest = 1 / (rest - whole);
    }
    if (under == 0) return {0, 1};
    return {value < 0 ? -over : over, under};
}

/// A field's bytes as they are stored, little-endian.
struct Field {
    ExifFormat format = EXIF_FORMAT_UNDEFINED;
    std::size_t count = 0;
    std::string bytes;

    void appendWord(std::int64_t value, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xff);
    }
};

template <typename Number>
std::vector<double> numbersIn(const std::string& bytes) {
    std::vector<double> numbers;
    for (std::size_t at = 0; at + sizeof(Number) <= bytes.size(); at += sizeof(Number)) {
        Number value;
        std::memcpy(&value, bytes.data() + at, sizeof value);
        numbers.push_back(static_cast<double>(value));
    }
    return numbers;
}

Field fieldOfText(const std::string& text, ExifTag tag) {
    Field field;
    if (tag == EXIF_TAG_USER_COMMENT)
        field.bytes = std::string(AsciiMark) + text;
    else if (isVersion(tag))
        field.bytes = text;
    else {
        field.format = EXIF_FORMAT_ASCII;
        field.bytes = text + '\0';
    }
    field.count = field.bytes.size();
    return field;
}

Field fieldOfReals(const std::vector<double>& values, ExifTag tag) {
    const bool isSigned =
        isSignedRational(tag) || std::any_of(values.begin(), values.end(), [](double v) { return v < 0; });
    Field field{isSigned ? EXIF_FORMAT_SRATIONAL : EXIF_FORMAT_RATIONAL, values.size(), {}};
    for (const double value : values) {
        const auto [over, under] = fractionOf(value);
        field.appendWord(over, 4);
        field.appendWord(under, 4);
    }
    return field;
}

Field fieldOfWhole(const std::vector<double>& values, ExifTag tag) {
    const bool isShort = !isLong(tag) && std::all_of(values.begin(), values.end(),
                                                     [](double v) { return v >= 0 && v <= 65535; });
    Field field{isShort ? EXIF_FORMAT_SHORT : EXIF_FORMAT_LONG, values.size(), {}};
    for (const double value : values) field.appendWord(static_cast<std::int64_t>(value), isShort ? 2 : 4);
    return field;
}

/// Nothing for a type that Exif does not know.
std::optional<Field> fieldOf(const Metadatum& entry, const ExifPlace& place) {
    if (place.tag == EXIF_TAG_RESOLUTION_UNIT && entry.type == "string")
        return fieldOfWhole({entry.text == "inch" ? 2.0 : entry.text == "cm" ? 3.0 : 1.0}, place.tag);
    if (entry.type == "string") return fieldOfText(entry.text, place.tag);
    if (entry.type.starts_with("float")) return fieldOfReals(numbersIn<float>(entry.bytes), place.tag);
    if (entry.type.starts_with("double")) return fieldOfReals(numbersIn<double>(entry.bytes), place.tag);
    if (entry.type.starts_with("uint16"))
        return fieldOfWhole(numbersIn<std::uint16_t>(entry.bytes), place.tag);
    if (entry.type.starts_with("uint8")) {
        const bool isByte = place.directory == EXIF_IFD_GPS && entry.bytes.size() <= 4;
        return Field{isByte ? EXIF_FORMAT_BYTE : EXIF_FORMAT_UNDEFINED, entry.bytes.size(), entry.bytes};
    }
    if (entry.type.starts_with("int") || entry.type.starts_with("uint"))
        return fieldOfWhole(numbersIn<std::int32_t>(entry.bytes), place.tag);
    return std::nullopt;
}

void enter(ExifData& exif, const ExifPlace& place, const Field& field) {
    ExifEntry* entry = exif_entry_new();
    if (!entry) throw std::bad_alloc();
    entry->tag = place.tag;
    entry->format = field.format;
    entry->components = field.count;
    entry->size = static_cast<unsigned>(field.bytes.size());
    entry->data = static_cast<unsigned char*>(std::malloc(field.bytes.size())); // freed by libexif
    if (entry->data) {
        std::memcpy(entry->data, field.bytes.data(), field.bytes.size());
        exif_content_add_entry(exif.ifd[place.directory], entry);
    }
    exif_entry_unref(entry);
}

std::string saved(ExifData& exif) {
    unsigned char* bytes = nullptr;
    unsigned size = 0;
    exif_data_save_data(&exif, &bytes, &size);
    if (!bytes) throw std::bad_alloc();
    std::string block(reinterpret_cast<const char*>(bytes), size);
    std::free(bytes);
    return block.substr(Prefix.size());
}

} // namespace

void appendExif(std::string_view block, std::vector<Metadatum>& metadata) {
    const std::string bytes = std::string(Prefix).append(block);
    const Exif exif = emptyExif();
    exif_data_load_data(exif.get(), reinterpret_cast<const unsigned char*>(bytes.data()),
                        static_cast<unsigned>(bytes.size()));
    Found found{metadata, exif_data_get_byte_order(exif.get())};
    for (const ExifIfd directory : {EXIF_IFD_0, EXIF_IFD_EXIF, EXIF_IFD_GPS})
        exif_content_foreach_entry(exif->ifd[directory], appendEntry, &found);
}

bool isExifField(const Metadatum& entry) {
    const auto place = placeOf(entry.name);
    return place && fieldOf(entry, *place);
}

std::string exifBlock(const std::vector<const Metadatum*>& entries, std::vector<std::string>& dropped) {
    const Exif exif = emptyExif();
    exif_data_set_byte_order(exif.get(), EXIF_BYTE_ORDER_INTEL);
    std::size_t size = 0;
    bool isEmpty = true;
    for (const Metadatum* entry : entries) {
        const ExifPlace place = placeOf(entry->name).value();
        const Field field = fieldOf(*entry, place).value();
        constexpr std::size_t Head = 12;
        if (field.count == 0) continue;
        if (size + Head + field.bytes.size() > MostBytes) {
            dropped.push_back(entry->name);
            continue;
        }
        size += Head + field.bytes.size();
        enter(*exif, place, field);
        isEmpty = false;
    }
    return isEmpty ? "" : saved(*exif);
}

int orientationIn(const std::vector<Metadatum>& metadata) {
    const auto found = std::find_if(metadata.begin(), metadata.end(),
                                    [](const Metadatum& entry) { return entry.name == "Orientation"; });
    const double told = found == metadata.end() ? 1 : numberIn(&*found).value_or(1);
    return told >= 1 && told <= 8 ? static_cast<int>(told) : 1;
}

} // namespace workbench
