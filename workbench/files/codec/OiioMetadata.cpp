// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/codec/OiioMetadata.h"

#include "workbench/files/metadata/Entries.h"
#include "workbench/files/metadata/KeptNetwork.h"

namespace workbench {
namespace {

/// A TIFF has no place for texts of one's own. Photo programs do not show this one as the picture's caption.
constexpr std::string_view DocumentName = "DocumentName";

/// Whether the library finds a place for an entry of that name in a TIFF file; what it does not know it leaves out.
bool isKeptByTiff(std::string_view name) {
    constexpr std::string_view Names[] = {
        "Artist",           "Copyright", "DateTime",      "DocumentName", "HostComputer",  "ICCProfile",
        "ImageDescription", "Make",      "Model",         "Orientation",  "PageName",      "PageNumber",
        "ResolutionUnit",   "Software",  "XResolution",   "YResolution",  "XPosition",     "YPosition",
        "compression",      "Keywords",  "textureformat", "wrapmodes",    "worldtocamera", "worldtoscreen"};
    if (name == "Exif:FNumber" || name == "Exif:ExposureTime")
        return false; // it knows them without the prefix
    return name == "FNumber" || name == "ExposureTime" || name.starts_with("Exif:") ||
           name.starts_with("IPTC:") ||
           std::find(std::begin(Names), std::end(Names), name) != std::end(Names);
}

/// False where the format has no place for the entry.
bool enterOne(const Metadatum& entry, const PictureFormat& format, OIIO::ImageSpec& spec) {
    if (format.name == "TIFF" && !isKeptByTiff(entry.name) && !isHint(entry.name)) return false;
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

} // namespace

std::vector<Metadatum> metadataOf(const OIIO::ImageSpec& spec) {
    std::vector<Metadatum> metadata;
    for (const auto& parameter : spec.extra_attribs) {
        const std::string name = parameter.name().string();
        if (describesStorage({name, "", "", ""})) continue;
        const OIIO::TypeDesc type = parameter.type();
        if (type == OIIO::TypeDesc::STRING) {
            metadata.push_back({name, "string", parameter.get_string(), ""});
        } else if (type.basetype != OIIO::TypeDesc::STRING && type.basetype != OIIO::TypeDesc::PTR) {
            std::string bytes(static_cast<const char*>(parameter.data()), type.size());
            std::string text = metadataText(type.c_str(), bytes);
            metadata.push_back({name, type.c_str(), std::move(text), std::move(bytes)});
        }
    }
    separateNetwork(metadata);
    return metadata;
}

void enterMetadata(const std::vector<Metadatum>& metadata, const PictureFormat& format, OIIO::ImageSpec& spec,
                   std::vector<std::string>& dropped) {
    const Metadatum *network = nullptr, *document = nullptr;
    for (const auto& entry : metadata) {
        if (describesStorage(entry)) continue;
        if (entry.name == DocumentName && entry.type == "string") document = &entry;
        if (entry.name == NetworkName && entry.type == "string")
            network = &entry;
        else if ((!format.holdsTexts || !enterOne(entry, format, spec)) && !isHint(entry.name))
            dropped.push_back(entry.name);
    }
    if (!network) return;
    if (format.holdsTexts)
        spec.attribute(std::string(DocumentName), withNetwork(document ? document->text : "", network->text));
    else
        dropped.emplace_back(NetworkName);
}

} // namespace workbench
