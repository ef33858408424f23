// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/reader/PictureProcess.h"

#include "workbench/files/Reason.h"
#include "workbench/files/reader/SharedMemory.h"
#include "workbench/platform/ProcessLimits.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <new>
#include <optional>

namespace workbench {
namespace {

/// What reading any head may need, with the stacks and stores of the decoders' threads.
constexpr std::uint64_t HeadMemory = std::uint64_t{2} << 30;
/// Decoders of whole pictures hold them as they are stored, and again as they become.
constexpr std::uint64_t Copies = 3;

/// A head and the refusal of what is behind it fit into this, however little is allowed.
constexpr std::uint64_t LeastMemory = std::uint64_t{128} << 20;
/// Files of a picture that are open at once, with the standard streams and the host's socket.
constexpr std::uint64_t MostFiles = 16;
/// Even the slowest decoders are faster than this.
constexpr double SlowestBytesPerSecond = 4 << 20;

/// Limits this process to what it had at first and so much more.
class MemoryLimit {
public:
    explicit MemoryLimit(std::uint64_t most) : most(std::max(most, LeastMemory)) {}

    void allow(std::uint64_t bytes) {
        asked = bytes;
        allowed = limitAddresses(before + std::min(most, bytes)) - before;
    }
    [[nodiscard]] std::uint64_t megabytes() const { return allowed >> 20U; }
    /// More is not allowed, whatever a picture declares.
    [[nodiscard]] bool isTheMost() const { return allowed >= most || allowed < asked; }

private:
    std::uint64_t most, before = mappedBytes(), asked = 0, allowed = 0;
};

/// Limits this process to some seconds of the processor, and what its pixels may take.
class TimeLimit {
public:
    explicit TimeLimit(int seconds) : allowed(seconds) { apply(); }

    /// Some decoders do all the work for the first rows, and anew for rows that lie further up.
    void allow(const RowsRequest& rows, const PictureDescription& about) {
        const bool startsAnew = rows.first < nextRow || nextRow == 0;
        nextRow = rows.first + rows.count;
        const double bytes =
            1.0 * about.width * (rows.count + (startsAnew ? about.height : 0)) * sizeof(krod::RGBAHalf);
        allowed += bytes / SlowestBytesPerSecond;
        apply();
    }

private:
    void apply() const { limitProcessorTime(std::chrono::seconds(std::llround(std::ceil(allowed)))); }

    double allowed;
    int nextRow = 0;
};

/// What reading never needs is given up.
void giveUp() {
    giveUpRights();
    limitFiles(MostFiles);
    limitFileSize(0);
}

/// The picture as stored, with four bytes for each value.
std::uint64_t bytesOf(const PictureDescription& about) {
    const std::size_t channels = 4 + about.extraChannels.size() + about.unreadChannels.size();
    return static_cast<std::uint64_t>(about.width) * static_cast<std::uint64_t>(about.height) * channels * 4;
}

/// Slots in shared memory.
class Slots {
public:
    void attach(const RowMemory& offered, const PictureDescription& about) {
        layout.emplace(about, offered.rowsPerSlot);
        memory = SharedMemory::attach(offered.id, offered.slots * layout->size());
        shape = offered;
    }
    /// The layout and the beginning of a slot that can take those rows.
    std::byte* slot(const RowsRequest& rows) const {
        if (!memory.data() || rows.slot >= shape.slots || rows.count > shape.rowsPerSlot)
            throw BrokenParcel();
        return memory.data() + rows.slot * layout->size();
    }
    std::optional<SlotLayout> layout;

private:
    RowMemory shape;
    SharedMemory memory;
};

void decode(PictureReader& reader, const RowsRequest& rows, const Slots& slots) {
    std::byte* const slot = slots.slot(rows);
    ExtraRows extra;
    reader.readRows(rows.first, rows.count, reinterpret_cast<krod::RGBAHalf*>(slot),
                    rows.withExtra ? &extra : nullptr);
    const std::vector<ValueLoss>& losses = reader.lossByRow();
    std::memcpy(slot + slots.layout->losses(), losses.data(), losses.size() * sizeof losses[0]);
    for (std::size_t i = 0; i < extra.size(); ++i)
        std::memcpy(slot + slots.layout->plane(i), extra[i].data(), extra[i].size());
}

/// Does something for the picture; what goes wrong is sent instead of being thrown. False then.
template <typename Work>
bool guarded(const OpenRequest& request, const MemoryLimit& memory, Channel& channel, const std::string& what,
             Work work) {
    const auto tell = [&](Fault fault, std::string got) {
        const Failure failure(fault, {request.path,
                                      what,
                                      "",
                                      reasonText(std::move(got)),
                                      fault == Fault::Output
                                          ? "Allow more with --memory; a damaged file may want any amount"
                                          : "The file is damaged, or larger than this program allows",
                                      {}});
        channel.send(MessageKind::Failed, packed(failure));
        return false;
    };
    try {
        work();
        return true;
    } catch (const Failure& failure) {
        channel.send(MessageKind::Failed, packed(failure));
        return false;
    } catch (const std::bad_alloc&) {
        return tell(memory.isTheMost() ? Fault::Output : Fault::Input,
                    "more than " + std::to_string(memory.megabytes()) + " MiB of memory needed");
    } catch (const std::exception& reason) {
        return tell(Fault::Input, reason.what());
    }
}

} // namespace

void servePicture(const OpenRequest& request, Channel& channel, const PictureOpener& open) {
    giveUp();
    MemoryLimit memory(request.memory);
    TimeLimit time(request.seconds);
    std::unique_ptr<PictureReader> reader;
    const bool isOpen = guarded(request, memory, channel, "cannot be read as a picture", [&] {
        std::error_code ignored; // the path may be absolute
        std::filesystem::current_path(request.folder, ignored);
        memory.allow(HeadMemory + std::filesystem::file_size(request.path));
        reader = open(request.path);
        if (request.linear) reader->linearize();
        channel.send(MessageKind::Opened, packed(reader->description()));
        memory.allow(HeadMemory + Copies * bytesOf(reader->description()));
    });
    if (!isOpen) return;
    Slots slots;
    while (const std::optional<Message> message = channel.receive()) {
        if (message->kind == MessageKind::Memory) {
            slots.attach(rowMemoryIn(message->bytes), reader->description());
            continue;
        }
        const RowsRequest rows = rowsRequestIn(message->bytes);
        const std::string what = "cannot be read at the rows " + std::to_string(rows.first) + " to " +
                                 std::to_string(rows.first + rows.count - 1) + " of " +
                                 std::to_string(reader->description().height);
        time.allow(rows, reader->description());
        if (guarded(request, memory, channel, what, [&] { decode(*reader, rows, slots); }))
            channel.send(MessageKind::Decoded, message->bytes);
    }
}

} // namespace workbench
