// SPDX-License-Identifier: Apache-2.0
// PLY files, ASCII and binary.
#include "PointChecks.h"

#include "workbench/files/points/Ply.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::checkPoints(workbench::readPlyPoints, fuzz::textOf(data, size));
    return 0;
}
