// SPDX-License-Identifier: Apache-2.0
// Modules describe themselves in HTML; terminals show text.
#pragma once

#include <string>
#include <string_view>

namespace workbench {

/// HTML as readable text: blanks are collapsed, paragraphs and line breaks become line ends, list items get
/// a dash, a link becomes "text (address)", entities become their characters, preformatted text stays as it
/// is, and every other tag goes. What is no tag ("a < b") stays. Never fails.
[[nodiscard]] std::string readableText(std::string_view html);

} // namespace workbench
