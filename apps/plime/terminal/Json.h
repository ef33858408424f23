// SPDX-License-Identifier: Apache-2.0
// JSON as this program writes it.
#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace workbench {

/// Members stay in the order in which they are added.
using Json = nlohmann::ordered_json;

/// null for a text that is not set.
[[nodiscard]] inline Json jsonText(const std::optional<std::string>& text) {
    return text ? Json(*text) : Json(nullptr);
}

/// Two blanks per level and a line end. Bytes that are no UTF-8 become U+FFFD, so that the result is always
/// valid.
[[nodiscard]] inline std::string document(const Json& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

} // namespace workbench
