// SPDX-License-Identifier: Apache-2.0
#include "tests/support/StandardOutput.h"

#include <unistd.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace support {
namespace {

/// Leads descriptor 1 into a file for its own lifetime.
class Diversion {
public:
    explicit Diversion(int file) : original(::dup(1)) {
        std::fflush(stdout);
        if (original < 0 || ::dup2(file, 1) < 0)
            throw std::runtime_error("standard output cannot be diverted");
    }
    Diversion(const Diversion&) = delete;
    Diversion& operator=(const Diversion&) = delete;
    ~Diversion() {
        std::fflush(stdout);
        ::dup2(original, 1);
        ::close(original);
    }

private:
    int original;
};

} // namespace

std::string outputOf(const std::function<void()>& function) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), &std::fclose);
    if (!file) throw std::runtime_error("no temporary file for standard output");
    {
        const Diversion diversion(::fileno(file.get()));
        function();
    }
    std::string text;
    std::rewind(file.get());
    for (int c = std::fgetc(file.get()); c != EOF; c = std::fgetc(file.get())) text += static_cast<char>(c);
    return text;
}

} // namespace support
