// SPDX-License-Identifier: Apache-2.0
#include "HalfLoops.h"

#include <algorithm>
#include <bit>
#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace bench {
namespace {

using krod::RGBAHalf;

constexpr std::size_t LinePixels = 64 / sizeof(RGBAHalf), AheadPixels = 4096 / sizeof(RGBAHalf);

/// Calls the work for each cache line, which is fetched for writing 4 KiB ahead of that.
template <class Work>
void linesAhead(RGBAHalf* pixels, std::size_t count, Work work) {
    for (std::size_t begin = 0; begin < count; begin += LinePixels) {
        __builtin_prefetch(pixels + std::min(begin + AheadPixels, count - 1), 1);
        work(pixels + begin, pixels + std::min(begin + LinePixels, count));
    }
}

void lookUp(const Answers& answers, RGBAHalf* pixel, const RGBAHalf* end) {
    const auto look = [&](half_float::half c) {
        return std::bit_cast<half_float::half>(answers[std::bit_cast<std::uint16_t>(c)]);
    };
    for (; pixel != end; ++pixel) {
        const half_float::half r = look(pixel->r), g = look(pixel->g), b = look(pixel->b);
        pixel->r = r;
        pixel->g = g;
        pixel->b = b;
    }
}

void asThePlugIn(const Answers& answers, RGBAHalf* pixels, std::size_t count) {
    linesAhead(pixels, count, [&](RGBAHalf* pixel, RGBAHalf* end) { lookUp(answers, pixel, end); });
}

void withoutFetching(const Answers& answers, RGBAHalf* pixels, std::size_t count) {
    lookUp(answers, pixels, pixels + count);
}

std::uint64_t answerWord(const Answers& answers, std::uint64_t word) {
    return (word & 0xFFFF000000000000U) | std::uint64_t{answers[word >> 32 & 0xFFFF]} << 32 |
           std::uint64_t{answers[word >> 16 & 0xFFFF]} << 16 | answers[word & 0xFFFF];
}

/// One load and one store of 8 bytes for each pixel.
void byWords(const Answers& answers, RGBAHalf* pixels, std::size_t count) {
    linesAhead(pixels, count, [&](RGBAHalf* pixel, RGBAHalf* end) {
        for (; pixel != end; ++pixel)
            *pixel = std::bit_cast<RGBAHalf>(answerWord(answers, std::bit_cast<std::uint64_t>(*pixel)));
    });
}

/// A table of half the size: where the answers for negative halves are those for positive ones with the sign turned, or
/// are all the same, a look-up and a sign do. The check costs one pass over the table for each tile.
void byPositives(const Answers& answers, RGBAHalf* pixels, std::size_t count) {
    constexpr std::uint16_t Sign = 0x8000;
    bool same = true, turned = true;
    for (std::uint32_t c = 1; c <= 0x7C00; ++c) { // up to infinity; no numbers are left to the whole table
        same = same && answers[c | Sign] == answers[1 | Sign];
        turned = turned && answers[c | Sign] == (answers[c] ^ Sign);
    }
    if (!same && !turned) return asThePlugIn(answers, pixels, count);
    const std::uint16_t negative = answers[1 | Sign];
    const auto look = [&](std::uint16_t c) -> std::uint16_t {
        if ((c & 0x7FFF) > 0x7C00 || c == Sign) return answers[c];
        if (turned) return static_cast<std::uint16_t>(answers[c & 0x7FFF] ^ (c & Sign));
        return c & Sign ? negative : answers[c];
    };
    linesAhead(pixels, count, [&](RGBAHalf* pixel, RGBAHalf* end) {
        for (; pixel != end; ++pixel)
            for (half_float::half* channel : {&pixel->r, &pixel->g, &pixel->b})
                *channel = std::bit_cast<half_float::half>(look(std::bit_cast<std::uint16_t>(*channel)));
    });
}

#if defined(__x86_64__)
/// Stores that go past the caches, which have read the line already.
void pastCaches(const Answers& answers, RGBAHalf* pixels, std::size_t count) {
    for (RGBAHalf *pixel = pixels, *end = pixels + count; pixel != end; ++pixel)
        _mm_stream_si64(reinterpret_cast<long long*>(pixel),
                        static_cast<long long>(answerWord(answers, std::bit_cast<std::uint64_t>(*pixel))));
    _mm_sfence();
}

/// Two pixels at once: eight look-ups by one gathering load of 32 bits each.
[[gnu::target("avx2")]] void gathered(const Answers& answers, RGBAHalf* pixels, std::size_t count) {
    const auto* table = reinterpret_cast<const int*>(answers.data());
    const __m256i low = _mm256_set1_epi32(0xFFFF);
    const std::size_t pairs = count / 2;
    for (std::size_t i = 0; i < pairs; ++i) {
        auto* place = reinterpret_cast<__m128i*>(pixels + 2 * i);
        __builtin_prefetch(pixels + std::min(2 * i + AheadPixels, count - 1), 1);
        const __m128i old = _mm_loadu_si128(place);
        const __m256i found =
            _mm256_and_si256(_mm256_i32gather_epi32(table, _mm256_cvtepu16_epi32(old), 2), low);
        const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi32(found, found), 0b1000);
        _mm_storeu_si128(place, _mm_blend_epi16(_mm256_castsi256_si128(packed), old, 0b10001000));
    }
    lookUp(answers, pixels + 2 * pairs, pixels + count);
}

/// Four pixels at once, sixteen look-ups.
[[gnu::target("avx512f,avx512bw,avx512vl")]] void gatheredWide(const Answers& answers, RGBAHalf* pixels,
                                                               std::size_t count) {
    constexpr __mmask16 All = 0xFFFF;
    const std::size_t fours = count / 4;
    for (std::size_t i = 0; i < fours; ++i) {
        auto* place = reinterpret_cast<__m256i*>(pixels + 4 * i);
        __builtin_prefetch(pixels + std::min(4 * i + AheadPixels, count - 1), 1);
        const __m256i old = _mm256_loadu_si256(place);
        // Forms with masks, since g++ 12 warns of the others (GCC bug 105593).
        const __m512i places = _mm512_maskz_cvtepu16_epi32(All, old);
        const __m512i found =
            _mm512_mask_i32gather_epi32(_mm512_setzero_si512(), All, places, answers.data(), 2);
        const __m256i packed = _mm512_maskz_cvtepi32_epi16(All, found);
        _mm256_storeu_si256(place, _mm256_blend_epi16(packed, old, 0b10001000));
    }
    lookUp(answers, pixels + 4 * fours, pixels + count);
}
#endif

std::uint64_t changed(std::uint64_t word) { return word ^ 0x0000000100010001U; }

} // namespace

std::vector<HalfLoop> halfLoops() {
    std::vector<HalfLoop> loops{{"the plug-in's loop", asThePlugIn},
                                {"without fetching ahead", withoutFetching},
                                {"one load and one store of 8 bytes a pixel", byWords},
                                {"a table of positive halves, 64 KiB", byPositives}};
#if defined(__x86_64__)
    loops.push_back({"stores past the caches", pastCaches});
    if (__builtin_cpu_supports("avx2")) loops.push_back({"gathering loads, two pixels (AVX2)", gathered});
    if (__builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl"))
        loops.push_back({"gathering loads, four pixels (AVX-512)", gatheredWide});
#endif
    return loops;
}

void passPlainly(RGBAHalf* pixels, std::size_t count) {
    for (RGBAHalf *pixel = pixels, *end = pixels + count; pixel != end; ++pixel)
        *pixel = std::bit_cast<RGBAHalf>(changed(std::bit_cast<std::uint64_t>(*pixel)));
}

void passAhead(RGBAHalf* pixels, std::size_t count) {
    linesAhead(pixels, count, [](RGBAHalf* pixel, RGBAHalf* end) {
        for (; pixel != end; ++pixel)
            *pixel = std::bit_cast<RGBAHalf>(changed(std::bit_cast<std::uint64_t>(*pixel)));
    });
}

} // namespace bench
