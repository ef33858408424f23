// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/reader/Channel.h"

#include "workbench/files/reader/Parcel.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>

namespace workbench {
namespace {

using Clock = std::chrono::steady_clock;

/// A packet of the socket holds so much of a message at most.
constexpr std::size_t MostInPart = std::size_t{32} << 10;
constexpr std::size_t MostInAll = std::size_t{64} << 20;

/// Stands before each part.
struct PartHead {
    MessageKind kind;
    std::uint32_t isLast;
};

/// Room for the number of one open file beside a packet.
union FileRoom {
    cmsghdr head;
    char bytes[CMSG_SPACE(sizeof(int))];
};

/// Waits until there is something to read.
void waitForMessage(int socket, std::optional<Clock::time_point> deadline) {
    for (;;) {
        int wait = -1;
        if (deadline)
            wait = static_cast<int>(std::clamp<std::int64_t>(
                std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now()).count(), 0, 1 << 30));
        pollfd watched{socket, POLLIN, 0};
        const int ready = ::poll(&watched, 1, wait);
        if (ready > 0) return;
        if (ready == 0) throw SilentChannel();
        if (errno != EINTR) throw BrokenParcel();
    }
}

/// The file that came along, if there is one.
Descriptor fileIn(msghdr& packet) {
    const cmsghdr* const head = CMSG_FIRSTHDR(&packet);
    if (!head || head->cmsg_level != SOL_SOCKET || head->cmsg_type != SCM_RIGHTS) return Descriptor();
    int number = -1;
    std::memcpy(&number, CMSG_DATA(head), sizeof number);
    return Descriptor(number);
}

} // namespace

std::pair<Channel, Channel> Channel::pair() {
    int ends[2] = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        throw std::system_error(errno, std::generic_category(), "socketpair");
    return {Channel(Descriptor(ends[0])), Channel(Descriptor(ends[1]))};
}

bool Channel::sendPart(MessageKind kind, std::string_view bytes, bool isLast, int file, int flags) {
    PartHead part{kind, isLast ? 1U : 0U};
    iovec pieces[] = {{&part, sizeof part}, {const_cast<char*>(bytes.data()), bytes.size()}};
    msghdr packet{};
    packet.msg_iov = pieces;
    packet.msg_iovlen = 2;
    FileRoom room{};
    if (file >= 0) {
        packet.msg_control = &room;
        packet.msg_controllen = sizeof room;
        cmsghdr* const head = CMSG_FIRSTHDR(&packet);
        head->cmsg_level = SOL_SOCKET;
        head->cmsg_type = SCM_RIGHTS;
        head->cmsg_len = CMSG_LEN(sizeof file);
        std::memcpy(CMSG_DATA(head), &file, sizeof file);
    }
    ssize_t sent = 0;
    while ((sent = ::sendmsg(socket.get(), &packet, MSG_NOSIGNAL | flags)) < 0 && errno == EINTR) continue;
    return sent == static_cast<ssize_t>(sizeof part + bytes.size());
}

bool Channel::send(MessageKind kind, std::string_view bytes, int file) {
    while (bytes.size() > MostInPart) {
        if (!sendPart(kind, bytes.substr(0, MostInPart), false, -1, 0)) return false;
        bytes.remove_prefix(MostInPart);
    }
    return sendPart(kind, bytes, true, file, 0);
}

bool Channel::offer(MessageKind kind, std::string_view bytes, int file) {
    return sendPart(kind, bytes, true, file, MSG_DONTWAIT);
}

std::optional<Message> Channel::receive(std::optional<std::chrono::milliseconds> time) {
    if (socket.get() < 0) return std::nullopt;
    std::optional<Clock::time_point> deadline;
    if (time) deadline = Clock::now() + *time;
    Message message;
    for (;;) {
        waitForMessage(socket.get(), deadline);
        PartHead part{};
        char bytes[MostInPart];
        iovec pieces[] = {{&part, sizeof part}, {bytes, sizeof bytes}};
        FileRoom room{};
        msghdr packet{};
        packet.msg_iov = pieces;
        packet.msg_iovlen = 2;
        packet.msg_control = &room;
        packet.msg_controllen = sizeof room;
        const ssize_t size = ::recvmsg(socket.get(), &packet, MSG_CMSG_CLOEXEC);
        if (size < 0 && (errno == EINTR || errno == ECONNRESET)) continue; // messages may lie behind a reset
        if (size == 0) return std::nullopt;
        Descriptor file = fileIn(packet);
        if (size < static_cast<ssize_t>(sizeof part) || (packet.msg_flags & MSG_TRUNC) != 0 ||
            (message.kind != MessageKind{} && part.kind != message.kind))
            throw BrokenParcel();
        message.kind = part.kind;
        message.bytes.append(bytes, static_cast<std::size_t>(size) - sizeof part);
        if (file.get() >= 0) message.file = std::move(file);
        if (part.isLast == 1) return message;
        if (message.bytes.size() > MostInAll) throw BrokenParcel();
    }
}

} // namespace workbench
