// SPDX-License-Identifier: Apache-2.0
#include "workbench/memory/LibraryScope.h"

namespace workbench {

namespace {

constinit thread_local LibraryId innermost = 0;

} // namespace

LibraryScope::LibraryScope(LibraryId library) noexcept : outer(innermost) { innermost = library; }

LibraryScope::~LibraryScope() { innermost = outer; }

LibraryId LibraryScope::current() noexcept { return innermost; }

} // namespace workbench
