// SPDX-License-Identifier: Apache-2.0
// Reading and writing pictures, by rows or whole.
#pragma once

#include "host/rendering/RGBAHalf.h"
#include "workbench/files/Export.h"
#include "workbench/files/InputMemory.h"
#include "workbench/files/PictureDescription.h"
#include "workbench/files/PictureFormat.h"
#include "workbench/files/PixelConversion.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace workbench {

/// What reading a picture may take of the machine.
struct KROD_FILES_API PictureLimits {
    /// Without any progress; more for a picture so large that decoding it takes its time.
    std::chrono::milliseconds time = usualTime();
    /// Bytes, whatever the picture declares; less for a picture that declares little.
    std::uint64_t memory = inputMemory();

    /// 30 s, or as many as the environment variable KROD_PICTURE_SECONDS says, for slow machines and
    /// instrumented builds.
    [[nodiscard]] static std::chrono::milliseconds usualTime();
};

/// A picture that is read by rows from the top; memory stays at a few hundred rows where the format allows.
/// Values are as stored, integers divided by their maximum, unless they are made linear; grey is red, green and
/// blue alike; missing alpha is 1 and alpha is never multiplied into the colour nor divided out of it. Finite
/// values beyond the largest half become that. All errors are Failure(Input).
class KROD_FILES_API PictureReader {
public:
    /// Opens a picture of any readable format and checks its head. It is decoded by another process, so that a
    /// broken file can end that one at most; rows that will be asked for next are decoded ahead. With `linear`
    /// the colors of a picture that is sRGB are made linear. What is stored on its side is turned upright.
    [[nodiscard]] static std::unique_ptr<PictureReader>
    open(const std::filesystem::path& path, const PictureLimits& limits = {}, bool linear = false);
    virtual ~PictureReader() = default;
    PictureReader(const PictureReader&) = delete;
    PictureReader& operator=(const PictureReader&) = delete;

    [[nodiscard]] const PictureDescription& description() const { return about; }
    [[nodiscard]] const std::filesystem::path& path() const { return file; }

    /// Makes the colors linear where the picture is sRGB; before any rows are read. It is described as linear then.
    void linearize();

    /// Reads `count` rows from row `first` (0 is the top) into count * width pixels at `out`. With `extra`,
    /// fills it with the same rows of the additional channels. Going upwards is allowed, but slow in some
    /// formats.
    void readRows(int first, int count, krod::RGBAHalf* out, ExtraRows* extra = nullptr);

    /// What values lost when they became halves; each row counts once when rows are read downwards.
    [[nodiscard]] const ValueLoss& loss() const { return allLoss; }
    /// The same for each of the rows that were read last.
    [[nodiscard]] const std::vector<ValueLoss>& lossByRow() const { return rowLoss; }

protected:
    explicit PictureReader(std::filesystem::path path) : file(std::move(path)) {}

    /// Decodes rows that are known to lie inside; `extra` has its right size.
    virtual void decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows* extra) = 0;
    /// What one of these rows lost.
    void countLoss(int row, const ValueLoss& loss);
    /// From now on decodes sRGB to linear colors; for readers that can describe a picture as sRGB.
    virtual void decodeLinear();

    std::filesystem::path file;
    PictureDescription about;

private:
    int countedRows = 0; ///< rows above this one have had their loss counted
    ValueLoss allLoss;
    int firstRow = 0; ///< of the rows that were read last
    std::vector<ValueLoss> rowLoss;
};

/// A picture that is written by rows from the top. It appears under its name in `finish()`, complete;
/// destroyed without it, nothing is left. All errors but wrong wishes (Failure(Usage)) are Failure(Output).
class KROD_FILES_API PictureWriter {
public:
    /// Begins a file in the format of the extension. A grey description writes red only, so clear `isGrey`
    /// when a grey picture may have become coloured; alpha is written when the description has it and the
    /// format holds it.
    [[nodiscard]] static std::unique_ptr<PictureWriter> create(const std::filesystem::path& path,
                                                               const PictureDescription& description,
                                                               const WriteOptions& options = {});
    virtual ~PictureWriter() = default;
    PictureWriter(const PictureWriter&) = delete;
    PictureWriter& operator=(const PictureWriter&) = delete;

    /// Writes the next `count` rows; `first` must be the row after the last one (else std::logic_error). A
    /// description with additional channels needs their rows in `extra` when the format is EXR.
    void writeRows(int first, int count, const krod::RGBAHalf* pixels, const ExtraRows* extra = nullptr);

    /// Writes a part of a picture that is stored in tiles, in any order, each pixel once. It begins at a border
    /// of tiles and ends at one or at the picture's edge (else std::logic_error). The pixels are its rows.
    void writeBlock(const PixelWindow& part, const krod::RGBAHalf* pixels);

    /// What the file takes at most where nothing is gained by compression, without its head.
    [[nodiscard]] std::uint64_t mostBytes() const;

    /// Completes the file; all pixels must have been written.
    void finish();

    /// The depth that is written.
    [[nodiscard]] PixelDepth depth() const { return storedDepth; }
    /// What is done to colors because the format treats alpha otherwise than the description.
    [[nodiscard]] AlphaChange alphaChange() const;
    /// Channels and metadata that the format cannot hold, by name; alpha is "A".
    [[nodiscard]] const std::vector<std::string>& dropped() const { return droppedNames; }
    /// How many values the format clipped so far, and the smallest and the largest of them and 0, before
    /// clipping.
    [[nodiscard]] virtual std::uint64_t clippedCount() const { return 0; }
    [[nodiscard]] virtual float smallestValue() const { return 0; }
    [[nodiscard]] virtual float largestValue() const { return 0; }
    /// How many pixels held values that are no numbers, which the format does not; see PixelEncoder.
    [[nodiscard]] virtual std::uint64_t notNumberCount() const { return 0; }

protected:
    PictureWriter(std::filesystem::path path, PictureDescription description, const WriteOptions& options);

    virtual void encodeRows(int first, int count, const krod::RGBAHalf* pixels, const ExtraRows* extra) = 0;
    /// Of a writer that stores no tiles, throws std::logic_error.
    virtual void encodeBlock(const PixelWindow& part, const krod::RGBAHalf* pixels);
    virtual void complete() = 0;
    std::filesystem::path file;
    PictureDescription about;
    PixelDepth storedDepth;
    std::vector<std::string> droppedNames;

private:
    void nameLostGeometry(const PictureFormat& format);

    bool alphaAsItStands;
    int tileSide;
    int nextRow = 0;
    std::int64_t blockPixels = 0; ///< written in blocks
};

/// A whole picture; pixels from the top row on.
struct Picture {
    PictureDescription description;
    std::vector<krod::RGBAHalf> pixels;
    ExtraRows extra = {};
    ValueLoss loss = {}; ///< of one that was read
};

/// Reads or writes a picture at once, with its additional channels. With `linear` as PictureReader::open.
[[nodiscard]] KROD_FILES_API Picture readPicture(const std::filesystem::path& path, bool linear = false);
KROD_FILES_API void writePicture(const std::filesystem::path& path, const Picture& picture,
                                 const WriteOptions& options = {});

} // namespace workbench
