// SPDX-License-Identifier: Apache-2.0
#include "workbench/network/PlainText.h"

#include "workbench/report/Utf8.h"

namespace workbench {
namespace {

bool isControl(std::string_view codePoint) {
    const char first = codePoint.front();
    if (codePoint.size() == 1)
        return first == '\x7f' ||
               (static_cast<unsigned char>(first) < ' ' && White.find(first) == std::string_view::npos);
    return codePoint.size() == 2 && first == '\xc2' &&
           static_cast<unsigned char>(codePoint[1]) < 0xA0; // U+0080 to U+009F
}

} // namespace

std::optional<TextFlaw> flawOf(std::string_view text) noexcept {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = codePointLength(text.substr(at));
        if (length == 0) return TextFlaw{at, 1};
        if (isControl(text.substr(at, length))) return TextFlaw{at, length};
        at += length;
    }
    return std::nullopt;
}

} // namespace workbench
