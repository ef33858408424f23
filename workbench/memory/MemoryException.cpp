// SPDX-License-Identifier: Apache-2.0
#include "host/memory/MemoryException.h"

namespace krod {

MemoryException::~MemoryException() = default;

const char* MemoryException::what() const noexcept { return "not enough memory"; }

PointerException::PointerException(const std::string& location)
    : std::logic_error("empty pointer in " + location) {}

PointerException::~PointerException() = default;

void pointerCheckFailed(const char* location) {
    throw PointerException(location ? location : "an unnamed place");
}

} // namespace krod
