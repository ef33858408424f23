// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/jpeg/JpegReader.h"

#include "workbench/files/Reason.h"
#include "workbench/files/jpeg/JpegMetadata.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

#include <jerror.h>

namespace workbench {
namespace {

/// libjpeg's own buffers.
constexpr std::uint64_t LibraryBytes = std::uint64_t{1} << 20;

/// The coefficients of a picture whose scans are read one after the other.
std::uint64_t coefficientBytes(const jpeg_decompress_struct& jpeg) {
    std::uint64_t blocks = 0;
    for (int i = 0; i < jpeg.num_components; ++i)
        blocks += std::uint64_t{jpeg.comp_info[i].width_in_blocks} * jpeg.comp_info[i].height_in_blocks;
    return blocks * DCTSIZE2 * sizeof(JCOEF);
}

/// True where each coefficient of a progressive picture has come to its last bit.
bool isComplete(const jpeg_decompress_struct& jpeg) {
    if (!jpeg.coef_bits) return false;
    for (int component = 0; component < jpeg.num_components; ++component)
        for (int i = 0; i < DCTSIZE2; ++i)
            if (jpeg.coef_bits[component][i] != 0) return false;
    return true;
}

/// The marker of the end cannot stand among packed pixels. A file that ends without it was not written to its end,
/// or by a program that leaves it out.
bool hasEndMarker(const std::filesystem::path& path) {
    constexpr std::streamoff Looked = 65536;
    std::ifstream in(path, std::ios::binary);
    const auto size = static_cast<std::streamoff>(std::filesystem::file_size(path));
    in.seekg(std::max<std::streamoff>(0, size - Looked));
    const std::string end{std::istreambuf_iterator<char>(in), {}};
    return end.find("\xff\xd9") != std::string::npos;
}

/// C, M, Y and K to red, green and blue, in place. Programs that say who they are (in segment APP14) store how
/// much light is left, others how much ink there is.
void colorsOfInks(std::vector<std::byte>& row, std::size_t pixels, bool isLight) {
    auto* values = reinterpret_cast<unsigned char*>(row.data());
    for (std::size_t i = 0; i < pixels; ++i) {
        const auto light = [&](std::size_t ink) {
            return isLight ? values[4 * i + ink] : 255 - values[4 * i + ink];
        };
        const auto product = [black = light(3)](int color) { return (color * black + 127) / 255; };
        const int colors[] = {product(light(0)), product(light(1)), product(light(2))};
        for (std::size_t c = 0; c < 3; ++c) values[3 * i + c] = static_cast<unsigned char>(colors[c]);
    }
}

} // namespace

JpegReader::JpegReader(const std::filesystem::path& path) : PictureReader(path) {
    begin();
    describe();
    noteWarnings();
    if (jpeg_has_multiple_scans(&jpeg) != 0) return; // it would be decoded now
    start();
    noteWarnings();
}

JpegReader::~JpegReader() {
    if (isCreated) jpeg_destroy_decompress(&jpeg);
}

/// Opens the file and reads the segments before its pixels.
void JpegReader::begin() {
    if (isCreated) jpeg_destroy_decompress(&jpeg);
    isCreated = isStarted = false;
    input.reset(std::fopen(file.c_str(), "rb"));
    if (!input)
        throw Failure(Fault::Input, {file.string(), "cannot be read", "", std::strerror(errno), "", {}});
    jpeg.err = messages.handlers();
    const bool isRead = messages.succeeds([&] {
        jpeg_create_decompress(&jpeg);
        isCreated = true;
        jpeg_stdio_src(&jpeg, input.get());
        saveJpegSegments(&jpeg);
        jpeg_read_header(&jpeg, TRUE);
    });
    if (!isRead) fail("cannot be read as a JPEG picture", messages.reason());
    nextRow = 0;
}

void JpegReader::describeColors() {
    const int components = jpeg.num_components;
    const bool isInks = jpeg.jpeg_color_space == JCS_CMYK || jpeg.jpeg_color_space == JCS_YCCK;
    about.isGrey = components == 1;
    if (components != 1 && components != 3 && !isInks)
        fail("cannot be read as a JPEG picture",
             std::to_string(components) + " unknown colors for each pixel");
    jpeg.out_color_space = about.isGrey ? JCS_GRAYSCALE : isInks ? JCS_CMYK : JCS_RGB;
    if (isInks) about.notes.emplace_back("its four inks became red, green and blue without their profile");
    decoder.emplace(PixelDepth::UInt8, about.isGrey ? 1 : 3, about.isGrey, -1);
}

void JpegReader::describe() {
    checkPictureSize(file, jpeg.image_width, jpeg.image_height, jpeg.num_components, jpeg.num_components,
                     std::filesystem::file_size(file));
    about.format = "jpeg";
    about.isLossy = true;
    about.depth = PixelDepth::UInt8;
    about.width = static_cast<int>(jpeg.image_width);
    about.height = static_cast<int>(jpeg.image_height);
    about.displayWindow = {0, 0, about.width, about.height};
    describeColors();
    const std::size_t rowBytes = jpeg.image_width * static_cast<std::size_t>(jpeg.num_components);
    stored.resize(rowBytes);
    constexpr std::uint64_t RowsHeld = 3 * MAX_SAMP_FACTOR * DCTSIZE;
    about.readerBytes = RowsHeld * rowBytes + LibraryBytes;
    if (jpeg_has_multiple_scans(&jpeg) != 0) about.readerBytes += coefficientBytes(jpeg);
    readJpegMetadata(&jpeg, about);
    if (!hasEndMarker(file)) about.notes.emplace_back("the marker of its end is missing");
}

/// Decompression begins; the picture's colors are chosen again after `begin`.
void JpegReader::start() {
    const J_COLOR_SPACE colors = about.isGrey ? JCS_GRAYSCALE : jpeg.num_components == 4 ? JCS_CMYK : JCS_RGB;
    jpeg.out_color_space = colors;
    messages.forgetWarnings(); // those of the head
    isStarted = true;
    if (!messages.succeeds([&] { jpeg_start_decompress(&jpeg); }))
        fail("cannot be read as a JPEG picture", messages.reason());
}

/// What is wrong so far, and may be.
void JpegReader::noteWarnings() {
    if (isDamaged()) fail("cannot be read as a JPEG picture", messages.warningText());
    if (!messages.warnings().empty())
        about.notes.push_back("a fault was passed over: " + reasonText(messages.warningText()));
    messages.forgetWarnings();
}

/// Warnings that leave the pixels as they were meant. A file that ends early is whole where nothing but its last
/// marker is missing: of one scan libjpeg says in another warning that pixels are missing.
bool JpegReader::isDamaged() {
    return std::any_of(messages.warnings().begin(), messages.warnings().end(), [&](int number) {
        switch (number) {
        case JWRN_NOT_SEQUENTIAL:
        case JWRN_JFIF_MAJOR:
        case JWRN_ADOBE_XFORM:
        case JWRN_BOGUS_ICC:
            return false;
        case JWRN_EXTRANEOUS_DATA: // between segments; among pixels, some of them are missing
            return isStarted;
        case JWRN_JPEG_EOF:
            return jpeg.arith_code != 0 || (jpeg_has_multiple_scans(&jpeg) != 0 && !isComplete(jpeg));
        default:
            return true;
        }
    });
}

void JpegReader::fail(std::string what, std::string got) {
    throw Failure(Fault::Input, {file.string(),
                                 std::move(what),
                                 "",
                                 reasonText(std::move(got)),
                                 "The file is damaged or was not written to its end",
                                 {}});
}

const std::byte* JpegReader::nextStoredRow() {
    auto* row = reinterpret_cast<JSAMPROW>(stored.data());
    const bool isRead = messages.succeeds([&] { jpeg_read_scanlines(&jpeg, &row, 1); });
    if (!isRead || isDamaged())
        fail("cannot be read at the row " + std::to_string(nextRow) + " of " + std::to_string(about.height),
             isRead ? messages.warningText() : messages.reason());
    ++nextRow;
    if (jpeg.out_color_space == JCS_CMYK)
        colorsOfInks(stored, static_cast<std::size_t>(about.width), jpeg.saw_Adobe_marker != 0);
    return stored.data();
}

void JpegReader::decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows*) {
    const auto width = static_cast<std::size_t>(about.width);
    if (first < nextRow) begin();
    if (!isStarted) start();
    while (nextRow < first) nextStoredRow();
    for (int row = first; row < first + count; ++row, out += width)
        countLoss(row, decoder->decode(nextStoredRow(), width, out));
}

} // namespace workbench
