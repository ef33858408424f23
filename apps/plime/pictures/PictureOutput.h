// SPDX-License-Identifier: Apache-2.0
// The picture that a command leaves.
#pragma once

#include "apps/plime/commandline/Command.h"
#include "apps/plime/commandline/Options.h"
#include "apps/plime/terminal/Report.h"
#include "workbench/files/Picture.h"

#include <memory>
#include <optional>
#include <string>

namespace workbench {

/// What people ask of an output picture: -o, -d, --srgb, --no-network, --clip-negative, --compression, --quality.
struct OutputWish {
    std::optional<std::string> path;
    std::optional<std::string> depth;
    bool srgb = false;
    bool noNetwork = false;    ///< how it is made is not kept in it
    bool clip = false;         ///< values that the format cannot hold are not told
    bool clipNegative = false; ///< values below 0 become 0 before tile processors
    std::optional<std::string> compression = {}, quality = {};

    /// Adds the options to a command's syntax.
    void addTo(Syntax& syntax);
    /// The path. Throws Failure(Usage) without one, or when it is of no known format.
    [[nodiscard]] std::string requirePath() const;
    /// Throws Failure(Usage) for a depth that does not exist.
    [[nodiscard]] WriteOptions writeOptions(const GlobalOptions& global) const;
};

/// "2 of 3 pictures are written".
[[nodiscard]] std::string writtenText(std::size_t written, std::size_t all);
/// The interruption of one of several pictures, which says in addition how many of them are written.
[[nodiscard]] Failure interruptedAfter(std::size_t written, std::size_t all, const Failure& interruption);

/// Writes one picture and says what its format could not keep.
class PictureOutput {
public:
    /// How the picture is stored beyond what is wished for.
    struct Storage {
        int tileSide = 0;             ///< of tiles; 0: rows
        bool alphaAsItStands = false; ///< alpha is no coverage; see WriteOptions
    };

    /// Begins the file; see PictureWriter::create.
    PictureOutput(const OutputWish& wish, const GlobalOptions& global, const PictureDescription& description,
                  const Storage& storage);
    PictureOutput(const OutputWish& wish, const GlobalOptions& global, const PictureDescription& description)
        : PictureOutput(wish, global, description, {}) {}

    /// Writes the next rows.
    void write(int first, int count, const krod::RGBAHalf* pixels, const ExtraRows* extra = nullptr);
    /// Writes a part of a picture that is stored in tiles; see PictureWriter::writeBlock.
    void writeBlock(const PixelWindow& part, const krod::RGBAHalf* pixels);
    [[nodiscard]] PixelDepth depth() const { return writer->depth(); }
    /// Whether the writer divides or multiplies colors by alpha.
    [[nodiscard]] bool changesColorsByAlpha() const { return writer->alphaChange() != AlphaChange::None; }
    /// Throws Failure(Output) unless the disk has room for the picture, as large as it can become, and for so
    /// many bytes of finished tiles. Before the work.
    void requireRoom(std::uint64_t tiles) const;
    /// Completes the file, and tells about clipped values and dropped channels: as a warning where many pixels are
    /// concerned, else as a note, and values that are no numbers as a note, too, where a module's formula is known
    /// to make them. Throws Failure(Interrupted) when a signal has come: then nothing is left.
    void finish(Report& report, bool formulaMakesNaN = false);

private:
    void tell(Report& report, std::uint64_t values, bool isExpected, const Diagnostic& message) const;
    void tellOfValues(Report& report, bool formulaMakesNaN) const;

    std::string path;
    bool clip = false;
    std::size_t width = 0;
    std::uint64_t pixelCount = 0;
    bool isOpaque = true; ///< so far; known only where the format holds no alpha
    std::unique_ptr<PictureWriter> writer;
};

} // namespace workbench
