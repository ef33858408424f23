// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/codec/OiioMetadata.h"

#include <algorithm>

namespace workbench {
namespace {

constexpr std::string_view DescriptionName = "ImageDescription";
/// Formats without attributes of one's own carry the network in the description, behind this line.
constexpr std::string_view Marker = "--- krod:network ---\n";
/// A JPEG segment holds 65,533 bytes; the description is written into two kinds of them with some head.
constexpr std::size_t LongestJpegText = 60000;

/// These say how the pixels were stored, which may change, or are made anew by the writer.
bool isStorage(std::string_view name) {
    constexpr std::string_view Names[] = {"oiio:BitsPerSample",
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
                                          "jpeg:subsampling"};
    return std::find(std::begin(Names), std::end(Names), name) != std::end(Names);
}

/// EXR's own bookkeeping, which is of no meaning elsewhere.
bool belongsToExr(const Metadatum& entry) {
    return entry.type == "compression" || entry.name == "screenWindowCenter" ||
           entry.name == "screenWindowWidth" || entry.name == "pixelAspectRatio";
}

std::string descriptionOf(const std::vector<Metadatum>& metadata) {
    for (const auto& entry : metadata)
        if (entry.name == DescriptionName && entry.type == "string") return entry.text;
    return {};
}

void splitDescription(std::vector<Metadatum>& metadata) {
    for (std::size_t i = 0; i < metadata.size(); ++i) {
        if (metadata[i].name != DescriptionName) continue;
        const auto at = metadata[i].text.find(Marker);
        if (at == std::string::npos) return;
        std::string network = metadata[i].text.substr(at + Marker.size());
        metadata[i].text.erase(at > 0 ? at - 1 : 0); // with the line break before the marker
        if (metadata[i].text.empty()) metadata.erase(metadata.begin() + static_cast<std::ptrdiff_t>(i));
        std::erase_if(metadata, [](const Metadatum& entry) { return entry.name == NetworkName; });
        metadata.push_back({std::string(NetworkName), "string", std::move(network), ""});
        return;
    }
}

/// False where the format has no place for the entry.
bool enterOne(const Metadatum& entry, OIIO::ImageSpec& spec) {
    if (entry.type == "string") {
        spec.attribute(entry.name, entry.text);
        return true;
    }
    const OIIO::TypeDesc type(entry.type);
    if (type.basetype == OIIO::TypeDesc::UNKNOWN || type.basetype == OIIO::TypeDesc::STRING ||
        type.size() != entry.bytes.size())
        return false;
    spec.attribute(entry.name, type, entry.bytes.data());
    return true;
}

/// The network of a TIFF or JPEG file, behind the description that the picture has anyway.
bool enterNetwork(const std::string& network, const std::vector<Metadatum>& metadata,
                  const PictureFormat& format, OIIO::ImageSpec& spec) {
    if (format.name == "PNG") {
        spec.attribute(std::string(NetworkName), network);
        return true;
    }
    std::string text = descriptionOf(metadata);
    if (!text.empty()) text += '\n';
    text.append(Marker).append(network);
    if (format.name == "JPEG" && text.size() > LongestJpegText) return false;
    spec.attribute(std::string(DescriptionName), text);
    return true;
}

/// Words between OpenImageIO and its formats, which no user misses.
bool isHint(std::string_view name) {
    return name.starts_with("oiio:") || name.starts_with("tiff:") || name.starts_with("png:") ||
           name.starts_with("jpeg:");
}

} // namespace

std::vector<Metadatum> metadataOf(const OIIO::ImageSpec& spec) {
    std::vector<Metadatum> metadata;
    for (const auto& parameter : spec.extra_attribs) {
        const std::string name = parameter.name().string();
        if (isStorage(name)) continue;
        const OIIO::TypeDesc type = parameter.type();
        if (type == OIIO::TypeDesc::STRING) {
            metadata.push_back({name, "string", parameter.get_string(), ""});
        } else if (type.basetype != OIIO::TypeDesc::STRING && type.basetype != OIIO::TypeDesc::PTR) {
            std::string bytes(static_cast<const char*>(parameter.data()), type.size());
            std::string text = metadataText(type.c_str(), bytes);
            metadata.push_back({name, type.c_str(), std::move(text), std::move(bytes)});
        }
    }
    splitDescription(metadata);
    return metadata;
}

void enterMetadata(const std::vector<Metadatum>& metadata, const PictureFormat& format, OIIO::ImageSpec& spec,
                   std::vector<std::string>& dropped) {
    const Metadatum* network = nullptr;
    for (const auto& entry : metadata) {
        if (isStorage(entry.name) || belongsToExr(entry)) continue;
        if (entry.name == NetworkName && entry.type == "string")
            network = &entry;
        else if ((!format.holdsTexts || !enterOne(entry, spec)) && !isHint(entry.name))
            dropped.push_back(entry.name);
    }
    if (network && (!format.holdsTexts || !enterNetwork(network->text, metadata, format, spec)))
        dropped.emplace_back(NetworkName);
}

} // namespace workbench
