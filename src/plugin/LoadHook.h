// SPDX-License-Identifier: Apache-2.0
// The library's load and unload hook.
#pragma once

namespace krod::hook {

/// What operating systems tell a library, in the numbers of the one that tells all four.
enum Notification : unsigned { ProcessDetach = 0, ProcessAttach = 1, ThreadAttach = 2, ThreadDetach = 3 };

/// [load] Passes a notification on to the host: attach 0, detach 1, thread attach 2, thread detach 3. Any
/// other value calls nothing. Always reports success.
bool notify(unsigned notification);

} // namespace krod::hook
