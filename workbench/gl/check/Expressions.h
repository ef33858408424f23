// SPDX-License-Identifier: Apache-2.0
// The length of single expressions, over which compilers recurse.
#pragma once

#include "workbench/gl/check/Token.h"

#include <span>

namespace workbench {

/// Objects to more than shaderlimit::Operators operators between two semicolons or braces. A selection and a
/// comma outside of brackets count as operators, brackets do not. Objects to more than shaderlimit::Nesting
/// of if, for, while, do and switch that lie within each other without braces.
void checkExpressions(std::span<const Token> tokens);

} // namespace workbench
