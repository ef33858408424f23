// SPDX-License-Identifier: Apache-2.0
#include "host/core/VInitialization.h"

#include "host/core/Vprintf.h"

#include <string_view>
#include <utility>

namespace krod {

namespace {

constexpr std::string_view InterfaceKey = "KROD_API_VERSION";

std::string_view textOf(const char* text) { return text ? text : ""; }

} // namespace

VInitialization::VInitialization(std::string entryDate) : date(std::move(entryDate)) {}

VInitialization::~VInitialization() = default;

int VInitialization::IsCompatible(const char* key) {
    if (textOf(key) != InterfaceKey) return 0;
    return date == hostDate() ? 1 : -1;
}

int VInitialization::initPlugin(int reason, const char* plugin, const char* key) {
    Vprintf(100, "VInitialization::initPlugin(%d,%s,%s)\n", reason, textOf(plugin).data(),
            textOf(key).data());
    return 0;
}

const char* VInitialization::hostDate() noexcept { return KROD_API_DATE; }

} // namespace krod
