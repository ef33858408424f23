// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/terminal/Streams.h"

#include "workbench/report/Failure.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <string>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace workbench {
namespace {

[[noreturn]] void failWriting(int error) {
    throw Failure(Fault::Output, {"standard output",
                                  "the result cannot be written",
                                  "",
                                  std::generic_category().message(error),
                                  error == ENOSPC ? "Make room, or write to another place" : "",
                                  {}});
}

/// open() gives the lowest free number: afterwards 0, 1 and 2 are taken.
void occupyStandardDescriptors() {
    int taken = 0;
    while (taken >= 0 && taken <= 2) taken = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    if (taken > 2) ::close(taken);
    for (const int standard : {0, 1, 2}) {
        const int flags = ::fcntl(standard, F_GETFD);
        if (flags >= 0) ::fcntl(standard, F_SETFD, flags & ~FD_CLOEXEC);
    }
}

} // namespace

Streams::Streams() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    occupyStandardDescriptors();
    descriptor = ::fcntl(1, F_DUPFD_CLOEXEC, 3);
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere >= 0) {
        ::dup2(nowhere, 1);
        ::close(nowhere);
    }
}

Streams::~Streams() {
    if (descriptor >= 0) ::close(descriptor);
}

/// Line by line, so that they stand among the messages in the order in which they come.
void Streams::showModuleOutput() {
    ::dup2(2, 1);
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
}

void Streams::write(std::string_view text) {
    while (!text.empty() && !readerGone) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written >= 0)
            text.remove_prefix(static_cast<std::size_t>(written));
        else if (errno == EPIPE)
            readerGone = true;
        else if (errno != EINTR)
            failWriting(errno);
    }
}

std::size_t Streams::columns() const noexcept {
    winsize size{};
    if (::ioctl(descriptor, TIOCGWINSZ, &size) != 0) return 0;
    return size.ws_col;
}

void Streams::finish() {
    if (descriptor < 0) return;
    if (::close(std::exchange(descriptor, -1)) != 0 && errno != EINTR) failWriting(errno);
}

} // namespace workbench
