// SPDX-License-Identifier: Apache-2.0
// The libraries behind OpenImageIO and assimp print lines of their own; what they mean is told in our sentence.
#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace workbench {

/// Leads standard error nowhere while it lives. For a single thread that prints nothing itself meanwhile.
class QuietErrors {
public:
    QuietErrors() : real(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
        const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (real >= 0 && nowhere >= 0) ::dup2(nowhere, STDERR_FILENO);
        if (nowhere >= 0) ::close(nowhere);
    }
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;
    ~QuietErrors() {
        if (real < 0) return;
        ::dup2(real, STDERR_FILENO);
        ::close(real);
    }

private:
    int real;
};

} // namespace workbench
