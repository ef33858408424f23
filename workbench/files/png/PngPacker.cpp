// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/png/PngPacker.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <exception>
#include <mutex>
#include <new>
#include <span>
#include <thread>

#include <zlib.h>

namespace workbench {
namespace {

/// Long enough that the joints cost less than a thousandth, short enough for sixteen processors.
constexpr std::size_t BandBytes = std::size_t{256} << 10;
constexpr std::size_t MostThreads = 16;
/// What deflate looks back at most.
constexpr std::size_t Window = 32768;
/// docs/performance.md says why.
constexpr int Level = 4;

std::size_t rowsInBand(std::size_t rowBytes) { return std::max<std::size_t>(1, BandBytes / (rowBytes + 1)); }

std::size_t threads() { return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, MostThreads); }

/// Does work(0) to work(count - 1) side by side; the first exception is thrown when all have ended.
template <typename Work>
void inParallel(std::size_t count, const Work& work) {
    std::atomic<std::size_t> next = 0;
    std::exception_ptr failure;
    std::mutex guard;
    const auto loop = [&] {
        try {
            for (std::size_t i = next++; i < count; i = next++) work(i);
        } catch (...) {
            const std::scoped_lock lock(guard);
            failure = std::current_exception();
        }
    };
    {
        std::vector<std::jthread> helpers;
        for (std::size_t i = 1; i < std::min(count, threads()); ++i) helpers.emplace_back(loop);
        loop();
    }
    if (failure) std::rethrow_exception(failure);
}

/// One part of a deflate stream.
std::string deflated(std::span<const std::uint8_t> data, std::span<const std::uint8_t> dictionary,
                     bool isLast) {
    z_stream stream{};
    constexpr int RawWindowBits = -15, MemoryLevel = 9;
    if (::deflateInit2(&stream, Level, Z_DEFLATED, RawWindowBits, MemoryLevel, Z_FILTERED) != Z_OK)
        throw std::bad_alloc();
    if (!dictionary.empty())
        ::deflateSetDictionary(&stream, dictionary.data(), static_cast<uInt>(dictionary.size()));
    constexpr std::size_t Joint = 16; // the empty block that fills up the last byte
    std::string packed(::deflateBound(&stream, static_cast<uLong>(data.size())) + Joint, '\0');
    stream.next_in = const_cast<Bytef*>(data.data());
    stream.avail_in = static_cast<uInt>(data.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    ::deflate(&stream, isLast ? Z_FINISH : Z_SYNC_FLUSH);
    packed.resize(packed.size() - stream.avail_out);
    ::deflateEnd(&stream);
    return packed;
}

} // namespace

PngPacker::PngPacker(std::size_t rowBytes, std::size_t bytesPerPixel, int height, Sink sink)
    : rowBytes(rowBytes),
      bytesPerPixel(bytesPerPixel),
      rowsPerBand(rowsInBand(rowBytes)),
      bandsPerRound(2 * threads()),
      rowsLeft(height),
      sink(std::move(sink)) {}

std::uint64_t PngPacker::mostBytes(std::size_t rowBytes) {
    // Rows, filtered rows and the stream, and what deflate needs for each thread.
    constexpr std::size_t Copies = 3, Deflater = std::size_t{1} << 20;
    return MostThreads * (2 * Copies * rowsInBand(rowBytes) * (rowBytes + 1) + Deflater);
}

void PngPacker::add(const std::byte* data, int count) {
    for (auto left = static_cast<std::size_t>(count); left > 0;) {
        const std::size_t taken = std::min(left, rowsPerBand * bandsPerRound - rowCount);
        const auto* from = reinterpret_cast<const std::uint8_t*>(data);
        rows.insert(rows.end(), from, from + taken * rowBytes);
        data += taken * rowBytes;
        rowCount += taken;
        left -= taken;
        rowsLeft -= static_cast<int>(taken);
        if (rowsLeft == 0 || rowCount == rowsPerBand * bandsPerRound) packRound();
    }
}

void PngPacker::filterBand(Band& band, std::size_t firstRow, std::size_t count) {
    PngFilter filter(rowBytes, bytesPerPixel);
    band.filtered.resize(count * (rowBytes + 1));
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t place = firstRow + i + (hasRowAbove ? 1 : 0);
        const std::uint8_t* row = rows.data() + place * rowBytes;
        filter.filter(row, place > 0 ? row - rowBytes : nullptr, band.filtered.data() + i * (rowBytes + 1));
    }
    band.checksum = static_cast<std::uint32_t>(::adler32_z(1, band.filtered.data(), band.filtered.size()));
}

void PngPacker::packRound() {
    bands.resize((rowCount + rowsPerBand - 1) / rowsPerBand);
    inParallel(bands.size(), [&](std::size_t i) {
        const std::size_t first = i * rowsPerBand;
        filterBand(bands[i], first, std::min(rowsPerBand, rowCount - first));
        bands[i].isLast = rowsLeft == 0 && i + 1 == bands.size();
    });
    const auto endOf = [](const std::vector<std::uint8_t>& bytes) {
        return std::span(bytes).last(std::min(bytes.size(), Window));
    };
    inParallel(bands.size(), [&](std::size_t i) {
        const auto before = endOf(i > 0 ? bands[i - 1].filtered : dictionary);
        bands[i].packed = deflated(bands[i].filtered, before, bands[i].isLast);
    });
    for (const Band& band : bands) writeBand(band);
    const auto end = endOf(bands.back().filtered);
    dictionary.assign(end.begin(), end.end());
    rows.erase(rows.begin(), rows.end() - static_cast<std::ptrdiff_t>(rowBytes));
    hasRowAbove = true;
    rowCount = 0;
}

void PngPacker::writeBand(const Band& band) {
    std::string part;
    if (!hasBegun) part = "\x78\x5e"; // deflate with a window of 32 KiB, made fast
    hasBegun = true;
    part += band.packed;
    checksum = static_cast<std::uint32_t>(
        ::adler32_combine(checksum, band.checksum, static_cast<z_off_t>(band.filtered.size())));
    for (int shift = 24; band.isLast && shift >= 0; shift -= 8)
        part += static_cast<char>(checksum >> shift & 0xffU);
    sink(part);
}

} // namespace workbench
