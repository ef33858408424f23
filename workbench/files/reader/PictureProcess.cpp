// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/reader/PictureProcess.h"

#include "workbench/files/Reason.h"
#include "workbench/files/reader/SharedMemory.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <new>
#include <optional>

#include <sys/resource.h>
#include <unistd.h>

namespace workbench {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool Instrumented = true;
#elif defined(__has_feature)
constexpr bool Instrumented = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool Instrumented = false;
#endif

/// What reading any head may need, with the stacks and stores of the decoders' threads.
constexpr std::uint64_t HeadMemory = std::uint64_t{2} << 30;
/// Decoders of whole pictures hold them as they are stored, and again as they become.
constexpr std::uint64_t Copies = 3;

std::uint64_t addressSpace() {
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

/// Limits this process to what it had at first and so much more.
class MemoryLimit {
public:
    explicit MemoryLimit(std::uint64_t most) : most(most) {}

    void allow(std::uint64_t bytes) {
        allowed = std::min(most, bytes);
        if (Instrumented) return; // sanitizers reserve terabytes
        rlimit limit{};
        ::getrlimit(RLIMIT_AS, &limit);
        limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, before + allowed);
        ::setrlimit(RLIMIT_AS, &limit);
    }
    [[nodiscard]] std::uint64_t megabytes() const { return allowed >> 20U; }

private:
    std::uint64_t most, before = addressSpace(), allowed = 0;
};

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
    const std::vector<std::uint64_t>& overflows = reader.overflowsByRow();
    std::memcpy(slot + slots.layout->overflows(), overflows.data(), overflows.size() * sizeof overflows[0]);
    for (std::size_t i = 0; i < extra.size(); ++i)
        std::memcpy(slot + slots.layout->plane(i), extra[i].data(), extra[i].size());
}

/// Does something for the picture; what goes wrong is sent instead of being thrown. False then.
template <typename Work>
bool guarded(const OpenRequest& request, const MemoryLimit& memory, Channel& channel, const std::string& what,
             Work work) {
    const auto tell = [&](std::string got) {
        const Failure failure(Fault::Input, {request.path,
                                             what,
                                             "",
                                             reasonText(std::move(got)),
                                             "The file is damaged, or larger than this program allows",
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
        return tell("more than " + std::to_string(memory.megabytes()) + " MiB of memory needed");
    } catch (const std::exception& reason) {
        return tell(reason.what());
    }
}

} // namespace

void servePicture(const OpenRequest& request, Channel& channel, const PictureOpener& open) {
    MemoryLimit memory(request.memory);
    std::unique_ptr<PictureReader> reader;
    const bool isOpen = guarded(request, memory, channel, "cannot be read as a picture", [&] {
        std::error_code ignored; // the path may be absolute
        std::filesystem::current_path(request.folder, ignored);
        memory.allow(HeadMemory + std::filesystem::file_size(request.path));
        reader = open(request.path);
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
        if (guarded(request, memory, channel, what, [&] { decode(*reader, rows, slots); }))
            channel.send(MessageKind::Decoded, message->bytes);
    }
}

} // namespace workbench
