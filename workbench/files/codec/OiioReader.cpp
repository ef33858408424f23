// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/codec/OiioReader.h"

#include "workbench/files/Reason.h"
#include "workbench/files/codec/OiioMetadata.h"
#include "workbench/files/codec/OiioTypes.h"
#include "workbench/files/codec/QuietErrors.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <cmath>

namespace workbench {
namespace {

constexpr int StepRows = 64;

PixelDepth depthOf(OIIO::TypeDesc type) {
    if (type == OIIO::TypeDesc::UINT8) return PixelDepth::UInt8;
    if (type == OIIO::TypeDesc::UINT16) return PixelDepth::UInt16;
    if (type == OIIO::TypeDesc::HALF) return PixelDepth::Half;
    return PixelDepth::Float; // of 32-bit integers and doubles, the library makes floats
}

/// The channel of alpha, behind those of color; -1 where there is none. The library's own number is no index in
/// some formats: in GIF files it is one beyond the last channel.
int alphaChannelOf(const OIIO::ImageSpec& spec, int colours) {
    if (spec.alpha_channel < spec.nchannels) return spec.alpha_channel >= colours ? spec.alpha_channel : -1;
    for (int channel = colours; channel < spec.nchannels; ++channel)
        if (spec.channel_name(channel) == "A") return channel;
    return -1;
}

/// What the library holds beside the rows that it hands out, as measured: most decoders hold the picture whole.
std::uint64_t bytesWhileReading(const std::string& format, const OIIO::ImageSpec& spec) {
    const auto pixels = static_cast<std::uint64_t>(spec.width) * static_cast<std::uint64_t>(spec.height);
    const auto samples = pixels * static_cast<std::uint64_t>(spec.nchannels);
    if (spec.tile_width > 0) // a row of tiles, once more as they are decoded
        return 2 * spec.scanline_bytes() * static_cast<std::uint64_t>(spec.tile_height);
    for (const char* const byRows :
         {"tiff", "png", "jpeg", "hdr", "bmp", "dpx", "cineon", "fits", "rla", "sgi"})
        if (format == byRows) return 0;
    if (format == "gif") return 5 * pixels;       // colors and alpha, and what they are made of
    if (format == "jpeg2000") return 5 * samples; // 32 bits each, and rows of it as they go on
    if (format == "heif") return 2 * samples * spec.format.size(); // planes, and what becomes of them
    return samples * spec.format.size();
}

/// Formats whose colors stand beside alpha, and of which the library hands out them multiplied nevertheless.
bool comesMultiplied(const std::string& format) { return format == "webp"; }

/// By the file's own word, else by what is usual: bytes are encoded for viewing, floats proportional to light.
Transfer transferOf(const OIIO::ImageSpec& spec, PixelDepth depth) {
    const std::string profile = spec.get_string_attribute("ICCProfile:profile_description");
    if (!profile.empty()) return isSrgbName(profile) ? Transfer::Srgb : Transfer::Unknown;
    if (depth == PixelDepth::Half || depth == PixelDepth::Float) return Transfer::Linear;
    constexpr int ExifSrgb = 1;
    if (spec.get_int_attribute("Exif:ColorSpace") == ExifSrgb || depth == PixelDepth::UInt8)
        return Transfer::Srgb;
    return Transfer::Unknown;
}

bool isLossy(const std::string& format, const OIIO::ImageSpec& spec) {
    const std::string compression = spec.get_string_attribute("compression");
    return format == "jpeg" || format == "webp" || format == "jpeg2000" || compression == "jpeg";
}

} // namespace

OiioReader::OiioReader(const std::filesystem::path& path) : PictureReader(path) {
    OIIO::ImageSpec wishes;
    wishes.attribute("oiio:UnassociatedAlpha", 1); // values as they are stored, not multiplied by alpha
    const QuietErrors quiet;
    openInput(wishes);
    if (!input)
        throw Failure(Fault::Input, {path.string(),
                                     "cannot be read as a picture",
                                     "EXR, PNG, TIFF, JPEG, HDR or another picture format",
                                     reasonText(OIIO::geterror()),
                                     "Check that the file is complete and has its right extension",
                                     {}});
    describe();
    countPictures();
}

/// The library takes what follows a question mark for options. A file with one in its name is opened by its number,
/// as the format of its extension where that is known.
void OiioReader::openInput(const OIIO::ImageSpec& wishes) {
    std::string name = file.string();
    if (name.find('?') != std::string::npos) {
        numbered.reset(std::fopen(file.c_str(), "rb"));
        if (numbered) name = "/proc/self/fd/" + std::to_string(::fileno(numbered.get()));
        OIIO::ImageSpec spec;
        input = OIIO::ImageInput::create(lowerExtension(file));
        if (input && input->open(name, spec, wishes)) return;
    }
    input = OIIO::ImageInput::open(name, &wishes);
}

void OiioReader::describe() {
    const OIIO::ImageSpec& spec = input->spec();
    checkPictureSize(file, spec.width, spec.height, spec.nchannels,
                     static_cast<std::int64_t>(spec.nchannels) *
                         static_cast<std::int64_t>(spec.format.size()),
                     std::filesystem::file_size(file), input->format_name());
    if (spec.tile_width > 0 && spec.tile_height < 1) // rows are found by it
        throw Failure(Fault::Input, {file.string(),
                                     "declares tiles that cannot be",
                                     "a height above 0",
                                     std::to_string(spec.tile_height),
                                     "The file is damaged",
                                     {}});
    about.format = input->format_name();
    about.width = spec.width;
    about.height = spec.height;
    about.depth = depthOf(spec.format);
    about.dataX = spec.x;
    about.dataY = spec.y;
    if (spec.full_width > 0 && spec.full_height > 0)
        about.displayWindow = {spec.full_x, spec.full_y, spec.full_width, spec.full_height};
    about.isGrey = spec.nchannels <= 2;
    const int colours = about.isGrey ? 1 : 3;
    const int alpha = alphaChannelOf(spec, colours);
    about.hasAlpha = alpha >= 0;
    for (int channel = colours; channel < spec.nchannels; ++channel)
        if (channel != alpha) about.unreadChannels.push_back(spec.channel_name(channel));
    about.alphaIsAssociated =
        about.hasAlpha && about.format == "tiff" && spec.get_int_attribute("oiio:UnassociatedAlpha") == 0;
    about.transfer = transferOf(spec, about.depth);
    about.isLossy = isLossy(about.format, spec);
    about.orientation = std::clamp(spec.get_int_attribute("Orientation", 1), 1, 8);
    const float aspect = spec.get_float_attribute("PixelAspectRatio", 1);
    about.pixelAspect = aspect > 0 && std::isfinite(aspect) ? aspect : 1;
    about.metadata = metadataOf(spec);
    about.readerBytes = bytesWhileReading(about.format, spec);
    storedType = typeOf(about.depth);
    rowBytes =
        static_cast<std::size_t>(spec.width) * static_cast<std::size_t>(spec.nchannels) * storedType.size();
    decoder.emplace(about.depth, spec.nchannels, about.isGrey, alpha);
}

/// Formats that do not say how many pictures there are let one look for them.
void OiioReader::countPictures() {
    constexpr int Most = 10000;
    int count = input->spec().get_int_attribute("oiio:subimages");
    if (count < 1 && (about.format == "tiff" || about.format == "gif")) {
        const QuietErrors quiet;
        for (count = 1; count < Most && input->seek_subimage(count, 0);) ++count;
        static_cast<void>(input->geterror());
        if (!input->seek_subimage(0, 0)) fail(0, 1);
    }
    about.furtherPictures = std::clamp(count - 1, 0, Most);
    about.furtherPicturesAre = about.format == "tiff"                            ? "pages"
                               : about.format == "gif" || about.format == "webp" ? "frames"
                                                                                 : "pictures";
}

void OiioReader::fail(int first, int count) {
    throw Failure(Fault::Input,
                  {file.string(),
                   "cannot be read at the rows " + std::to_string(first) + " to " +
                       std::to_string(first + count - 1) + " of " + std::to_string(about.height),
                   "",
                   reasonText(input->geterror()),
                   "The file is damaged or was not written to its end",
                   {}});
}

const std::byte* OiioReader::storedRows(int first, int count) {
    stored.resize(rowBytes * static_cast<std::size_t>(count));
    const int top = about.dataY + first;
    const int channels = input->spec().nchannels;
    const QuietErrors quiet;
    // Some formats report damage beside success and hand out grey rows; any message counts as damage.
    if (!input->read_scanlines(0, 0, top, top + count, 0, 0, channels, storedType, stored.data()) ||
        input->has_error())
        fail(first, count);
    return stored.data();
}

const std::byte* OiioReader::tileRow(int first, int& rowsThere) {
    const OIIO::ImageSpec& spec = input->spec();
    const int begin = first / spec.tile_height * spec.tile_height;
    const int rows = std::min(spec.tile_height, about.height - begin);
    if (begin != tileRowFirst) {
        stored.resize(rowBytes * static_cast<std::size_t>(rows));
        tileRowFirst = -1;
        if (!input->read_tiles(0, 0, spec.x, spec.x + spec.width, spec.y + begin, spec.y + begin + rows,
                               spec.z, spec.z + 1, 0, spec.nchannels, storedType, stored.data()) ||
            input->has_error())
            fail(begin, rows);
        tileRowFirst = begin;
    }
    rowsThere = begin + rows - first;
    return stored.data() + static_cast<std::size_t>(first - begin) * rowBytes;
}

void OiioReader::decodeRow(int row, const std::byte* from, krod::RGBAHalf* out) {
    const auto width = static_cast<std::size_t>(about.width);
    countLoss(row, decoder->decode(from, width, out));
    if (!about.hasAlpha || !comesMultiplied(about.format)) return;
    for (std::size_t x = 0; x < width; ++x) out[x] = changedByAlpha(out[x], AlphaChange::Divide);
}

void OiioReader::decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows*) {
    const auto width = static_cast<std::size_t>(about.width);
    while (count > 0) {
        int rows = std::min(StepRows, count);
        const std::byte* from = nullptr;
        if (input->spec().tile_width > 0) {
            int rowsThere = 0;
            from = tileRow(first, rowsThere);
            rows = std::min(rowsThere, count);
        } else {
            from = storedRows(first, rows);
        }
        for (int row = 0; row < rows; ++row, from += rowBytes, out += width)
            decodeRow(first + row, from, out);
        first += rows;
        count -= rows;
    }
}

} // namespace workbench
