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
        Imf::setGlobalThreadCount(static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, 16U)));
        return true;
    }();
    static_cast<void>(done);
}

int exrThreads() { return std::min(Imf::globalThreadCount(), MostExrThreads); }

} // namespace workbench
