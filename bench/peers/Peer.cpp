// SPDX-License-Identifier: Apache-2.0
#include "Peer.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <csignal>
#include <stdexcept>

namespace bench {

Peer::Peer(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    std::array<int, 2> down{}, up{};
    if (pipe(down.data()) != 0 || pipe(up.data()) != 0) throw std::runtime_error("no pipe can be made");
    std::signal(SIGPIPE, SIG_IGN); // a peer that has ended shows in its answer
    child = fork();
    if (child < 0) throw std::runtime_error("no process can be made");
    if (child == 0) {
        dup2(down[0], 0);
        dup2(up[1], 1);
        for (const int end : {down[0], down[1], up[0], up[1]}) close(end);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    close(down[0]);
    close(up[1]);
    requests = fdopen(down[1], "w");
    answers = fdopen(up[0], "r");
    first = readLine();
}

Peer::~Peer() {
    fclose(requests);
    fclose(answers);
    waitpid(child, nullptr, 0);
}

double Peer::ask() {
    std::fputs("draw\n", requests);
    std::fflush(requests);
    const std::string line = readLine();
    double seconds = 0;
    if (std::from_chars(line.data(), line.data() + line.size(), seconds).ec != std::errc())
        throw std::runtime_error("the other program answered \"" + line + '"');
    return seconds;
}

std::string Peer::readLine() {
    std::string line;
    int c = std::fgetc(answers);
    for (; c != EOF && c != '\n'; c = std::fgetc(answers)) line += static_cast<char>(c);
    if (c == EOF) throw std::runtime_error("the other program ended without an answer");
    return line;
}

} // namespace bench
