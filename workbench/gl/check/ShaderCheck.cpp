// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/check/ShaderCheck.h"

#include "workbench/gl/check/Arrays.h"
#include "workbench/gl/check/Brackets.h"
#include "workbench/gl/check/Calls.h"
#include "workbench/gl/check/Expressions.h"
#include "workbench/gl/check/Objection.h"
#include "workbench/gl/check/Preprocessor.h"

namespace workbench {
namespace {

void check(std::string_view text) {
    if (text.size() > shaderlimit::Bytes) object(0, "has too many bytes", shaderlimit::Bytes, text.size());
    const std::vector<Token> source = tokensOf(text);
    DriverNames driver;
    do {
        const std::vector<Token> tokens = preprocessed(source, driver);
        const Brackets brackets(tokens);
        checkExpressions(tokens);
        checkCalls(tokens, brackets, declaredArrays(tokens, brackets));
    } while (driver.next());
}

} // namespace

std::optional<ShaderObjection> objectionTo(std::string_view text) {
    try {
        check(text);
        return std::nullopt;
    } catch (const ShaderObjection& objection) {
        return objection;
    }
}

} // namespace workbench
