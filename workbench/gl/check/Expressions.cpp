// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/check/Expressions.h"

#include "workbench/gl/check/Brackets.h"
#include "workbench/gl/check/Objection.h"

namespace workbench {
namespace {

bool opensStatement(const Token& token) {
    return token.is("if") || token.is("for") || token.is("while") || token.is("do") || token.is("switch");
}

} // namespace

void checkExpressions(std::span<const Token> tokens) {
    std::uint64_t operators = 0, statements = 0;
    int depth = 0; // of round and square brackets
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        const Token& token = tokens[at];
        const bool brace = token.is("{") || token.is("}");
        if (brace || token.is(";")) {
            const bool chained = at + 1 < tokens.size() && tokens[at + 1].is("else");
            if (token.is("{") || (!chained && depth == 0)) statements = 0;
            operators = 0;
        } else if (opensBracket(token)) {
            ++depth;
        } else if (closesBracket(token)) {
            if (depth > 0) --depth;
        } else if (opensStatement(token)) {
            if (++statements > shaderlimit::Nesting)
                object(token.line, "nests statements too deeply", shaderlimit::Nesting, statements);
        } else if (token.kind == Token::Kind::Symbol && (depth == 0 || !token.is(","))) {
            if (++operators > shaderlimit::Operators)
                object(token.line, "has too many operators in one expression", shaderlimit::Operators,
                       operators);
        }
    }
}

} // namespace workbench
