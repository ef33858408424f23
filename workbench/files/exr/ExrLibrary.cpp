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

int rowsInExrBlock(Imf::Compression compression) {
    switch (compression) {
    case Imf::NO_COMPRESSION:
    case Imf::RLE_COMPRESSION:
    case Imf::ZIPS_COMPRESSION:
        return 1;
    case Imf::ZIP_COMPRESSION:
    case Imf::PXR24_COMPRESSION:
        return 16;
    case Imf::DWAB_COMPRESSION:
        return 256;
    default:
        return 32;
    }
}

namespace {

int usefulThreads(Imf::Compression compression) {
    const int blocks = ExrStepRows / rowsInExrBlock(compression);
    return compression == Imf::NO_COMPRESSION || blocks <= 1 ? 0 : std::min(blocks, MostExrThreads);
}

} // namespace

int mostExrBlocks(Imf::Compression compression) { return std::max(1, 2 * usefulThreads(compression)); }

int exrThreadsFor(Imf::Compression compression) {
    const auto processors = static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, 16U));
    const int useful = usefulThreads(compression), threads = useful == 0 ? 0 : processors;
    if (Imf::globalThreadCount() != threads) Imf::setGlobalThreadCount(threads);
    return std::min(threads, useful);
}

} // namespace workbench
