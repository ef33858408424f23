// SPDX-License-Identifier: Apache-2.0
// The program that reads pictures in place of this one.
#pragma once

#include "workbench/files/reader/Channel.h"
#include "workbench/files/reader/PictureMessages.h"
#include "workbench/platform/ChildProgram.h"

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>

namespace workbench {

/// Keeps the program running, which makes a process for each picture and so loads the codecs once only.
class ReaderProgram {
public:
    explicit ReaderProgram(std::filesystem::path program) : path(std::move(program)) {}
    ReaderProgram(const ReaderProgram&) = delete;
    ReaderProgram& operator=(const ReaderProgram&) = delete;
    ~ReaderProgram();

    /// The one of this process, from the place where helper programs lie.
    [[nodiscard]] static ReaderProgram& usual();

    /// The conversation with a new process for that picture. Starts the program at first, and where it has
    /// come to an end. Throws Failure(Input) when it cannot be started, std::system_error where this process
    /// has no more processes or files.
    [[nodiscard]] Channel open(const OpenRequest& request);

private:
    void start();
    [[noreturn]] void failToStart();

    std::filesystem::path path;
    std::mutex guard;
    pid_t owner = 0; ///< the process that has started the program; a copy of it starts its own
    std::unique_ptr<ChildProgram> child;
    std::optional<Channel> control;
};

} // namespace workbench
