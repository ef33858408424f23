// SPDX-License-Identifier: Apache-2.0
// Pictures that are stored on their side or mirrored, as they are to be seen.
#pragma once

#include "workbench/files/Picture.h"
#include "workbench/platform/Descriptor.h"

namespace workbench {

/// Turns the rows of another reader as its description's orientation says; the own one is 1. What cannot be turned
/// row by row is read once, from the top, into a temporary file without a name, so that memory stays at a few
/// hundred rows. A full disk is Failure(Output).
class UprightReader : public PictureReader {
public:
    explicit UprightReader(std::unique_ptr<PictureReader> stored);

private:
    void turnDescription();
    void decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows* extra) override;
    void decodeMirrored(int first, int count, krod::RGBAHalf* out);
    void decodeTurned(int first, int count, krod::RGBAHalf* out);
    void decodeTransposed(int first, int count, krod::RGBAHalf* out);
    void store();
    void writeStored(const std::vector<krod::RGBAHalf>& pixels);
    void readStored(std::size_t firstPixel, krod::RGBAHalf* out, std::size_t count);
    [[noreturn]] void failStoring(int cause);

    std::unique_ptr<PictureReader> source;
    int storedWidth, storedHeight;
    bool isTransposed; ///< rows become columns
    bool turnsRows;    ///< the last stored row, or column, comes first
    bool turnsColumns; ///< each row, or column, is stored backwards
    Descriptor temporary;
};

} // namespace workbench
