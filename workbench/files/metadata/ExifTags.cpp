// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/metadata/ExifTags.h"

#include <algorithm>
#include <initializer_list>
#include <map>

namespace workbench {
namespace {

constexpr std::string_view ExifPrefix = "Exif:", GpsPrefix = "GPS:";
/// The two fields of the Exif directory that are named without it.
constexpr std::string_view PlainNames[] = {"ExposureTime", "FNumber"};

bool isOneOf(ExifTag tag, std::initializer_list<int> numbers) {
    return std::find(numbers.begin(), numbers.end(), static_cast<int>(tag)) != numbers.end();
}

/// Size, layout and packing of the pixels, places of other parts of the file, and what other formats keep
/// elsewhere (XMP, IPTC, ICC).
bool isStorage(ExifTag tag) {
    return isOneOf(tag, {0x00fe, 0x00ff, 0x0100, 0x0101, 0x0102, 0x0103, 0x0106, 0x0111, 0x0115,
                         0x0116, 0x0117, 0x011c, 0x0201, 0x0202, 0x0211, 0x0212, 0x0213, 0x0214,
                         0x02bc, 0x83bb, 0x8649, 0x8769, 0x8773, 0x8825, 0xa002, 0xa003, 0xa005});
}

std::map<std::string, ExifPlace> allPlaces() {
    std::map<std::string, ExifPlace> places;
    for (unsigned i = 0; i < exif_tag_table_count(); ++i)
        for (const ExifIfd directory : {EXIF_IFD_0, EXIF_IFD_EXIF, EXIF_IFD_GPS}) {
            const ExifTag tag = exif_tag_table_get_tag(i);
            const std::string name = fieldName(tag, directory);
            if (!name.empty()) places.try_emplace(name, ExifPlace{directory, tag});
        }
    return places;
}

} // namespace

std::string fieldName(ExifTag tag, ExifIfd directory) {
    const char* const found = exif_tag_get_name_in_ifd(tag, directory);
    if (!found || (directory != EXIF_IFD_GPS && isStorage(tag))) return "";
    std::string_view name = found;
    if (directory == EXIF_IFD_0) return std::string(name);
    if (directory == EXIF_IFD_GPS) {
        if (name.starts_with("GPS")) name.remove_prefix(3);
        return std::string(GpsPrefix).append(name);
    }
    if (std::find(std::begin(PlainNames), std::end(PlainNames), name) != std::end(PlainNames))
        return std::string(name);
    if (tag == EXIF_TAG_ISO_SPEED_RATINGS) name = "PhotographicSensitivity"; // as Exif calls it since 2.3
    return std::string(ExifPrefix).append(name);
}

std::optional<ExifPlace> placeOf(const std::string& name) {
    static const std::map<std::string, ExifPlace> places = allPlaces();
    const auto found = places.find(name);
    if (found == places.end()) return std::nullopt;
    return found->second;
}

bool isVersion(ExifTag tag) { return isOneOf(tag, {EXIF_TAG_EXIF_VERSION, EXIF_TAG_FLASH_PIX_VERSION}); }

bool isSignedRational(ExifTag tag) {
    return isOneOf(tag,
                   {EXIF_TAG_SHUTTER_SPEED_VALUE, EXIF_TAG_BRIGHTNESS_VALUE, EXIF_TAG_EXPOSURE_BIAS_VALUE});
}

bool isLong(ExifTag tag) {
    return isOneOf(tag, {EXIF_TAG_STANDARD_OUTPUT_SENSITIVITY, EXIF_TAG_RECOMMENDED_EXPOSURE_INDEX,
                         EXIF_TAG_ISO_SPEED, EXIF_TAG_ISO_SPEEDLatitudeYYY, EXIF_TAG_ISO_SPEEDLatitudeZZZ});
}

std::string resolutionUnit(double number) { return number == 2 ? "inch" : number == 3 ? "cm" : "none"; }

} // namespace workbench
