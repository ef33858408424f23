// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/jpeg/JpegWriter.h"

#include "workbench/files/Reason.h"
#include "workbench/files/jpeg/JpegMetadata.h"
#include "workbench/report/Failure.h"

#include <jerror.h>

namespace workbench {
namespace {

constexpr int UsualQuality = 95;
constexpr std::size_t BufferBytes = std::size_t{64} << 10;

} // namespace

JpegWriter::JpegWriter(const std::filesystem::path& path, const PictureDescription& description,
                       const WriteOptions& options)
    : PictureWriter(path, description, options),
      encoder(storedDepth, about.isGrey ? 1 : 3, options.srgb, ValueRange::Unit),
      target(path, options.noClobber),
      buffer(BufferBytes) {
    destination.writer = this;
    destination.functions.init_destination = [](j_compress_ptr) {};
    destination.functions.empty_output_buffer = onFull;
    destination.functions.term_destination = onEnd;
    destination.functions.next_output_byte = buffer.data();
    destination.functions.free_in_buffer = buffer.size();
    jpeg.err = messages.handlers();
    begin(options);
}

JpegWriter::~JpegWriter() { jpeg_destroy_compress(&jpeg); }

void JpegWriter::begin(const WriteOptions& options) {
    const JpegHead head = jpegHead(about, droppedNames);
    const bool isBegun = messages.succeeds([&] {
        jpeg_create_compress(&jpeg);
        jpeg.dest = &destination.functions;
        jpeg.image_width = static_cast<JDIMENSION>(about.width);
        jpeg.image_height = static_cast<JDIMENSION>(about.height);
        jpeg.input_components = about.isGrey ? 1 : 3;
        jpeg.in_color_space = about.isGrey ? JCS_GRAYSCALE : JCS_RGB;
        jpeg_set_defaults(&jpeg);
        jpeg_set_quality(&jpeg, options.quality.value_or(UsualQuality), TRUE);
        jpeg.comp_info[0].h_samp_factor = jpeg.comp_info[0].v_samp_factor = 1; // colors at full size
        jpeg.density_unit = static_cast<UINT8>(head.densityUnit);
        jpeg.X_density = static_cast<UINT16>(head.densityX);
        jpeg.Y_density = static_cast<UINT16>(head.densityY);
        jpeg_start_compress(&jpeg, TRUE);
        for (const JpegSegment& segment : head.segments)
            jpeg_write_marker(&jpeg, segment.marker, reinterpret_cast<const JOCTET*>(segment.bytes.data()),
                              static_cast<unsigned>(segment.bytes.size()));
        if (head.profile)
            jpeg_write_icc_profile(&jpeg, reinterpret_cast<const JOCTET*>(head.profile->bytes.data()),
                                   static_cast<unsigned>(head.profile->bytes.size()));
    });
    if (!isBegun) fail();
}

/// Called by libjpeg, which must not be left by an exception.
void JpegWriter::flush(j_compress_ptr state, std::size_t size) {
    bool isWritten = true;
    try {
        target.write(buffer.data(), size);
    } catch (const Failure&) { // remembered by the file
        isWritten = false;
    }
    if (!isWritten) ERREXIT(state, JERR_FILE_WRITE);
    destination.functions.next_output_byte = buffer.data();
    destination.functions.free_in_buffer = buffer.size();
}

boolean JpegWriter::onFull(j_compress_ptr state) {
    JpegWriter& writer = *reinterpret_cast<Destination*>(state->dest)->writer;
    writer.flush(state, writer.buffer.size()); // whatever free_in_buffer says, all of it is full
    return TRUE;
}

void JpegWriter::onEnd(j_compress_ptr state) {
    JpegWriter& writer = *reinterpret_cast<Destination*>(state->dest)->writer;
    writer.flush(state, writer.buffer.size() - writer.destination.functions.free_in_buffer);
}

void JpegWriter::encodeRows(int, int count, const krod::RGBAHalf* pixels, const ExtraRows*) {
    const auto width = static_cast<std::size_t>(about.width);
    encoded.resize(width * (about.isGrey ? 1U : 3U));
    for (int row = 0; row < count; ++row) {
        encoder.encode(pixels + static_cast<std::size_t>(row) * width, width, encoded.data());
        auto* values = reinterpret_cast<JSAMPROW>(encoded.data());
        if (!messages.succeeds([&] { jpeg_write_scanlines(&jpeg, &values, 1); })) fail();
    }
}

void JpegWriter::complete() {
    if (!messages.succeeds([&] { jpeg_finish_compress(&jpeg); })) fail();
    target.finish();
}

void JpegWriter::fail() {
    if (target.failed()) target.throwFailure();
    throw Failure(
        Fault::Output,
        {file.string(), "cannot be written as a JPEG picture", "", reasonText(messages.reason()), "", {}});
}

} // namespace workbench
