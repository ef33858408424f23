// SPDX-License-Identifier: Apache-2.0
// Parallel PNG compression: bands of rows are filtered and deflated side by side into one zlib stream.
#pragma once

#include "workbench/files/png/PngFilter.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace workbench {

/// Bands have a size of their own, so that the bytes do not depend on the number of processors. Each band is
/// deflated with the 32 KiB before it as its dictionary and ends at a full byte, so that their concatenation is
/// one stream (RFC 1950, RFC 1951).
class PngPacker {
public:
    /// Takes the stream part by part.
    using Sink = std::function<void(const std::string& part)>;

    /// Works with so many threads, as many as there are processors where nothing else is said.
    PngPacker(std::size_t rowBytes, std::size_t bytesPerPixel, int height, Sink sink,
              std::size_t threads = usualThreads());

    /// At most 16.
    [[nodiscard]] static std::size_t usualThreads();

    /// The next rows as PNG stores them: big-endian, not filtered.
    void add(const std::byte* rows, int count);

private:
    struct Band {
        std::vector<std::uint8_t> filtered;
        std::string packed;
        std::uint32_t checksum = 1;
        bool isPlain = false, isLast = false;
    };

    void packRound();
    void filterBand(Band& band, std::size_t firstRow, std::size_t rows);
    [[nodiscard]] bool isSmallerPlain(const Band& band, std::size_t firstRow, std::size_t count) const;
    void writeBand(const Band& band);

    std::size_t rowBytes, bytesPerPixel, rowsPerBand, threads;
    int rowsLeft;
    Sink sink;
    std::vector<std::uint8_t> rows; ///< of the round, behind the last row of the one before
    std::size_t rowCount = 0;       ///< in the round
    bool hasRowAbove = false;
    std::vector<std::uint8_t> dictionary; ///< the end of what is filtered so far
    std::vector<Band> bands;
    std::uint32_t checksum = 1; ///< Adler-32 of what is filtered so far
    bool hasBegun = false;
};

} // namespace workbench
