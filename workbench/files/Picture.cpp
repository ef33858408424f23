// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/Picture.h"

#include "workbench/files/InputKind.h"
#include "workbench/files/PictureMagic.h"
#include "workbench/files/codec/CodecLibrary.h"
#include "workbench/files/codec/PictureCodec.h"
#include "workbench/files/exr/ExrReader.h"
#include "workbench/files/exr/ExrWriter.h"
#include "workbench/files/jpeg/JpegReader.h"
#include "workbench/files/jpeg/JpegWriter.h"
#include "workbench/files/metadata/IccProfile.h"
#include "workbench/files/png/PngReader.h"
#include "workbench/files/png/PngWriter.h"
#include "workbench/files/reader/LocalReader.h"
#include "workbench/files/reader/PictureHead.h"
#include "workbench/files/reader/RemoteReader.h"
#include "workbench/files/reader/UprightReader.h"
#include "workbench/platform/ProcessLimits.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

namespace workbench {
namespace {

/// The factory's type follows from its name in the codec library.
const PictureCodec& pictureCodec() {
    constexpr std::uint64_t Addresses = std::uint64_t{384} << 20; // as measured
    static const auto factory = reinterpret_cast<const PictureCodec* (*)()>(codecFunction(
        "krod_picture_codec.so", "krodPictureCodec", "libopenimageio2.4", Addresses + bytesOfThreads()));
    return *factory();
}

void checkExtraRows(const PictureDescription& about, int count, const ExtraRows* extra) {
    if (!extra || extra->size() != about.extraChannels.size())
        throw std::logic_error("rows of the additional channels are missing");
    for (std::size_t i = 0; i < extra->size(); ++i) {
        const std::size_t values = static_cast<std::size_t>(count) * static_cast<std::size_t>(about.width);
        if ((*extra)[i].size() != values * about.extraChannels[i].bytesPerValue())
            throw std::logic_error("rows of the additional channel " + about.extraChannels[i].name +
                                   " have a wrong size");
    }
}

} // namespace

std::chrono::milliseconds PictureLimits::usualTime() {
    unsigned seconds = 30;
    if (const char* const text = std::getenv("KROD_PICTURE_SECONDS")) {
        const std::string_view digits = text;
        std::from_chars(digits.data(), digits.data() + digits.size(), seconds);
    }
    return std::chrono::seconds(seconds);
}

std::unique_ptr<PictureReader> PictureReader::open(const std::filesystem::path& path,
                                                   const PictureLimits& limits, bool linear) {
    checkInputFile(path);
    if (lowerExtension(path) == "exr" && ownFormatOf(path) != OwnFormat::Exr)
        throw Failure(Fault::Input, {path.string(),
                                     "is named .exr but is no EXR file",
                                     "the four bytes 76 2f 31 01 at its start",
                                     "other ones",
                                     "Check how the file was made, or give it its right extension",
                                     {}});
    checkDeclaredSize(path);
    auto reader = std::make_unique<RemoteReader>(path, limits, ReaderProgram::usual(), linear);
    if (reader->description().orientation == 1) return reader;
    return std::make_unique<UprightReader>(std::move(reader));
}

std::unique_ptr<PictureReader> openPictureHere(const std::filesystem::path& path) {
    switch (ownFormatOf(path)) {
    case OwnFormat::Exr:
        return std::make_unique<ExrReader>(path);
    case OwnFormat::Png:
        return std::make_unique<PngReader>(path);
    case OwnFormat::Jpeg:
        return std::make_unique<JpegReader>(path);
    case OwnFormat::None:
        break;
    }
    return pictureCodec().open(path);
}

void loadPictureCodec() { static_cast<void>(pictureCodec()); }

void PictureReader::readRows(int first, int count, krod::RGBAHalf* out, ExtraRows* extra) {
    if (first < 0 || count < 0 || first > about.height - count)
        throw std::out_of_range("rows outside of the picture");
    if (extra) {
        extra->resize(about.extraChannels.size());
        const std::size_t values = static_cast<std::size_t>(count) * static_cast<std::size_t>(about.width);
        for (std::size_t i = 0; i < extra->size(); ++i)
            (*extra)[i].resize(values * about.extraChannels[i].bytesPerValue());
    }
    firstRow = first;
    rowLoss.assign(static_cast<std::size_t>(count), {});
    decodeRows(first, count, out, extra);
    countedRows = std::max(countedRows, first + count);
}

void PictureReader::countLoss(int row, const ValueLoss& loss) {
    rowLoss[static_cast<std::size_t>(row - firstRow)].add(loss);
    if (row >= countedRows) allLoss.add(loss);
}

void PictureReader::decodeLinear() { throw std::logic_error("this reader knows nothing of sRGB"); }

void PictureReader::linearize() {
    if (about.transfer != Transfer::Srgb) return;
    decodeLinear();
    about.transfer = Transfer::Linear;
}

namespace {

/// The libraries behind some formats end the process where a picture is too large for them.
void requireSideWithin(const PictureFormat& format, const std::filesystem::path& path, int side) {
    if (side <= format.largestSide) return;
    throw Failure(Fault::Output, {path.string(),
                                  "is too large for a " + std::string(format.name) + " picture",
                                  "at most " + std::to_string(format.largestSide) + " pixels a side",
                                  std::to_string(side),
                                  "Write .exr or .png",
                                  {}});
}

} // namespace

std::unique_ptr<PictureWriter> PictureWriter::create(const std::filesystem::path& path,
                                                     const PictureDescription& description,
                                                     const WriteOptions& options) {
    const std::string_view format = outputFormat(path).name;
    if (format == "EXR") return std::make_unique<ExrWriter>(path, description, options);
    if (format == "JPEG") return std::make_unique<JpegWriter>(path, description, options);
    if (format == "PNG") return std::make_unique<PngWriter>(path, description, options);
    return pictureCodec().create(path, description, options);
}

PictureWriter::PictureWriter(std::filesystem::path path, PictureDescription description,
                             const WriteOptions& options)
    : file(std::move(path)),
      about(std::move(description)),
      storedDepth(outputDepth(file, about.depth, options.depth)),
      alphaAsItStands(options.alphaAsItStands),
      tileSide(options.tileSide) {
    const PictureFormat& format = outputFormat(file);
    requireCompression(file, options);
    if (options.srgb) about.transfer = Transfer::Srgb;
    if (about.transfer == Transfer::Srgb)
        about.setText(ColorSpaceName, "sRGB");
    else if (const Metadatum* const space = about.find(ColorSpaceName); space && isSrgbName(space->text))
        about.remove(ColorSpaceName);
    requireSideWithin(format, file, std::max(about.width, about.height));
    if (about.hasAlpha && !format.holdsAlpha) {
        about.hasAlpha = false;
        droppedNames.emplace_back("A");
    }
    if (!format.holdsGrey) about.isGrey = false;
    nameLostGeometry(format);
    const Metadatum* profile = about.find(IccName);
    if (profile && !isProfileOf(profile->bytes, about.isGrey, options.srgb)) {
        about.remove(IccName);
        droppedNames.emplace_back(IccName);
    }
    if (format.name == "EXR") return;
    for (const auto& channel : about.extraChannels) droppedNames.push_back(channel.name);
    about.extraChannels.clear();
}

void PictureWriter::writeRows(int first, int count, const krod::RGBAHalf* pixels, const ExtraRows* extra) {
    if (first != nextRow || count < 0 || count > about.height - first)
        throw std::logic_error("rows of a picture are written in order, each once");
    if (!about.extraChannels.empty()) checkExtraRows(about, count, extra);
    encodeRows(first, count, pixels, extra);
    nextRow += count;
}

void PictureWriter::writeBlock(const PixelWindow& part, const krod::RGBAHalf* pixels) {
    const auto isPart = [&](int begin, int length, int total) {
        const bool ends = length == total - begin || (tileSide > 0 && length % tileSide == 0);
        return tileSide > 0 && begin >= 0 && begin % tileSide == 0 && length > 0 && length <= total - begin &&
               ends;
    };
    if (nextRow > 0 || !isPart(part.x, part.width, about.width) || !isPart(part.y, part.height, about.height))
        throw std::logic_error("a part of a picture does not consist of its tiles");
    encodeBlock(part, pixels);
    blockPixels += std::int64_t{part.width} * part.height;
}

void PictureWriter::encodeBlock(const PixelWindow&, const krod::RGBAHalf*) {
    throw std::logic_error("the format of a picture has no tiles");
}

/// EXR holds everything; TIFF a place within the whole picture.
void PictureWriter::nameLostGeometry(const PictureFormat& format) {
    if (format.name == "EXR") return;
    const PixelWindow data{about.dataX, about.dataY, about.width, about.height};
    const PixelWindow whole = about.displayWindow.value_or(data);
    const bool isPlaced = format.name == "TIFF" && whole.x == 0 && whole.y == 0 && data.x >= 0 && data.y >= 0;
    if (data != whole && !isPlaced) {
        droppedNames.push_back("the display window of " + std::to_string(whole.width) + 'x' +
                               std::to_string(whole.height) + " pixels, where the picture began at " +
                               std::to_string(data.x - whole.x) + ',' + std::to_string(data.y - whole.y));
        about.displayWindow.reset();
    }
    if (!isPlaced) about.dataX = about.dataY = 0;
    if (about.pixelAspect != 1 && !format.holdsAspect) droppedNames.emplace_back("the pixels' aspect ratio");
}

AlphaChange PictureWriter::alphaChange() const {
    const std::optional<bool> associated = outputFormat(file).alphaIsAssociated;
    if (alphaAsItStands || !about.hasAlpha || !associated || *associated == about.alphaIsAssociated)
        return AlphaChange::None;
    return *associated ? AlphaChange::Multiply : AlphaChange::Divide;
}

std::uint64_t PictureWriter::mostBytes() const {
    std::uint64_t bytes =
        ((about.isGrey ? 1U : 3U) + (about.hasAlpha ? 1U : 0U)) * bytesPerValue(storedDepth);
    for (const ExtraChannel& channel : about.extraChannels) bytes += channel.bytesPerValue();
    return bytes * static_cast<std::uint64_t>(about.width) * static_cast<std::uint64_t>(about.height);
}

void PictureWriter::finish() {
    if (nextRow != about.height && blockPixels != std::int64_t{about.width} * about.height)
        throw std::logic_error("a picture is finished before all its rows are written");
    complete();
}

Picture readPicture(const std::filesystem::path& path, bool linear) {
    const auto reader = PictureReader::open(path, {}, linear);
    Picture picture{reader->description(), {}, {}, {}};
    const auto& about = picture.description;
    picture.pixels.resize(static_cast<std::size_t>(about.width) * static_cast<std::size_t>(about.height));
    reader->readRows(0, about.height, picture.pixels.data(),
                     about.extraChannels.empty() ? nullptr : &picture.extra);
    picture.loss = reader->loss();
    return picture;
}

void writePicture(const std::filesystem::path& path, const Picture& picture, const WriteOptions& options) {
    const auto writer = PictureWriter::create(path, picture.description, options);
    writer->writeRows(0, picture.description.height, picture.pixels.data(), &picture.extra);
    writer->finish();
}

} // namespace workbench
