// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/codec/OiioWriter.h"

#include "workbench/files/Reason.h"
#include "workbench/files/codec/OiioMetadata.h"
#include "workbench/files/codec/OiioTypes.h"
#include "workbench/files/codec/QuietErrors.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <cerrno>

namespace workbench {
namespace {

constexpr int StepRows = 64;

ValueRange rangeOf(const PictureFormat& format, PixelDepth depth) {
    if (depth == PixelDepth::UInt8 || depth == PixelDepth::UInt16) return ValueRange::Unit;
    return format.name == "HDR" ? ValueRange::NonNegative : ValueRange::All;
}

std::string codecName(const PictureFormat& format) { return format.name == "TIFF" ? "tiff" : "hdr"; }

} // namespace

bool OiioWriter::Proxy::seek(int64_t offset) {
    try {
        file.seek(static_cast<std::uint64_t>(offset));
        return true;
    } catch (const Failure&) { // remembered by the file
        return false;
    }
}

size_t OiioWriter::Proxy::write(const void* data, size_t size) {
    try {
        file.write(data, size);
        end = std::max<size_t>(end, file.position());
        return size;
    } catch (const Failure&) { // remembered by the file
        return 0;
    }
}

OiioWriter::OiioWriter(const std::filesystem::path& path, const PictureDescription& description,
                       const WriteOptions& options)
    : PictureWriter(path, description, options),
      format(outputFormat(path)),
      channels((about.isGrey ? 1 : 3) + (about.hasAlpha ? 1 : 0)),
      encoder(storedDepth, channels, options.srgb, rangeOf(format, storedDepth), alphaChange()),
      target(path, options.noClobber),
      proxy(target),
      output(OIIO::ImageOutput::create(codecName(format))) {
    const OIIO::ImageSpec spec = imageSpec(options);
    // TIFF files with Exif directories come out broken through a proxy, since libtiff cannot find its directories again
    // (OpenImageIO 2.4). They are written into the temporary file by name.
    const bool byName = format.name == "TIFF";
    if (!output || (!byName && !output->set_ioproxy(&proxy)) ||
        !output->open((byName ? target.temporary() : path).string(), spec))
        fail();
    if (output->spec().format != spec.format || output->spec().nchannels != spec.nchannels) {
        output->errorfmt("its library stores other values than asked for");
        fail();
    }
}

OiioWriter::~OiioWriter() {
    const QuietErrors quiet;
    if (output) output->close(); // may still write into the file, which is then thrown away
}

OIIO::ImageSpec OiioWriter::imageSpec(const WriteOptions& options) {
    OIIO::ImageSpec spec(about.width, about.height, channels, typeOf(storedDepth));
    if (channels == 2) { // two channels have no names by themselves
        spec.channelnames = {"Y", "A"};
        spec.alpha_channel = 1;
    }
    enterMetadata(about.metadata, format, spec, droppedNames);
    spec.x = about.dataX;
    spec.y = about.dataY;
    if (const auto& display = about.displayWindow) {
        spec.full_x = display->x;
        spec.full_y = display->y;
        spec.full_width = display->width;
        spec.full_height = display->height;
    }
    if (format.name != "TIFF") { // HDR has no place for windows
        spec.x = spec.y = spec.full_x = spec.full_y = 0;
        spec.full_width = spec.width;
        spec.full_height = spec.height;
    }
    // A TIFF without a date would get the present one; the same work is to leave the same bytes. Blanks between the
    // colons mean an unknown date.
    if (format.name == "TIFF" && !about.find("DateTime")) spec.attribute("DateTime", "    :  :     :  :  ");
    if (format.name == "TIFF" && storedDepth == PixelDepth::Half) spec.attribute("tiff:half", 1);
    // The library divides or multiplies for PNG as it sees fit, and writes TIFF as it comes with the tag for this.
    if (format.name == "TIFF" && about.hasAlpha && !about.alphaIsAssociated)
        spec.attribute("oiio:UnassociatedAlpha", 1);
    if (options.compression)
        spec.attribute("compression", *options.compression);
    else if (format.name == "TIFF" && spec.get_string_attribute("compression") == "jpeg")
        spec.attribute("compression", "zip"); // what loses is used only where it is asked for
    if (options.srgb) spec.attribute("oiio:ColorSpace", "sRGB");
    return spec;
}

void OiioWriter::encodeRows(int first, int count, const krod::RGBAHalf* pixels, const ExtraRows*) {
    const auto width = static_cast<std::size_t>(about.width);
    const std::size_t rowBytes = width * static_cast<std::size_t>(channels) * bytesPerValue(storedDepth);
    for (int row = 0; row < count; row += StepRows) {
        const int rows = std::min(StepRows, count - row);
        encoded.resize(rowBytes * static_cast<std::size_t>(rows));
        encoder.encode(pixels + static_cast<std::size_t>(row) * width, width * static_cast<std::size_t>(rows),
                       encoded.data());
        const int top = output->spec().y + first + row;
        errno = 0; // what is found there afterwards comes from this call
        if (!output->write_scanlines(top, top + rows, 0, typeOf(storedDepth), encoded.data())) fail();
        if (target.failed()) target.throwFailure();
    }
}

void OiioWriter::complete() {
    errno = 0;
    const bool closed = output->close();
    if (!closed) fail();
    if (target.failed()) target.throwFailure();
    output.reset();
    target.finish();
}

void OiioWriter::fail() {
    const int cause = errno;
    if (!target.failed() && (cause == ENOSPC || cause == EFBIG || cause == EDQUOT)) target.setError(cause);
    if (target.failed()) target.throwFailure();
    throw Failure(Fault::Output, {file.string(),
                                  "cannot be written as a " + std::string(format.name) + " picture",
                                  "",
                                  reasonText(output ? output->geterror() : OIIO::geterror()),
                                  "",
                                  {}});
}

} // namespace workbench
