// SPDX-License-Identifier: Apache-2.0
// The two processors that work on the halves of a tile. The first byte chooses the processor and where the tile
// lies, the others are pixels. Pages that nobody may touch lie in front of the tile's memory and behind it.
#include "Target.h"

#include "tests/support/LoadedPlugin.h"

#include <array>
#include <bit>
#include <new>
#include <optional>

#include <sys/mman.h>
#include <unistd.h>

namespace {

/// Whole pages between two that are closed. It serves one allocation at a time.
class GuardedPages {
public:
    static constexpr std::size_t Largest = std::size_t{64} << 10;

    void* take(std::size_t size, bool atEnd) {
        if (middle == nullptr) map();
        return atEnd ? middle + Largest - size : middle;
    }
    [[nodiscard]] bool holds(const void* place) const {
        return middle != nullptr && place >= middle && place < middle + Largest;
    }

private:
    void map() {
        const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        void* const all = ::mmap(nullptr, Largest + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        fuzz::require(all != MAP_FAILED, "there is memory for a tile");
        middle = static_cast<std::byte*>(all) + page;
        fuzz::require(::mprotect(middle, Largest, PROT_READ | PROT_WRITE) == 0, "the tile's pages open");
    }

    std::byte* middle = nullptr;
};

constinit GuardedPages pages;
constinit bool nextIsGuarded = false, nextIsAtEnd = false;

} // namespace

// A tile's store is a vector, so that its memory is had by this operator and by nothing else. libFuzzer's own objects
// come from the address sanitizer's operator and leave by this one, which is no mistake.
extern "C" const char* __asan_default_options() { return "alloc_dealloc_mismatch=0"; }

void* operator new(std::size_t size) {
    if (nextIsGuarded) {
        nextIsGuarded = false;
        return pages.take(size, nextIsAtEnd);
    }
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    if (!pages.holds(memory)) std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }

namespace {

using namespace krod;
using half_float::half;

struct Processor {
    Processor(const support::LoadedPlugin& plugin, const std::string& key)
        : module(plugin.make(key)), work(support::processorOf(*module)) {}

    StrongPtr<VObject> module;
    StrongPtr<ImageTileProcessor> work;
    std::array<std::optional<std::uint16_t>, 65536> known; ///< what came of each half so far

    void expect(half before, half after) {
        auto& result = known[std::bit_cast<std::uint16_t>(before)];
        const auto bits = std::bit_cast<std::uint16_t>(after);
        fuzz::require(!result || *result == bits, "a half has one result");
        result = bits;
    }
};

/// For ever, with the plug-in; the line that each tile prints goes nowhere.
Processor& processor(bool arcTangens) {
    static const auto* const plugin = new support::LoadedPlugin;
    static Processor* const all[] = {new Processor(*plugin, "Hollywood/GammaCorrection"),
                                     new Processor(*plugin, "Hollywood/ArcTangens")};
    static const bool silent = std::freopen("/dev/null", "w", stdout) != nullptr;
    fuzz::require(silent, "standard output can be closed");
    return *all[arcTangens ? 1 : 0];
}

std::vector<RGBAHalf> guarded(const std::uint8_t* data, std::size_t count) {
    nextIsGuarded = count > 0;
    std::vector<RGBAHalf> pixels(count);
    const auto halfAt = [data](std::size_t i) {
        return std::bit_cast<half>(static_cast<std::uint16_t>(data[2 * i] | data[2 * i + 1] << 8));
    };
    for (std::size_t i = 0; i < count; ++i)
        pixels[i] = {halfAt(4 * i), halfAt(4 * i + 1), halfAt(4 * i + 2), halfAt(4 * i + 3)};
    return pixels;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > GuardedPages::Largest) return 0;
    Processor& chosen = processor((data[0] & 1) != 0);
    nextIsAtEnd = (data[0] & 2) != 0;
    const std::size_t count = (size - 1) / sizeof(RGBAHalf);
    const StrongPtr<Chunk<RGBAHalf>> store(new Chunk<RGBAHalf>(guarded(data + 1, count)));
    const std::vector<RGBAHalf> before(store->data(), store->data() + count);
    ImageTile tile(static_cast<int>(count), 1, store);
    const VValuePool pool;
    chosen.work->process(VRenderContext(pool), tile);
    for (std::size_t i = 0; i < count; ++i) {
        const RGBAHalf& after = store->data()[i];
        chosen.expect(before[i].r, after.r);
        chosen.expect(before[i].g, after.g);
        chosen.expect(before[i].b, after.b);
        fuzz::require(std::bit_cast<std::uint16_t>(before[i].a) == std::bit_cast<std::uint16_t>(after.a),
                      "alpha stays as it is");
    }
    return 0;
}
