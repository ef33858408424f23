// SPDX-License-Identifier: Apache-2.0
// No handler of this process runs in a child that has just begun.
#pragma once

#include <csignal>

#include <pthread.h>

namespace workbench {

/// While it lives, signals wait for this thread, and for a child that is forked meanwhile.
class SignalPause {
public:
    SignalPause() {
        sigset_t all;
        sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &before);
    }
    SignalPause(const SignalPause&) = delete;
    SignalPause& operator=(const SignalPause&) = delete;
    ~SignalPause() { ::pthread_sigmask(SIG_SETMASK, &before, nullptr); }

private:
    sigset_t before{};
};

} // namespace workbench
