// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/jpeg/JpegMetadata.h"

#include "workbench/files/metadata/Entries.h"
#include "workbench/files/metadata/Exif.h"
#include "workbench/files/metadata/IccProfile.h"
#include "workbench/files/metadata/Iptc.h"
#include "workbench/files/metadata/KeptNetwork.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>

namespace workbench {
namespace {

using namespace std::string_view_literals;

/// Segments are told apart by their first bytes.
constexpr std::string_view ExifMark = "Exif\0\0"sv, XmpMark = "http://ns.adobe.com/xap/1.0/\0"sv,
                           IptcMark = "Photoshop 3.0\0"sv;
/// The network lies in as many segments as it needs, which photo programs do not show: each with its number
/// from 1 and their count behind the mark.
constexpr std::string_view NetworkMark = "krod:network\0"sv;
constexpr int NetworkMarker = JPEG_APP0 + 10, ExifMarker = JPEG_APP0 + 1, ProfileMarker = JPEG_APP0 + 2,
              IptcMarker = JPEG_APP0 + 13;
constexpr std::size_t LongestSegment = 65533, MostSegments = 255;
constexpr std::string_view CommentName = "Comment", DescriptionName = "ImageDescription",
                           SpaceName = "oiio:ColorSpace";

void readSegment(int marker, std::string_view bytes, PictureDescription& about) {
    if (marker == ExifMarker && bytes.starts_with(ExifMark)) {
        appendExif(bytes.substr(ExifMark.size()), about.metadata);
    } else if (marker == ExifMarker && bytes.starts_with(XmpMark)) {
        about.setText("XMP", std::string(bytes.substr(XmpMark.size())));
    } else if (marker == IptcMarker && bytes.starts_with(IptcMark)) {
        appendIptc(bytes, about.metadata);
    } else if (marker == JPEG_COM) {
        std::string text(bytes);
        while (text.ends_with('\0')) text.pop_back();
        about.setText(CommentName, std::move(text));
    }
}

/// The comment is the description where there is no other one.
void nameComment(PictureDescription& about) {
    const Metadatum* comment = about.find(CommentName);
    if (!comment) return;
    const std::string text = comment->text;
    const Metadatum* description = about.find(DescriptionName);
    if (description && description->text != text) return;
    about.remove(CommentName);
    about.setText(DescriptionName, text);
}

void readNetwork(j_decompress_ptr jpeg, PictureDescription& about) {
    std::map<unsigned char, std::string_view> parts;
    std::size_t count = 0;
    const std::size_t head = NetworkMark.size() + 2;
    for (jpeg_saved_marker_ptr at = jpeg->marker_list; at; at = at->next) {
        const std::string_view bytes(reinterpret_cast<const char*>(at->data), at->data_length);
        if (at->marker != NetworkMarker || !bytes.starts_with(NetworkMark) || bytes.size() < head) continue;
        count = static_cast<unsigned char>(bytes[head - 1]);
        parts[static_cast<unsigned char>(bytes[head - 2])] = bytes.substr(head);
    }
    if (parts.empty() || parts.size() != count) return;
    std::string network;
    for (const auto& [number, part] : parts) network.append(part);
    about.setText(NetworkName, std::move(network));
}

void readResolution(j_decompress_ptr jpeg, PictureDescription& about) {
    if (jpeg->saw_JFIF_marker == 0 || jpeg->X_density == 0 || jpeg->Y_density == 0) return;
    about.pixelAspect = static_cast<float>(jpeg->Y_density) / static_cast<float>(jpeg->X_density);
    if (about.find("XResolution")) return; // Exif says it more exactly
    const char* unit = jpeg->density_unit == 1 ? "inch" : jpeg->density_unit == 2 ? "cm" : "none";
    about.setText("ResolutionUnit", unit);
    about.metadata.push_back(floatEntry("XResolution", {static_cast<float>(jpeg->X_density)}));
    about.metadata.push_back(floatEntry("YResolution", {static_cast<float>(jpeg->Y_density)}));
}

void readProfile(j_decompress_ptr jpeg, PictureDescription& about) {
    JOCTET* profile = nullptr;
    unsigned size = 0;
    if (jpeg_read_icc_profile(jpeg, &profile, &size) == 0) return;
    about.metadata.push_back(bytesEntry(IccName, {reinterpret_cast<const char*>(profile), size}));
    std::free(profile);
}

/// Profile or Exif say it, else it is the convention of the format.
void readTransfer(PictureDescription& about) {
    constexpr double Uncalibrated = 65535;
    const Metadatum* profile = about.find(IccName);
    const bool isOther =
        profile ? !isSrgbProfile(profile->bytes) : numberIn(about.find("Exif:ColorSpace")) == Uncalibrated;
    if (isOther) return;
    about.transfer = Transfer::Srgb;
    about.setText(SpaceName, "sRGB");
}

void addResolution(const PictureDescription& about, JpegHead& head) {
    const auto x = numberIn(about.find("XResolution")), y = numberIn(about.find("YResolution"));
    const Metadatum* unit = about.find("ResolutionUnit");
    const auto isDensity = [](double value) { return value >= 0.5 && value < 65535; };
    if (x && y && isDensity(*x) && isDensity(*y)) {
        head.densityUnit = unit && unit->text == "inch" ? 1 : unit && unit->text == "cm" ? 2 : 0;
        head.densityX = static_cast<int>(std::lround(*x));
        head.densityY = static_cast<int>(std::lround(*y));
    } else if (about.pixelAspect != 1 && isDensity(100 * double{about.pixelAspect})) {
        head.densityX = 100;
        head.densityY = static_cast<int>(std::lround(100 * double{about.pixelAspect}));
    }
}

/// False where it would need more segments than can be counted.
bool addNetwork(const std::string& network, JpegHead& head) {
    const std::size_t most = LongestSegment - NetworkMark.size() - 2;
    const std::size_t count = std::max<std::size_t>(1, (network.size() + most - 1) / most);
    if (count > MostSegments) return false;
    for (std::size_t i = 0; i < count; ++i) {
        std::string bytes(NetworkMark);
        bytes += static_cast<char>(i + 1);
        bytes += static_cast<char>(count);
        head.segments.push_back({NetworkMarker, bytes.append(network, i * most, most)});
    }
    return true;
}

bool addSegment(int marker, std::string_view mark, const std::string& bytes, JpegHead& head) {
    if (mark.size() + bytes.size() > LongestSegment) return false;
    head.segments.push_back({marker, std::string(mark).append(bytes)});
    return true;
}

/// What is collected before its segments can be made.
struct Fields {
    std::vector<const Metadatum*> exif, iptc;
};

bool addEntry(const Metadatum& entry, Fields& fields, JpegHead& head) {
    if (entry.name == IccName) {
        head.profile = &entry; // checked for every format
        return true;
    }
    const bool isText = entry.type == "string";
    if (isText && entry.name == NetworkName) return addNetwork(entry.text, head);
    if (isText && entry.name == "XMP") return addSegment(ExifMarker, XmpMark, entry.text, head);
    if (isText && entry.name == CommentName) return addSegment(JPEG_COM, "", entry.text, head);
    if (entry.name == "PixelAspectRatio") return true;
    if (isIptcField(entry))
        fields.iptc.push_back(&entry);
    else if (isExifField(entry))
        fields.exif.push_back(&entry);
    else
        return false;
    return true;
}

} // namespace

void saveJpegSegments(j_decompress_ptr jpeg) {
    for (const int marker : {JPEG_COM, ExifMarker, ProfileMarker, IptcMarker, NetworkMarker})
        jpeg_save_markers(jpeg, marker, 0xFFFF);
}

void readJpegMetadata(j_decompress_ptr jpeg, PictureDescription& about) {
    for (jpeg_saved_marker_ptr at = jpeg->marker_list; at; at = at->next)
        readSegment(at->marker, {reinterpret_cast<const char*>(at->data), at->data_length}, about);
    nameComment(about);
    separateNetwork(about.metadata);
    readNetwork(jpeg, about);
    readResolution(jpeg, about);
    readProfile(jpeg, about);
    readTransfer(about);
    about.orientation = orientationIn(about.metadata);
}

JpegHead jpegHead(const PictureDescription& about, std::vector<std::string>& dropped) {
    JpegHead head;
    Fields fields;
    for (const Metadatum& entry : about.metadata)
        if (!describesStorage(entry) && !isHint(entry.name) && !addEntry(entry, fields, head))
            dropped.push_back(entry.name);
    // Older programs look for the description there.
    const Metadatum* description = about.find(DescriptionName);
    constexpr std::size_t LongestInExif = 60000;
    if (description && !about.find(CommentName) && description->text.size() < LongestInExif)
        static_cast<void>(addSegment(JPEG_COM, "", description->text, head));
    addResolution(about, head);
    if (const std::string exif = exifBlock(fields.exif, dropped); !exif.empty())
        head.segments.insert(head.segments.begin(), {ExifMarker, std::string(ExifMark) + exif});
    if (std::string iptc = iptcBlock(fields.iptc, dropped); !iptc.empty())
        head.segments.push_back({IptcMarker, std::move(iptc)});
    return head;
}

} // namespace workbench
