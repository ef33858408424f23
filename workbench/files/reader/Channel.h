// SPDX-License-Identifier: Apache-2.0
// A conversation between two processes, in whole messages.
#pragma once

#include "workbench/platform/Descriptor.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace workbench {

/// What a message is about. The host asks, the reading process answers in the same order.
enum class MessageKind : std::uint32_t {
    Open = 1, ///< host to program: a picture is to be opened; with the socket of its own conversation
    Opened,   ///< its description
    Failed,   ///< why it cannot be opened, or rows not be read
    Memory,   ///< host: where rows are to go
    Decode,   ///< host: which rows are wanted
    Decoded,  ///< they are there
    Ended,    ///< program to host: how the reading process came to its end
};

/// One message.
struct Message {
    MessageKind kind{};
    std::string bytes;
    Descriptor file; ///< an open file that came along
};

/// The other end said nothing in time.
class SilentChannel : public std::runtime_error {
public:
    SilentChannel() : std::runtime_error("no answer in time") {}
};

/// One end of a conversation. Messages arrive whole or not at all; a longer one than 64 MiB never does.
class Channel {
public:
    explicit Channel(Descriptor socket) : socket(std::move(socket)) {}
    /// Two ends. Throws std::system_error where this process may open no more files.
    [[nodiscard]] static std::pair<Channel, Channel> pair();

    /// Sends a message, with an open file if one is named. Waits while the other end has much to read; false
    /// when it is gone.
    bool send(MessageKind kind, std::string_view bytes, int file = -1);
    /// The same for a short message, and false instead of waiting.
    bool offer(MessageKind kind, std::string_view bytes, int file = -1);
    /// The next message; nothing when the other end is gone. Throws SilentChannel when none has come in time,
    /// BrokenParcel for what is no message. Without a time it waits for ever.
    [[nodiscard]] std::optional<Message> receive(std::optional<std::chrono::milliseconds> time = {});

    /// The socket, for those who wait for several things at once.
    [[nodiscard]] int descriptor() const { return socket.get(); }

private:
    bool sendPart(MessageKind kind, std::string_view bytes, bool isLast, int file, int flags);

    Descriptor socket;
};

} // namespace workbench
