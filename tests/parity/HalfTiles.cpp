// SPDX-License-Identifier: Apache-2.0
#include "HalfTiles.h"

#include "tests/support/StandardOutput.h"

#include <algorithm>
#include <cstring>

namespace parity {

std::string HalfTiles::process(int width, const krod::StrongPtr<krod::ChunkBase>& store) {
    krod::ImageTile tile(width, 1, store);
    return support::outputOf([&] { processor->process(krod::VRenderContext(pool), tile); });
}

void HalfTiles::expectPixel(const RGBAHalf& before, const RGBAHalf& after, const std::string& place) const {
    ASSERT_EQ(bitsOf(after.r), bitsFor(before.r)) << "red, " << place;
    ASSERT_EQ(bitsOf(after.g), bitsFor(before.g)) << "green, " << place;
    ASSERT_EQ(bitsOf(after.b), bitsFor(before.b)) << "blue, " << place;
    ASSERT_EQ(bitsOf(after.a), bitsOf(before.a)) << "alpha, " << place;
}

void HalfTiles::expectRequiredColours() {
    std::vector<RGBAHalf> pixels;
    for (std::uint32_t i = 0; i < Patterns; ++i)
        pixels.push_back({halfOf(i), halfOf(i + 21845), halfOf(i + 43690), halfOf(i * 7)});
    const Store store = storeOf(pixels);
    process(static_cast<int>(Patterns), store);
    for (std::uint32_t i = 0; i < Patterns && !testing::Test::HasFatalFailure(); ++i)
        expectPixel(pixels[i], store->data()[i], "pattern " + testing::PrintToString(i));
}

void HalfTiles::expectEveryAlphaUntouched() {
    std::vector<RGBAHalf> pixels;
    for (std::uint32_t i = 0; i < Patterns; ++i) pixels.push_back({half(0.5F), half(1), half(2), halfOf(i)});
    const Store store = storeOf(pixels);
    process(static_cast<int>(Patterns), store);
    for (std::uint32_t i = 0; i < Patterns; ++i)
        ASSERT_EQ(bitsOf(store->data()[i].a), i) << "alpha, pattern " << i;
}

void HalfTiles::expectItsOwnPixelsOnly() {
    constexpr std::size_t Guards = 16;
    const RGBAHalf guard{half(3), half(5), half(7), half(9)}, pixel{half(2), half(4), half(0.25F), half(2)};
    for (const std::size_t size : {0U, 1U, 7U, 8U, 9U}) {
        std::vector<RGBAHalf> pixels(size + Guards, guard);
        std::fill_n(pixels.begin(), size, pixel);
        pixels.resize(size); // the guards stay behind the end, in memory that the vector keeps
        const Store store = storeOf(std::move(pixels));
        const std::string place = " of " + testing::PrintToString(size) + " pixels";
        EXPECT_EQ(process(static_cast<int>(size), store), line) << place;
        for (std::size_t i = 0; i < size; ++i)
            expectPixel(pixel, store->data()[i], testing::PrintToString(i) + place);
        for (std::size_t i = 0; i < Guards; ++i)
            EXPECT_EQ(std::memcmp(store->data() + size + i, &guard, sizeof guard), 0)
                << "guard " << i << " behind the end" << place;
    }
}

void HalfTiles::expectOneLinePerTile() {
    const Store store = storeOf(std::vector<RGBAHalf>(9));
    EXPECT_EQ(process(9, store) + process(9, store), line + line);
}

void HalfTiles::expectSilenceWithoutStore() { EXPECT_EQ(process(4, {}), ""); }

void HalfTiles::expectSilenceOverStoresOfAnotherKind() {
    const krod::StrongPtr<krod::Chunk<float>> floats(new krod::Chunk<float>(std::vector<float>(16, 0.5F)));
    EXPECT_EQ(process(4, floats), "");
    for (std::size_t i = 0; i < floats->elements(); ++i) EXPECT_EQ(floats->data()[i], 0.5F) << i;
    // The same bytes as four pixels have, but as single halves.
    const krod::StrongPtr<krod::Chunk<half>> halves(new krod::Chunk<half>(std::vector<half>(16, half(0.5F))));
    EXPECT_EQ(process(4, halves), "");
    for (std::size_t i = 0; i < halves->elements(); ++i) EXPECT_EQ(bitsOf(halves->data()[i]), 0x3800) << i;
}

} // namespace parity
