// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/StripWriter.h"

#include <utility>

namespace workbench {

Strip StripWriter::write(Strip next) {
    finish();
    std::swap(strip, next);
    writing =
        std::async([this] { output.write(strip.first, strip.count, strip.pixels->data(), &strip.extra); });
    return next;
}

void StripWriter::finish() {
    if (writing.valid()) writing.get();
}

} // namespace workbench
