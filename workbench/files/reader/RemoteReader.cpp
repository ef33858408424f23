// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/reader/RemoteReader.h"

#include "workbench/files/PictureMagic.h"
#include "workbench/files/Reason.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <system_error>

namespace workbench {
namespace {

/// Rows that are decoded at once: as many as the readers take in one step, fewer where they are very long.
constexpr std::size_t StepRows = 64;
constexpr std::size_t MostInSlot = std::size_t{16} << 20;
/// The slots together; two of them at least, so that one is filled while another one is read.
constexpr std::size_t UsualMemory = std::size_t{16} << 20;
constexpr std::size_t MostSlots = 8;

/// Some formats are only decoded whole, and even the slowest of them are faster than this.
constexpr std::uint64_t SlowestBytesPerSecond = std::uint64_t{4} << 20;

/// What another process calls this file: names such as /dev/stdin mean other files there. Throws
/// Failure(Input) for one that has no name.
std::filesystem::path pathElsewhere(const std::filesystem::path& path) {
    if (!path.string().starts_with("/dev/") && !path.string().starts_with("/proc/")) return path;
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(path, error);
    if (error)
        throw Failure(Fault::Input, {path.string(),
                                     "cannot be read",
                                     "a file that has a name",
                                     "one that is deleted",
                                     "Name the file itself",
                                     {}});
    return real;
}

/// A process for the picture. What this process lacks for it is a failure of this picture.
Channel conversation(const std::filesystem::path& path, const PictureLimits& limits, bool linear,
                     ReaderProgram& program) {
    try {
        std::error_code ignored; // then the path is an absolute one, or leads nowhere
        const std::string folder = std::filesystem::current_path(ignored).string();
        // Of the processor, so that a decoder without an answer in time is called that.
        const std::int64_t seconds = 2 * std::chrono::ceil<std::chrono::seconds>(limits.time).count();
        return program.open({folder, pathElsewhere(path).string(), ownFormatOf(path) == OwnFormat::None,
                             limits.memory, static_cast<int>(std::min<std::int64_t>(seconds, 1 << 30)),
                             linear});
    } catch (const std::system_error& reason) {
        throw Failure(Fault::Input, {path.string(),
                                     "cannot be read in a process of its own",
                                     "",
                                     reason.code().message(),
                                     "Close other programs, or allow more open files and processes",
                                     {}});
    }
}

/// What any reader checks, once more. A byte for each value is the least that can be.
void checkSize(const std::filesystem::path& path, const PictureDescription& about) {
    const std::size_t channels = (about.isGrey ? 1U : 3U) + (about.hasAlpha ? 1U : 0U) +
                                 about.extraChannels.size() + about.unreadChannels.size();
    const auto count = static_cast<std::int64_t>(channels);
    checkPictureSize(path, about.width, about.height, count, count, std::filesystem::file_size(path),
                     about.format);
}

/// How a process ended, as its message says.
ChildEnding endingIn(std::string_view bytes) {
    ParcelReader parcel(bytes);
    const auto way = parcel.flag() ? ChildEnding::Way::Signal : ChildEnding::Way::Exited;
    const int number = parcel.integer(0, 255);
    parcel.end();
    return {way, number, ""};
}

} // namespace

RemoteReader::RemoteReader(const std::filesystem::path& path, const PictureLimits& limits,
                           ReaderProgram& program, bool linear)
    : PictureReader(path), limits(limits), channel(conversation(path, limits, linear, program)) {
    const Message message = answer(std::filesystem::file_size(path));
    PictureDescription told;
    try {
        if (message.kind != MessageKind::Opened) throw BrokenParcel();
        told = descriptionIn(message.bytes);
    } catch (const BrokenParcel& reason) {
        fail(reason.what());
    }
    checkSize(path, told);
    about = std::move(told);
}

std::string RemoteReader::whatFails() const {
    if (about.height == 0) return "cannot be read as a picture";
    if (blocks.empty()) return "cannot be read";
    const Block& block = blocks.front();
    return "cannot be read at the rows " + std::to_string(block.rows.first) + " to " +
           std::to_string(block.end() - 1) + " of " + std::to_string(about.height);
}

/// Ends the conversation, and with it the process at its other end.
void RemoteReader::fail(std::string got) {
    Diagnostic message{
        file.string(), whatFails(), "", reasonText(std::move(got)), "The file is probably damaged", {}};
    channel = Channel(Descriptor());
    blocks.clear();
    throw Failure(Fault::Input, std::move(message));
}

/// The next message. `decodedBytes` are what the process may have to decode for it.
Message RemoteReader::answer(std::uint64_t decodedBytes) {
    const auto time = limits.time + std::chrono::seconds(decodedBytes / SlowestBytesPerSecond);
    try {
        std::optional<Message> message = channel.receive(time);
        if (!message) fail("a reading process that ended without a word");
        if (message->kind == MessageKind::Failed) throw failureIn(message->bytes);
        if (message->kind == MessageKind::Ended) {
            const ChildEnding ending = endingIn(message->bytes);
            fail(ending.way == ChildEnding::Way::Signal && ending.number == SIGXCPU
                     ? "a decoder that takes more time of the processor than its pixels may"
                     : "a reading process that " + ending.text());
        }
        return std::move(*message);
    } catch (const BrokenParcel& reason) {
        fail(reason.what());
    } catch (const SilentChannel&) {
        fail("no answer of the decoder for " +
             std::to_string(std::chrono::ceil<std::chrono::seconds>(time).count()) + " s");
    }
}

void RemoteReader::makeMemory() {
    const auto height = static_cast<std::size_t>(about.height);
    const std::size_t row = SlotLayout(about, 1).size();
    const std::size_t rows = std::clamp<std::size_t>(MostInSlot / row, 1, std::min(StepRows, height));
    shape.rowsPerSlot = static_cast<int>(rows);
    const std::size_t slot = SlotLayout(about, shape.rowsPerSlot).size();
    shape.slots =
        std::min(std::clamp<std::size_t>(UsualMemory / slot, 2, MostSlots), (height + rows - 1) / rows);
    try {
        memory = SharedMemory::create(shape.slots * slot);
    } catch (const std::system_error& reason) {
        fail(reason.code().message());
    }
    shape.id = memory.id();
    static_cast<void>(channel.offer(MessageKind::Memory, packed(shape)));
}

/// Asks for rows as far as there are slots for them. What cannot be sent is missed at the next answer.
void RemoteReader::askUpTo(int row) {
    while (nextRow < row && blocks.size() < shape.slots) {
        const int count = std::min(shape.rowsPerSlot, about.height - nextRow);
        const RowsRequest rows{askedFor++ % shape.slots, nextRow, count, withExtra};
        if (!channel.offer(MessageKind::Decode, packed(rows))) return;
        blocks.push_back({rows});
        nextRow += count;
    }
}

/// Waits for the first of the blocks that are asked for; one that fails is dropped.
void RemoteReader::awaitFront() {
    if (!blocks.empty() && blocks.front().isThere) return;
    try {
        const auto pixels =
            static_cast<std::uint64_t>(about.width) * static_cast<std::uint64_t>(about.height);
        const Message message = answer(pixels * sizeof(krod::RGBAHalf));
        if (blocks.empty() || message.kind != MessageKind::Decoded ||
            message.bytes != packed(blocks.front().rows))
            fail(BrokenParcel().what());
        blocks.front().isThere = true;
    } catch (const Failure&) {
        if (!blocks.empty()) blocks.pop_front();
        throw;
    }
}

/// Forgets what is asked for and goes on at that row. Answers come in order, so those are waited for.
void RemoteReader::startAt(int row, bool extra) {
    while (!blocks.empty()) {
        try {
            awaitFront();
            blocks.pop_front();
        } catch (const Failure&) { // rows that nobody wants any more
        }
    }
    nextRow = row;
    withExtra = extra;
}

/// The block that begins above that row or with it, and ends below.
const RemoteReader::Block& RemoteReader::blockWith(int row) {
    for (;;) {
        awaitFront();
        if (row < blocks.front().end()) return blocks.front();
        blocks.pop_front();
    }
}

void RemoteReader::copyRows(const Block& block, int first, int count, krod::RGBAHalf* out) {
    const SlotLayout layout(about, shape.rowsPerSlot);
    const std::byte* const slot = memory.data() + block.rows.slot * layout.size();
    const std::size_t rowBytes = static_cast<std::size_t>(about.width) * sizeof(krod::RGBAHalf);
    const auto skipped = static_cast<std::size_t>(first - block.rows.first);
    std::memcpy(static_cast<void*>(out), slot + skipped * rowBytes,
                static_cast<std::size_t>(count) * rowBytes);
    for (int row = 0; row < count; ++row) {
        ValueLoss loss;
        const std::size_t place = skipped + static_cast<std::size_t>(row);
        std::memcpy(&loss, slot + layout.losses() + place * sizeof loss, sizeof loss);
        if (loss.overflows > 4 * static_cast<std::uint64_t>(about.width)) fail(BrokenParcel().what());
        countLoss(first + row, loss);
    }
}

void RemoteReader::copyExtra(const Block& block, int first, int count, int outRow, ExtraRows& extra) const {
    const SlotLayout layout(about, shape.rowsPerSlot);
    const std::byte* const slot = memory.data() + block.rows.slot * layout.size();
    for (std::size_t i = 0; i < extra.size(); ++i) {
        const std::size_t rowBytes =
            static_cast<std::size_t>(about.width) * about.extraChannels[i].bytesPerValue();
        std::memcpy(extra[i].data() + static_cast<std::size_t>(outRow) * rowBytes,
                    slot + layout.plane(i) + static_cast<std::size_t>(first - block.rows.first) * rowBytes,
                    static_cast<std::size_t>(count) * rowBytes);
    }
}

void RemoteReader::decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows* extra) {
    if (!memory.data()) makeMemory();
    const bool wantsExtra = extra && !extra->empty();
    const int firstAsked = blocks.empty() ? nextRow : blocks.front().rows.first;
    const bool goesOn = first == readUpTo;
    if (first < firstAsked || first > nextRow || wantsExtra != withExtra) startAt(first, wantsExtra);
    readUpTo = first + count;
    const int aim = goesOn ? about.height : readUpTo; // who jumps about does not want the next rows
    for (int row = first; row < readUpTo;) {
        askUpTo(aim);
        const Block& block = blockWith(row);
        const int taken = std::min(block.end(), readUpTo) - row;
        copyRows(block, row, taken, out + std::ptrdiff_t{row - first} * about.width);
        if (wantsExtra) copyExtra(block, row, taken, row - first, *extra);
        row += taken;
        if (row == block.end()) blocks.pop_front();
    }
    askUpTo(aim);
}

} // namespace workbench
