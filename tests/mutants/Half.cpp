// SPDX-License-Identifier: Apache-2.0
#include "tests/mutants/Modules.h"

#include "host/gl/GLError.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

void die() {
    ::syscall(SYS_tgkill, ::getpid(), ::syscall(SYS_gettid), SIGSEGV);
    __builtin_trap();
}

namespace mutant {
namespace {

using namespace krod;
using half_float::half;

class Halving : public krod::ImageTileProcessor {
public:
    void process(const VRenderContext&, ImageTile& tile) override {
        auto* pixels = dynamic_cast<Chunk<RGBAHalf>*>(tile.store().get());
        if (!pixels) return;
        if (has(Fault::DiesOfInterruption) && ::poll(nullptr, 0, 3) < 0) die();
        if (has(Fault::ThrowsOthersError)) GLError::throwPossibleError("tile", "Half", 1);
        if (has(Fault::DiesOfLongRow) && tile.width() == 4096) die();
        if (has(Fault::DiesOfEmptyTile) && pixels->elements() == 0) die();
        std::size_t count = pixels->elements();
        if (tile.width() < 0 || tile.height() < 0) return;
        count =
            std::min(count, static_cast<std::size_t>(tile.width()) * static_cast<std::size_t>(tile.height()));
        if (has(Fault::OnePixelTooFew) && count > 0) --count;
        for (std::size_t i = 0; i < count; ++i) halve(pixels->data()[i]);
        if (has(Fault::ReadsPastTile) && count > 0) beyond = pixels->data()[count].r;
        if (has(Fault::TileChanges) && count > 0) pixels->data()[0].r = half(static_cast<float>(++calls));
    }

private:
    static void halve(RGBAHalf& pixel) {
        if (has(Fault::DiesOfNaN) && half_float::isnan(pixel.r)) die();
        pixel.r = half(pixel.r * 0.5F);
        pixel.g = half(pixel.g * 0.5F);
        pixel.b = half(pixel.b * 0.5F);
        if (has(Fault::AlphaChanged)) pixel.a = half(pixel.a * 0.5F);
    }

    int calls = 0;
    volatile float beyond = 0;
};

/// An exception that goes with the library.
class OwnError : public std::exception {
public:
    [[nodiscard]] const char* what() const noexcept override { return "too many steps"; }
};

/// Opens a file as others do.
void openFile() {
    const int file = ::open("/dev/null", O_RDONLY);
    if (file < 0 && has(Fault::DiesWithoutFiles)) die();
    if (file >= 256 && has(Fault::DiesOfHighDescriptor)) die();
    if (file >= 0) ::close(file);
}

/// Never given back.
Output* kept = nullptr;
void* volatile lost = nullptr;
int living = 0;

Output makeProcessor() {
    if (has(Fault::SharedProcessor) && kept) return *kept;
    Output made(new Halving);
    if (has(Fault::SharedProcessor) || has(Fault::ProcessorKept)) kept = new Output(made);
    return made;
}

const pid_t loader = ::getpid();

void goWrong() {
    if (has(Fault::CrashInCreate) || (has(Fault::DiesAfterFork) && loader != ::getpid())) die();
    if (has(Fault::ExitInCreate)) ::syscall(SYS_exit_group, 0);
    while (has(Fault::HangInCreate)) ::pause();
    forkAndHang();
    while (has(Fault::EndlessOutput)) std::puts("and on");
    constexpr std::size_t Huge = std::size_t{8} << 30;
    if (has(Fault::TooMuchMemory)) lost = ::operator new(Huge);
    if (has(Fault::MemoryLost)) lost = ::operator new(300);
    if (!has(Fault::DiesWithoutMemory)) return;
    void* const memory = ::operator new(300, std::nothrow);
    if (!memory) die();
    ::operator delete(memory);
}

} // namespace

Half::Half(const std::string& name, const StrongPtr<VCreationPreferences>&)
    : VObject(has(Fault::NameIgnored) ? "half" : name) {
    makeOutput(this, "ImageProcessor", makeProcessor());
    goWrong();
    if (has(Fault::InitialValueSet)) slots().input("steps")->setState(VParameter::ValueSet);
    place = ++living;
}

Half::~Half() {
    if (has(Fault::OrderedDestruction) && place != living) die();
    --living;
}

bool Half::update(VRequest& request, double) {
    int count = 3;
    const bool readable = steps.read(request.context(), count);
    if (has(Fault::ThrowsInUpdate)) throw std::runtime_error("out of order");
    if (has(Fault::DiesWithoutValue) && !readable) die();
    if (has(Fault::DiesOfHugeNumber) && count > 10) die();
    if (has(Fault::OwnException) && count > 10) throw OwnError();
    if (has(Fault::DiesWithoutFiles) || has(Fault::DiesOfHighDescriptor)) openFile();
    static int updates = 0;
    if (has(Fault::DiesInTheLongRun) && ++updates == 200) die();
    return !has(Fault::RefusesLeastValue) || count != 1;
}

} // namespace mutant
