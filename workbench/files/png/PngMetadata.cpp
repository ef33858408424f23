// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/png/PngMetadata.h"

#include "workbench/files/metadata/Entries.h"
#include "workbench/files/metadata/Exif.h"
#include "workbench/files/metadata/IccProfile.h"
#include "workbench/report/Utf8.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace workbench {
namespace {

/// Keywords that PNG defines, and what the same text is called elsewhere.
constexpr std::pair<std::string_view, std::string_view> Keywords[] = {
    {"Description", "ImageDescription"},
    {"Author", "Artist"},
    {"Title", "DocumentName"},
    {"XML:com.adobe.xmp", "XMP"},
};
/// Texts that are known by these names in PNG and Exif; they are written as texts.
constexpr std::string_view Texts[] = {"ImageDescription", "Artist", "Copyright", "Software", "DocumentName"};
constexpr double MetersPerInch = 0.0254;
constexpr std::string_view GammaName = "oiio:Gamma", SpaceName = "oiio:ColorSpace";
/// libpng refuses to read longer texts, to be safe from small files that make large ones.
constexpr std::size_t LongestText = 8000000 - 100;

template <typename Name>
bool isOneOf(std::string_view name, const Name& names) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = codePointLength(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

std::string fromLatin1(std::string_view text) {
    std::string utf8;
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (code >= 0x80) utf8 += static_cast<char>(0xC0U | code >> 6U);
        utf8 += static_cast<char>(code >= 0x80 ? 0x80U | (code & 0x3FU) : code);
    }
    return utf8;
}

void readTexts(PngSession& png, PictureDescription& about) {
    png_textp texts = nullptr;
    const int count = png_get_text(png.state(), png.info(), &texts, nullptr);
    for (int i = 0; i < count; ++i) {
        const bool isInternational = texts[i].compression >= PNG_ITXT_COMPRESSION_NONE;
        const std::string_view text(texts[i].text ? texts[i].text : "",
                                    isInternational ? texts[i].itxt_length : texts[i].text_length);
        std::string_view name = texts[i].key;
        for (const auto& [keyword, known] : Keywords)
            if (name == keyword) name = known;
        // Many programs write UTF-8 where the format says Latin-1.
        if (!about.find(name)) about.setText(name, isUtf8(text) ? std::string(text) : fromLatin1(text));
    }
}

void readDate(PngSession& png, PictureDescription& about) {
    png_timep date = nullptr;
    if (png_get_tIME(png.state(), png.info(), &date) == 0) return;
    char text[32];
    std::snprintf(text, sizeof text, "%04u:%02u:%02u %02u:%02u:%02u", unsigned{date->year},
                  unsigned{date->month}, unsigned{date->day}, unsigned{date->hour}, unsigned{date->minute},
                  unsigned{date->second});
    about.setText("DateTime", text);
}

void readResolution(PngSession& png, PictureDescription& about) {
    png_uint_32 x = 0, y = 0;
    int unit = 0;
    if (png_get_pHYs(png.state(), png.info(), &x, &y, &unit) == 0 || x == 0 || y == 0) return;
    const double scale = unit == PNG_RESOLUTION_METER ? MetersPerInch : 1;
    about.metadata.push_back(textEntry("ResolutionUnit", unit == PNG_RESOLUTION_METER ? "inch" : "none"));
    about.metadata.push_back(floatEntry("XResolution", {static_cast<float>(x * scale)}));
    about.metadata.push_back(floatEntry("YResolution", {static_cast<float>(y * scale)}));
    about.pixelAspect = static_cast<float>(y) / static_cast<float>(x);
}

void readProfile(PngSession& png, PictureDescription& about) {
    png_charp name = nullptr;
    int compression = 0;
    png_bytep profile = nullptr;
    png_uint_32 size = 0;
    if (png_get_iCCP(png.state(), png.info(), &name, &compression, &profile, &size) == 0) return;
    about.metadata.push_back(bytesEntry(IccName, {reinterpret_cast<const char*>(profile), size}));
}

/// sRGB chunk, profile and gamma, in the order of their weight; else what 8 bits usually mean.
void readTransfer(PngSession& png, PictureDescription& about) {
    constexpr double Usual = 0.45455, Margin = 0.005;
    int intent = 0;
    double gamma = 0;
    if (png_get_gAMA(png.state(), png.info(), &gamma) != 0 && gamma > 0)
        about.metadata.push_back(floatEntry(GammaName, {static_cast<float>(1 / gamma)}));
    if (png_get_sRGB(png.state(), png.info(), &intent) != 0) {
        about.transfer = Transfer::Srgb;
        about.setText(SpaceName, "sRGB");
    } else if (const Metadatum* profile = about.find(IccName)) {
        if (isSrgbProfile(profile->bytes)) about.transfer = Transfer::Srgb;
    } else if (gamma > 0) {
        if (std::abs(gamma - 1) < Margin) about.transfer = Transfer::Linear;
        if (std::abs(gamma - Usual) < Margin) about.transfer = Transfer::Srgb;
    } else if (about.depth == PixelDepth::UInt8) {
        about.transfer = Transfer::Srgb;
    }
}

bool isKeyword(std::string_view name) {
    const auto isPlain = [](char c) { return c > ' ' && c < '\x7f'; };
    constexpr std::size_t Longest = 79;
    return !name.empty() && name.size() <= Longest && isPlain(name.front()) && isPlain(name.back()) &&
           name.find("  ") == std::string_view::npos &&
           std::all_of(name.begin(), name.end(), [&](char c) { return c == ' ' || isPlain(c); });
}

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// What is handed to libpng. It lives until libpng has copied it.
struct PngHead {
    std::vector<png_text> texts;
    std::vector<const Metadatum*> exifFields;
    std::optional<png_time> date;
    const Metadatum* profile = nullptr;
    std::optional<std::pair<double, double>> resolution;
    int resolutionUnit = PNG_RESOLUTION_UNKNOWN;
    bool isSrgb = false;
    double gamma = 0;
    std::string exif;
};

bool addText(const Metadatum& entry, PngHead& head) {
    std::string_view keyword = entry.name;
    for (const auto& [known, name] : Keywords)
        if (entry.name == name) keyword = known;
    if (!isKeyword(keyword) || entry.text.size() > LongestText || entry.text.find('\0') != std::string::npos)
        return false;
    const bool isPlain = isAscii(entry.text) && keyword != "XML:com.adobe.xmp";
    if (!isPlain && !isUtf8(entry.text)) return false;
    png_text text{};
    text.compression = isPlain ? PNG_TEXT_COMPRESSION_NONE : PNG_ITXT_COMPRESSION_NONE;
    text.key = const_cast<char*>(keyword.data()); // ends with a zero: a whole std::string or a constant
    text.text = const_cast<char*>(entry.text.c_str());
    if (isPlain) text.text_length = entry.text.size();
    static char none[] = "";
    text.lang = text.lang_key = none;
    head.texts.push_back(text);
    return true;
}

bool addDate(const Metadatum& entry, PngHead& head) {
    unsigned year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    if (std::sscanf(entry.text.c_str(), "%4u:%2u:%2u %2u:%2u:%2u", &year, &month, &day, &hour, &minute,
                    &second) != 6 ||
        month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 || minute > 59 || second > 60)
        return addText(entry, head);
    const auto byte = [](unsigned value) { return static_cast<png_byte>(value); };
    head.date = png_time{
        static_cast<png_uint_16>(year), byte(month), byte(day), byte(hour), byte(minute), byte(second)};
    return true;
}

/// Entries that become one chunk together with others, or none.
bool isOfSeveral(std::string_view name) {
    constexpr std::string_view Names[] = {"XResolution",      "YResolution",      "ResolutionUnit",
                                          "PixelAspectRatio", "pixelAspectRatio", GammaName,
                                          SpaceName};
    return isOneOf(name, Names);
}

bool addEntry(const Metadatum& entry, PngHead& head) {
    if (entry.name == IccName) {
        head.profile = &entry; // checked for every format
        return true;
    }
    if (isOfSeveral(entry.name)) return true;
    if (entry.name == "DateTime" && entry.type == "string") return addDate(entry, head);
    const bool isKnownText = isOneOf(entry.name, Texts);
    if (!isKnownText && isExifField(entry)) {
        head.exifFields.push_back(&entry);
        return true;
    }
    return entry.type == "string" && addText(entry, head);
}

void addResolution(const PictureDescription& about, PngHead& head) {
    const auto x = numberIn(about.find("XResolution")), y = numberIn(about.find("YResolution"));
    const Metadatum* unit = about.find("ResolutionUnit");
    const std::string name = unit ? unit->text : "none";
    const double scale = name == "inch" ? 1 / MetersPerInch : name == "cm" ? 100 : 1;
    constexpr double Most = 2147483647;
    if (!x && !y && about.pixelAspect != 1 && about.pixelAspect > 0.001F && about.pixelAspect < 1000)
        head.resolution = {1000, 1000 * double{about.pixelAspect}};
    if (!x || !y || !(*x * scale >= 0.5 && *y * scale >= 0.5 && *x * scale < Most && *y * scale < Most))
        return;
    head.resolution = {*x * scale, *y * scale};
    if (scale != 1) head.resolutionUnit = PNG_RESOLUTION_METER;
}

void addTransfer(const PictureDescription& about, const WriteOptions& options, PngHead& head) {
    if (head.profile) return;
    const Metadatum* space = about.find(SpaceName);
    head.isSrgb = options.srgb || (space && space->text == "sRGB");
    const double gamma = numberIn(about.find(GammaName)).value_or(0);
    if (!head.isSrgb && gamma > 0.01 && gamma < 100) head.gamma = 1 / gamma;
}

/// Calls libpng only.
void hand(const PngHead& head, png_structp png, png_infop info) {
    if (head.profile)
        png_set_iCCP(png, info, "ICC profile", PNG_COMPRESSION_TYPE_BASE,
                     reinterpret_cast<png_const_bytep>(head.profile->bytes.data()),
                     static_cast<png_uint_32>(head.profile->bytes.size()));
    if (head.isSrgb) png_set_sRGB_gAMA_and_cHRM(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
    if (head.gamma > 0) png_set_gAMA(png, info, head.gamma);
    if (head.resolution)
        png_set_pHYs(png, info, static_cast<png_uint_32>(std::lround(head.resolution->first)),
                     static_cast<png_uint_32>(std::lround(head.resolution->second)), head.resolutionUnit);
    if (head.date) png_set_tIME(png, info, &*head.date);
    if (!head.exif.empty())
        png_set_eXIf_1(png, info, static_cast<png_uint_32>(head.exif.size()),
                       reinterpret_cast<png_bytep>(const_cast<char*>(head.exif.data())));
    if (!head.texts.empty()) png_set_text(png, info, head.texts.data(), static_cast<int>(head.texts.size()));
}

} // namespace

void readPngMetadata(PngSession& png, PictureDescription& about) {
    readTexts(png, about);
    readDate(png, about);
    readResolution(png, about);
    readProfile(png, about);
    readTransfer(png, about);
    png_bytep exif = nullptr;
    png_uint_32 size = 0;
    if (png_get_eXIf_1(png.state(), png.info(), &size, &exif) != 0)
        appendExif({reinterpret_cast<const char*>(exif), size}, about.metadata);
    about.orientation = orientationIn(about.metadata);
}

bool enterPngMetadata(const PictureDescription& about, const WriteOptions& options, PngSession& png,
                      std::vector<std::string>& dropped) {
    PngHead head;
    for (const Metadatum& entry : about.metadata)
        if (!describesStorage(entry) && !isHint(entry.name) && !addEntry(entry, head))
            dropped.push_back(entry.name);
    addResolution(about, head);
    addTransfer(about, options, head);
    head.exif = exifBlock(head.exifFields, dropped);
    if (!png.succeeds([&] { hand(head, png.state(), png.info()); })) return false;
    if (head.profile && png_get_valid(png.state(), png.info(), PNG_INFO_iCCP) == 0)
        dropped.emplace_back(IccName); // libpng has looked closer than we
    return true;
}

} // namespace workbench
