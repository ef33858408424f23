// SPDX-License-Identifier: Apache-2.0
// Another program that works when it is asked.
#pragma once

#include <sys/types.h>

#include <cstdio>
#include <string>
#include <vector>

namespace bench {

/// A child that answers each line with one line. It ends when this goes.
class Peer {
public:
    /// Begins the program and waits for its first line. Throws std::runtime_error when it ends instead.
    explicit Peer(const std::vector<std::string>& words);
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer();

    /// The first line that it wrote.
    [[nodiscard]] const std::string& greeting() const { return first; }
    /// Has one piece of work done and gives the seconds that the program says it took. Throws std::runtime_error.
    [[nodiscard]] double ask();

private:
    [[nodiscard]] std::string readLine();

    pid_t child = 0;
    FILE* requests = nullptr;
    FILE* answers = nullptr;
    std::string first;
};

} // namespace bench
