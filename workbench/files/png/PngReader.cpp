// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/png/PngReader.h"

#include "workbench/files/Reason.h"
#include "workbench/files/png/PngMetadata.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>

namespace workbench {
namespace {

/// libpng's own buffers, and the window of its decompression.
constexpr std::uint64_t LibraryBytes = std::uint64_t{1} << 20;

/// The number of an animation's frames, of which the first is read; 1 where there is no such chunk before the
/// pixels.
int frameCount(png_structp png, png_infop info) {
    png_unknown_chunkp chunks = nullptr;
    const int count = png_get_unknown_chunks(png, info, &chunks);
    for (int i = 0; i < count; ++i)
        if (std::memcmp(chunks[i].name, "acTL", 4) == 0 && chunks[i].size >= 4)
            return static_cast<int>(png_get_uint_31(png, chunks[i].data));
    return 1;
}

/// To values of 8 or 16 bits in this machine's order, without a palette. Calls libpng only.
void expand(png_structp png) {
    png_set_expand(png);
    if (std::endian::native == std::endian::little) png_set_swap(png);
}

} // namespace

PngReader::PngReader(const std::filesystem::path& path) : PictureReader(path) {
    begin();
    describe();
}

/// Opens the file and reads the chunks before its pixels.
void PngReader::begin() {
    input.reset(std::fopen(file.c_str(), "rb"));
    if (!input)
        throw Failure(Fault::Input, {file.string(), "cannot be read", "", std::strerror(errno), "", {}});
    png.emplace(PngSession::Use::Read);
    const bool isRead = png->succeeds([&] {
        png_structp state = png->state();
        png_init_io(state, input.get());
        png_set_user_limits(state, LargestSide, LargestSide);
        const png_byte animation[] = "acTL";
        png_set_keep_unknown_chunks(state, PNG_HANDLE_CHUNK_ALWAYS, animation, 1);
        png_read_info(state, png->info());
    });
    if (!isRead) fail("cannot be read as a PNG picture");
    nextRow = 0;
}

void PngReader::describe() {
    png_structp state = png->state();
    png_infop info = png->info();
    const auto width = png_get_image_width(state, info), height = png_get_image_height(state, info);
    const int storedDepth = png_get_bit_depth(state, info);
    const int type = png_get_color_type(state, info);
    const bool hasAlpha =
        (type & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(state, info, PNG_INFO_tRNS) != 0;
    isInterlaced = png_get_interlace_type(state, info) != PNG_INTERLACE_NONE;
    about.format = "png";
    about.isGrey = (type & PNG_COLOR_MASK_COLOR) == 0;
    about.hasAlpha = hasAlpha;
    about.depth = storedDepth == 16 ? PixelDepth::UInt16 : PixelDepth::UInt8;
    const int channels = (about.isGrey ? 1 : 3) + (hasAlpha ? 1 : 0);
    const std::size_t pixelBytes = static_cast<std::size_t>(channels) * bytesPerValue(about.depth);
    checkPictureSize(file, width, height, channels, static_cast<std::int64_t>(pixelBytes),
                     std::filesystem::file_size(file));
    about.width = static_cast<int>(width);
    about.height = static_cast<int>(height);
    about.displayWindow = {0, 0, about.width, about.height};
    rowBytes = width * pixelBytes;
    about.readerBytes = rowBytes * (isInterlaced ? height : 1) + 2 * rowBytes + LibraryBytes;
    decoder.emplace(about.depth, channels, about.isGrey, hasAlpha ? channels - 1 : -1);
    if (!png->succeeds([&] { about.furtherPictures = std::max(0, frameCount(state, info) - 1); }))
        about.furtherPictures = 0;
    if (about.furtherPictures > 0) about.furtherPicturesAre = "frames";
    readPngMetadata(*png, about);
    for (const std::string& warning : png->warnings())
        about.notes.push_back("a fault was passed over: " + reasonText(warning));
}

void PngReader::fail(std::string what) {
    throw Failure(Fault::Input, {file.string(),
                                 std::move(what),
                                 "",
                                 reasonText(png->reason()),
                                 "The file is damaged or was not written to its end",
                                 {}});
}

/// All passes of an interlaced picture.
void PngReader::decodeWhole() {
    stored.resize(rowBytes * static_cast<std::size_t>(about.height));
    std::vector<png_bytep> rows(static_cast<std::size_t>(about.height));
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i] = reinterpret_cast<png_bytep>(stored.data()) + i * rowBytes;
    if (!png->succeeds([&] { png_read_image(png->state(), rows.data()); }))
        fail("cannot be read at the rows 0 to " + std::to_string(about.height - 1) + " of " +
             std::to_string(about.height));
}

const std::byte* PngReader::storedRow(int row) {
    const bool isThere = isInterlaced && !stored.empty();
    if (isThere) return stored.data() + static_cast<std::size_t>(row) * rowBytes;
    if (row < nextRow) begin();
    if (nextRow == 0 && !png->succeeds([&] {
            expand(png->state());
            if (isInterlaced) png_set_interlace_handling(png->state());
            png_read_update_info(png->state(), png->info());
        }))
        fail("cannot be read as a PNG picture");
    if (isInterlaced) {
        decodeWhole();
        return storedRow(row);
    }
    stored.resize(rowBytes);
    while (nextRow <= row) {
        if (!png->succeeds(
                [&] { png_read_row(png->state(), reinterpret_cast<png_bytep>(stored.data()), nullptr); }))
            fail("cannot be read at the row " + std::to_string(nextRow) + " of " +
                 std::to_string(about.height));
        ++nextRow;
    }
    return stored.data();
}

void PngReader::decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows*) {
    const auto width = static_cast<std::size_t>(about.width);
    for (int row = first; row < first + count; ++row, out += width)
        countLoss(row, decoder->decode(storedRow(row), width, out));
}

} // namespace workbench
