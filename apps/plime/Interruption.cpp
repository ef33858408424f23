// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/Interruption.h"

#include "workbench/report/Failure.h"

#include <atomic>
#include <csignal>

#include <unistd.h>

namespace workbench {
namespace {

std::atomic<bool> asked{false};
void (*atSecondSignal)() noexcept = nullptr;

extern "C" void onSignal(int) {
    if (!asked.exchange(true)) return;
    if (atSecondSignal) atSecondSignal();
    ::_exit(static_cast<int>(Fault::Interrupted));
}

} // namespace

void watchForInterruption(void (*cleanUp)() noexcept) {
    atSecondSignal = cleanUp;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before = {};
        if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) continue;
        struct sigaction action = {};
        action.sa_handler = onSignal;
        ::sigemptyset(&action.sa_mask);
        ::sigaction(signal, &action, nullptr);
    }
}

bool interrupted() noexcept { return asked.load(); }

void throwIfInterrupted() {
    if (interrupted()) throw Failure(Fault::Interrupted, {"", "interrupted", "", "", "", {}});
}

} // namespace workbench
