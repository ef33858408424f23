// SPDX-License-Identifier: Apache-2.0
// Apart from the rest, so that only these plug-ins name functions which concern the whole process.
#include "tests/mutants/Fault.h"

#include <atomic>
#include <clocale>
#include <csignal>
#include <cstdio>

#include <pthread.h>
#include <sched.h>
#include <unistd.h>

namespace {

std::atomic<bool> waiting{false};

/// Stays in a function of the system, so that unloading takes no code away under it.
void* waitForever(void*) {
    waiting = true;
    for (;;) ::pause();
}

} // namespace

void misbehave() {
    if (has(Fault::LocaleSet)) std::setlocale(LC_ALL, "C.UTF-8");
    if (has(Fault::OutputClosed)) ::close(1);
    if (has(Fault::SignalHandled)) std::signal(SIGUSR1, SIG_IGN);
    pthread_t thread{};
    if (has(Fault::ThreadStarted) && ::pthread_create(&thread, nullptr, waitForever, nullptr) == 0)
        while (!waiting) ::sched_yield();
}

void forkAndHang() {
    if (!has(Fault::ForksAndHangs)) return;
    if (::fork() > 0)
        std::fputs("a process was forked\n", stderr);
    else
        ::alarm(300); // where nobody ends it
    for (;;) ::pause();
}
