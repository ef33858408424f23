// SPDX-License-Identifier: Apache-2.0
// The interface that a plug-in is built for.
#pragma once

namespace krod {

/// The key of the interface version: last argument of every creator, and what the entry and the load hook
/// pass on.
inline constexpr char ApiKey[] = "KROD_API_VERSION";

} // namespace krod
