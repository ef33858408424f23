// SPDX-License-Identifier: Apache-2.0
// Ctrl-C: the first one asks the work to end in order and is answered at once, the second one ends the
// process.
#pragma once

namespace workbench {

/// Installs the handler of SIGINT, SIGTERM and SIGHUP. A signal that the caller had us ignore stays ignored.
/// The first signal is answered on standard error: work may take long to reach its next question. `cleanUp`
/// runs inside the handler of the second signal and must be safe there; it may be null.
void watchForInterruption(void (*cleanUp)() noexcept);

/// Whether a signal has come. Long work asks once per tile or frame.
[[nodiscard]] bool interrupted() noexcept;

/// Throws Failure(Interrupted) when a signal has come.
void throwIfInterrupted();

} // namespace workbench
