// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/terminal/Interruption.h"

#include "workbench/report/Failure.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <string_view>

#include <poll.h>
#include <unistd.h>

namespace workbench {
namespace {

constexpr int ErrorOutput = 2;

/// On a terminal the answer takes the place of the line that shows the progress.
constexpr std::string_view OnTerminal = "\r\x1b[K";
constexpr std::string_view Answer =
    "plime: interrupted; the run ends after the tile or step that it is at. A second Ctrl-C ends it at "
    "once.\n";

std::atomic<bool> asked{false};
bool toTerminal = false;
void (*atSecondSignal)() noexcept = nullptr;

void say(std::string_view text) noexcept {
    if (::write(ErrorOutput, text.data(), text.size()) < 0) return; // nobody is there to be told
}

/// Only what is safe in a handler, and nothing that waits: a pipe that nobody empties gets no answer.
void answer() noexcept {
    const int before = errno;
    pollfd output{ErrorOutput, POLLOUT, 0};
    if (::poll(&output, 1, 0) == 1 && (output.revents & POLLOUT) != 0) {
        if (toTerminal) say(OnTerminal);
        say(Answer);
    }
    errno = before;
}

extern "C" void onSignal(int) {
    if (!asked.exchange(true)) return answer();
    if (atSecondSignal) atSecondSignal();
    ::_exit(static_cast<int>(Fault::Interrupted));
}

} // namespace

void watchForInterruption(void (*cleanUp)() noexcept) {
    atSecondSignal = cleanUp;
    toTerminal = ::isatty(ErrorOutput) == 1;
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
