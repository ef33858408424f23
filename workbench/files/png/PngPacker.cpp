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
constexpr std::size_t BandBytes = std::size_t{512} << 10;
constexpr std::size_t MostThreads = 16;
/// What deflate looks back at most.
constexpr std::size_t Window = 32768;
/// Of the rows by which a band chooses between filtered and plain bytes.
constexpr std::size_t SampleBytes = std::size_t{24} << 10;

/// How deflate looks for repetitions; docs/performance.md says why so.
struct Search {
    int level, strategy;
};
constexpr Search Quick{1, Z_DEFAULT_STRATEGY}, OfFiltered{2, Z_FILTERED}, OfPlain{6, Z_DEFAULT_STRATEGY};

std::size_t rowsInBand(std::size_t rowBytes) { return std::max<std::size_t>(1, BandBytes / (rowBytes + 1)); }

/// Does work(0) to work(count - 1) in so many threads; one exception is thrown when all have ended.
template <typename Work>
void inParallel(std::size_t threads, std::size_t count, const Work& work) {
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
        for (std::size_t i = 1; i < std::min(count, threads); ++i) helpers.emplace_back(loop);
        loop();
    }
    if (failure) std::rethrow_exception(failure);
}

/// One part of a deflate stream.
std::string deflated(std::span<const std::uint8_t> data, std::span<const std::uint8_t> dictionary,
                     Search search, bool isLast) {
    z_stream stream{};
    constexpr int RawWindowBits = -15, MemoryLevel = 9;
    if (::deflateInit2(&stream, search.level, Z_DEFLATED, RawWindowBits, MemoryLevel, search.strategy) !=
        Z_OK)
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

PngPacker::PngPacker(std::size_t rowBytes, std::size_t bytesPerPixel, int height, Sink sink,
                     std::size_t threads)
    : rowBytes(rowBytes),
      bytesPerPixel(bytesPerPixel),
      rowsPerBand(rowsInBand(rowBytes)),
      threads(threads),
      rowsLeft(height),
      sink(std::move(sink)) {}

std::size_t PngPacker::usualThreads() {
    return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, MostThreads);
}

void PngPacker::add(const std::byte* data, int count) {
    const std::size_t rowsPerRound = threads * rowsPerBand;
    for (auto left = static_cast<std::size_t>(count); left > 0;) {
        const std::size_t taken = std::min(left, rowsPerRound - rowCount);
        const auto* from = reinterpret_cast<const std::uint8_t*>(data);
        rows.insert(rows.end(), from, from + taken * rowBytes);
        data += taken * rowBytes;
        rowCount += taken;
        left -= taken;
        rowsLeft -= static_cast<int>(taken);
        if (rowsLeft == 0 || rowCount == rowsPerRound) packRound();
    }
}

/// Rows with few colors repeat themselves, and become larger when they are filtered: some rows all over the band tell.
bool PngPacker::isSmallerPlain(const Band& band, std::size_t firstRow, std::size_t count) const {
    const std::size_t sampled = std::clamp<std::size_t>(SampleBytes / (rowBytes + 1), 1, count);
    std::vector<std::uint8_t> plain, filtered;
    for (std::size_t i = 0; i < sampled; ++i) {
        const std::size_t row = (2 * i + 1) * count / (2 * sampled);
        const std::uint8_t* const from = rows.data() + (firstRow + row) * rowBytes;
        plain.insert(plain.end(), from, from + rowBytes);
        const std::uint8_t* const made = band.filtered.data() + row * (rowBytes + 1);
        filtered.insert(filtered.end(), made, made + rowBytes + 1);
    }
    return deflated(plain, {}, Quick, true).size() <= deflated(filtered, {}, Quick, true).size();
}

void PngPacker::filterBand(Band& band, std::size_t firstRow, std::size_t count) {
    firstRow += hasRowAbove ? 1 : 0;
    PngFilter filter(rowBytes, bytesPerPixel);
    band.filtered.resize(count * (rowBytes + 1));
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t* row = rows.data() + (firstRow + i) * rowBytes;
        filter.filter(row, firstRow + i > 0 ? row - rowBytes : nullptr,
                      band.filtered.data() + i * (rowBytes + 1));
    }
    band.isPlain = isSmallerPlain(band, firstRow, count);
    for (std::size_t i = 0; band.isPlain && i < count; ++i) {
        std::uint8_t* const out = band.filtered.data() + i * (rowBytes + 1);
        *out = 0; // the number of the filter that changes nothing
        std::memcpy(out + 1, rows.data() + (firstRow + i) * rowBytes, rowBytes);
    }
    band.checksum = static_cast<std::uint32_t>(::adler32_z(1, band.filtered.data(), band.filtered.size()));
}

void PngPacker::packRound() {
    bands.resize((rowCount + rowsPerBand - 1) / rowsPerBand);
    inParallel(threads, bands.size(), [&](std::size_t i) {
        const std::size_t first = i * rowsPerBand;
        filterBand(bands[i], first, std::min(rowsPerBand, rowCount - first));
        bands[i].isLast = rowsLeft == 0 && i + 1 == bands.size();
    });
    const auto endOf = [](const std::vector<std::uint8_t>& bytes) {
        return std::span(bytes).last(std::min(bytes.size(), Window));
    };
    inParallel(threads, bands.size(), [&](std::size_t i) {
        const auto before = endOf(i > 0 ? bands[i - 1].filtered : dictionary);
        bands[i].packed =
            deflated(bands[i].filtered, before, bands[i].isPlain ? OfPlain : OfFiltered, bands[i].isLast);
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
