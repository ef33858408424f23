// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/metadata/Entries.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace workbench {
namespace {

template <typename Number>
Metadatum numbersEntry(std::string_view name, const char* type, const std::vector<Number>& values) {
    Metadatum entry{std::string(name), type, "", ""};
    if (values.size() != 1) entry.type += "[" + std::to_string(values.size()) + "]";
    entry.bytes.assign(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(Number));
    entry.text = metadataText(entry.type, entry.bytes);
    return entry;
}

template <typename Number>
std::optional<double> firstIn(const std::string& bytes) {
    Number value;
    if (bytes.size() < sizeof value) return std::nullopt;
    std::memcpy(&value, bytes.data(), sizeof value);
    return static_cast<double>(value);
}

} // namespace

Metadatum textEntry(std::string_view name, std::string text) {
    return {std::string(name), "string", std::move(text), ""};
}

Metadatum intEntry(std::string_view name, const std::vector<std::int32_t>& values) {
    return numbersEntry(name, "int", values);
}

Metadatum floatEntry(std::string_view name, const std::vector<float>& values) {
    return numbersEntry(name, "float", values);
}

Metadatum bytesEntry(std::string_view name, std::string bytes) {
    const std::string count = std::to_string(bytes.size());
    return {std::string(name), bytes.size() == 1 ? "uint8" : "uint8[" + count + "]", "(" + count + " bytes)",
            std::move(bytes)};
}

std::optional<double> numberIn(const Metadatum* entry) {
    if (!entry) return std::nullopt;
    if (entry->type.starts_with("float")) return firstIn<float>(entry->bytes);
    if (entry->type.starts_with("double")) return firstIn<double>(entry->bytes);
    if (entry->type.starts_with("uint16")) return firstIn<std::uint16_t>(entry->bytes);
    if (entry->type.starts_with("uint8")) return firstIn<std::uint8_t>(entry->bytes);
    if (entry->type.starts_with("int") || entry->type.starts_with("uint"))
        return firstIn<std::int32_t>(entry->bytes);
    return std::nullopt;
}

bool describesStorage(const Metadatum& entry) {
    constexpr std::string_view Names[] = {"oiio:BitsPerSample",
                                          "oiio:UnassociatedAlpha",
                                          "tiff:ColorSpace",
                                          "oiio:subimages",
                                          "oiio:subimagename",
                                          "planarconfig",
                                          "interlacing",
                                          "tiff:PlanarConfiguration",
                                          "tiff:PhotometricInterpretation",
                                          "tiff:RowsPerStrip",
                                          "tiff:bigtiff",
                                          "tiff:subfiletype",
                                          "thumbnail_image",
                                          "thumbnail_width",
                                          "thumbnail_height",
                                          "thumbnail_nchannels",
                                          "jpeg:subsampling",
                                          "screenWindowCenter",
                                          "screenWindowWidth",
                                          "pixelAspectRatio",
                                          "dwaCompressionLevel"};
    return entry.type == "compression" ||
           std::find(std::begin(Names), std::end(Names), entry.name) != std::end(Names);
}

bool isHint(std::string_view name) {
    return name.starts_with("oiio:") || name.starts_with("tiff:") || name.starts_with("png:") ||
           name.starts_with("jpeg:");
}

} // namespace workbench
