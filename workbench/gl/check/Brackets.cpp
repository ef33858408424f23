// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/check/Brackets.h"

#include "workbench/gl/check/Objection.h"

namespace workbench {

Brackets::Brackets(std::span<const Token> tokens) : pairs(tokens.size()) {
    std::vector<std::size_t> open;
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        const Token& token = tokens[at];
        if (closesBracket(token)) {
            if (open.empty()) continue;
            pairs[open.back()].closing = at;
            open.pop_back();
            continue;
        }
        if (!open.empty()) {
            Pair& around = pairs[open.back()];
            if (around.elements == 0) around.elements = 1;
            if (token.is(",") && ++around.elements > shaderlimit::ListElements)
                object(token.line, "lists too many elements", shaderlimit::ListElements, around.elements);
        }
        if (!opensBracket(token)) continue;
        open.push_back(at);
        if (open.size() > shaderlimit::Nesting)
            object(token.line, "nests brackets too deeply", shaderlimit::Nesting, open.size());
    }
    for (const std::size_t unclosed : open) pairs[unclosed].closing = tokens.size();
}

} // namespace workbench
