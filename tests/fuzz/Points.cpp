// SPDX-License-Identifier: Apache-2.0
// Point lists as text.
#include "PointChecks.h"

#include "workbench/files/points/PointText.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::checkPoints(workbench::readPointText, fuzz::textOf(data, size));
    return 0;
}
