// SPDX-License-Identifier: Apache-2.0
// The functions of a text, which drivers copy into each place that calls them.
#pragma once

#include "workbench/gl/check/Arrays.h"
#include "workbench/gl/check/Brackets.h"
#include "workbench/gl/check/Token.h"

#include <span>

namespace workbench {

/// Objects to a function whose calls are more than shaderlimit::Calls with those of the functions that it
/// calls, to one that calls itself, and to more than shaderlimit::AllElements elements of arrays, those of a
/// function counted once for each call. Of several functions with one name the dearest counts that the call
/// can mean: those in front of it, or all where the name is announced by a prototype.
void checkCalls(std::span<const Token> tokens, const Brackets& brackets,
                std::span<const DeclaredArray> arrays);

} // namespace workbench
