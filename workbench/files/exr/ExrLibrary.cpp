// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/exr/ExrLibrary.h"

#include "workbench/files/PictureDescription.h"

#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfThreading.h>

#include <algorithm>
#include <thread>

namespace workbench {

void prepareExrLibrary() {
    static const bool done = [] {
        Imf::Header::setMaxImageSize(LargestSide, LargestSide);
        Imf::Header::setMaxTileSize(LargestSide, LargestSide);
        return true;
    }();
    static_cast<void>(done);
}

int exrThreadsFor(Imf::Compression compression) {
    const auto processors = static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, 16U));
    const int threads = compression == Imf::NO_COMPRESSION ? 0 : processors;
    if (Imf::globalThreadCount() != threads) Imf::setGlobalThreadCount(threads);
    return std::min(threads, MostExrThreads);
}

} // namespace workbench
