// SPDX-License-Identifier: Apache-2.0
// Levels 5 and 6: processing tiles.
#include "workbench/core/InputCreatorRegistry.h"
#include "workbench/gl/PendingErrors.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Expectation.h"
#include "workbench/validate/Guest.h"
#include "workbench/validate/Module.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <exception>
#include <functional>

#include <sys/mman.h>
#include <unistd.h>

namespace workbench::validate {
namespace {

using krod::RGBAHalf;

/// Calls a function with each updated module that has a processor. What is thrown is noted.
void forEachProcessor(Trial& trial, const Guest& guest,
                      const std::function<void(const Maker&, krod::VObject&)>& call) {
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        if (!processorOf(*object)) continue;
        try {
            update(*object);
            call(maker, *object);
        } catch (const std::exception& error) {
            trial.fail(maker.label + ": throws \"" + error.what() + '"');
        }
        for (const unsigned error : takePendingErrors())
            trial.fail(maker.label + ": leaves the OpenGL error " + errorText(error) + " behind");
    }
}

/// A store of something that no processor knows.
class ForeignStore : public krod::ChunkBase {
public:
    [[nodiscard]] std::size_t bytes() const noexcept override { return 64; }
};

/// Pixels that end where a page begins that cannot be touched.
class GuardedPixels {
public:
    explicit GuardedPixels(Trial& trial) : page(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))) {
        pixels.reserve(64 * page / sizeof(RGBAHalf)); // so much that it has pages of its own
        const auto begin = reinterpret_cast<std::uintptr_t>(pixels.data());
        const std::uintptr_t guard = (begin / page + 2) * page;
        pixels = drawn(std::move(pixels), trial, (guard - begin) / sizeof(RGBAHalf));
        wall = reinterpret_cast<void*>(guard);
    }

    /// Lets a function work on the pixels while the wall stands.
    Pixels behindTheWall(const std::function<void(krod::ImageTile&)>& work) {
        const auto width = static_cast<int>(pixels.size());
        const krod::StrongPtr<krod::Chunk<RGBAHalf>> store(new krod::Chunk<RGBAHalf>(std::move(pixels)));
        krod::ImageTile tile(width, 1, store);
        ::mprotect(wall, page, PROT_NONE);
        work(tile);
        ::mprotect(wall, page, PROT_READ | PROT_WRITE);
        return {store->data(), store->data() + store->elements()};
    }

private:
    static Pixels drawn(Pixels place, Trial& trial, std::size_t count) {
        const Pixels values = drawPixels(trial, count);
        place.assign(values.begin(), values.end());
        return place;
    }

    std::size_t page;
    Pixels pixels;
    void* wall = nullptr;
};

/// Every value that a half can have, as red, green and blue, with alphas of every kind.
Pixels everyHalf() {
    Pixels pixels(65536);
    for (std::uint32_t i = 0; i < pixels.size(); ++i) {
        const auto value = std::bit_cast<half_float::half>(static_cast<std::uint16_t>(i));
        const auto alpha = std::bit_cast<half_float::half>(static_cast<std::uint16_t>(i * 40503U));
        pixels[i] = {value, value, value, alpha};
    }
    return pixels;
}

void compareAlpha(Trial& trial, const std::string& label, const Pixels& before, const Pixels& after) {
    for (std::size_t i = 0; i < std::min(before.size(), after.size()); ++i)
        if (std::memcmp(&before[i].a, &after[i].a, sizeof before[i].a) != 0)
            return trial.fail(label + ": changes alpha, which it is expected to keep");
}

} // namespace

void checkTiles(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    forEachProcessor(trial, guest, [&](const Maker& maker, krod::VObject& object) {
        const Pixels pixels = drawPixels(trial, 33 * 17);
        const Pixels first = process(object, pixels, 33, 17);
        trial.require(sameBits(first, process(object, pixels, 33, 17)),
                      maker.label + ": processes the same tile in another way the second time");
        if (isExpected(trial, maker.label, "keeps_alpha")) compareAlpha(trial, maker.label, pixels, first);
        if (!isExpected(trial, maker.label, "pixel_by_pixel")) return;
        const Pixels even = process(object, Pixels(33 * 17, pixels[0]), 33, 17);
        trial.require(sameBits(even, Pixels(even.size(), first[0])),
                      maker.label + ": does not process every pixel of a tile alike");
    });
}

void checkForeignTiles(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    forEachProcessor(trial, guest, [&](const Maker& maker, krod::VObject& object) {
        const auto processor = processorOf(object);
        const krod::VValuePool pool;
        const krod::VRenderContext context(pool);
        const auto offer = [&](int width, int height, const krod::StrongPtr<krod::ChunkBase>& store) {
            krod::ImageTile tile(width, height, store);
            processor->process(context, tile);
        };
        offer(4, 4, {});
        offer(4, 4, krod::StrongPtr<krod::ChunkBase>(new ForeignStore));
        offer(0, 0, krod::StrongPtr<krod::ChunkBase>(new krod::Chunk<RGBAHalf>(0)));
        const Pixels pixels = drawPixels(trial, 7);
        for (const auto& [width, height] : {std::pair{0, 7}, std::pair{-1, -7}})
            static_cast<void>(process(object, pixels, width, height));
        trial.require(sameBits(process(object, Pixels(), 4, 4), Pixels()),
                      maker.label + ": makes pixels of a tile that has none");
    });
}

void checkGuardedTiles(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    forEachProcessor(trial, guest, [&](const Maker& maker, krod::VObject& object) {
        const auto processor = processorOf(object);
        const krod::VValuePool pool;
        const krod::VRenderContext context(pool);
        const Pixels after = GuardedPixels(trial).behindTheWall(
            [&](krod::ImageTile& tile) { processor->process(context, tile); });
        trial.require(!after.empty(), maker.label + ": empties a tile");
    });
}

void checkHalves(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    forEachProcessor(trial, guest, [&](const Maker& maker, krod::VObject& object) {
        const Pixels before = everyHalf();
        const Pixels after = process(object, before, 256, 256);
        trial.require(after.size() == before.size(), maker.label + ": changes the number of pixels");
        if (isExpected(trial, maker.label, "keeps_alpha")) compareAlpha(trial, maker.label, before, after);
    });
}

void checkRefusedInputs(Trial& trial) {
    std::size_t offered = 0, creators = 0;
    for (std::size_t refused = 0; refused <= offered; ++refused) {
        std::size_t number = 0;
        // The first round refuses nobody and counts; each later one refuses one of them.
        InputCreatorRegistry::setPolicy(
            [&](const krod::VInputCreatorBase&, const std::string&) { return ++number != refused; });
        OutputRecord output;
        const Ears ears;
        Guest guest(trial);
        const std::string printed = output.text();
        if (refused == 0) {
            offered = number;
            creators = guest.makers().size();
        }
        const auto lines = static_cast<std::size_t>(std::ranges::count(printed, '\n'));
        const std::size_t expected = refused == 0 ? 0 : 1;
        const std::string which = " when input creator " + std::to_string(refused) + " is refused";
        trial.require(lines == expected && ears.warnings.size() == expected,
                      "prints " + std::to_string(lines) + " lines and gives " +
                          std::to_string(ears.warnings.size()) + " warnings" + which);
        trial.require(guest.makers().size() == creators, "registers fewer creators" + which);
        guest.unload();
    }
}

} // namespace workbench::validate
