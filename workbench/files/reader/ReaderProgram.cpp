// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/reader/ReaderProgram.h"

#include "workbench/platform/ProcessLimits.h"
#include "workbench/report/Failure.h"

#include <unistd.h>

namespace workbench {
namespace {

/// The program lives as long as this process, whose end closes its socket, and not as its first user's thread.
/// Limits are set picture by picture.
constexpr ChildLimits OpenEnd{.time = std::chrono::hours(24 * 365), .fileSize = 0, .endsWithThread = false};

} // namespace

ReaderProgram& ReaderProgram::usual() {
    static ReaderProgram program(helperProgram("plime-picture-reader"));
    return program;
}

ReaderProgram::~ReaderProgram() {
    // The copy of a process must not end what belongs to the original.
    if (child && owner != ::getpid()) static_cast<void>(child.release());
}

void ReaderProgram::start() {
    if (child && owner != ::getpid()) static_cast<void>(child.release());
    child.reset();
    constexpr std::uint64_t Addresses = std::uint64_t{64} << 20, Files = 16;
    requireRoomFor(path.filename().string(), Addresses, Files);
    auto [mine, theirs] = Channel::pair();
    child = std::make_unique<ChildProgram>(path, std::vector<std::string>{},
                                           std::vector<int>{-1, -1, -1, theirs.descriptor()}, OpenEnd);
    owner = ::getpid();
    control.emplace(std::move(mine));
}

Channel ReaderProgram::open(const OpenRequest& request) {
    const std::scoped_lock lock(guard);
    auto [mine, theirs] = Channel::pair();
    const std::string bytes = packed(request);
    const bool isRunning = child && owner == ::getpid();
    if (isRunning && control->send(MessageKind::Open, bytes, theirs.descriptor())) return std::move(mine);
    start();
    if (!control->send(MessageKind::Open, bytes, theirs.descriptor())) failToStart();
    return std::move(mine);
}

void ReaderProgram::failToStart() {
    const ChildEnding ending = child->wait();
    child.reset();
    throw Failure(Fault::Input,
                  {path.filename().string(),
                   "this program reads pictures in place of this one, and does not work",
                   "",
                   ending.text(),
                   "Install it where it was built or packed, beside this program or its libraries",
                   {}});
}

} // namespace workbench
