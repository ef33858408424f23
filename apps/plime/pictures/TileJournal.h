// SPDX-License-Identifier: Apache-2.0
// The finished tiles of a picture that is being drawn, so that an interrupted run can go on.
#pragma once

#include "host/rendering/RGBAHalf.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <unistd.h>

namespace workbench {

/// Keeps tiles in the folder OUT.parts: one file of pixels per tile, and a journal with a line for each that
/// is complete: its number, its size and its checksum. A tile counts only when all three agree, so a run may
/// end at any moment. The journal's first line names the job that the tiles belong to. Two runs never use
/// one folder at the same time. All errors are Failure(Output).
class TileJournal {
public:
    /// Begins beside the picture `output`. `job` is everything that decides the pixels. With `resume` the
    /// tiles of an earlier run of the same job can be taken; all others are deleted when the first new one is
    /// kept, so that work which is refused before loses nothing. Refused: a folder of that name that is not ours,
    /// which the first line of its journal decides, and one that another run works in.
    TileJournal(const std::filesystem::path& output, std::string_view job, bool resume);
    /// The folder beside a picture.
    [[nodiscard]] static std::filesystem::path folderOf(const std::filesystem::path& output);
    /// Leaves the folder, unless it holds no tile.
    ~TileJournal();
    TileJournal(const TileJournal&) = delete;
    TileJournal& operator=(const TileJournal&) = delete;

    /// Whether tiles were to be taken, but belong to another job.
    [[nodiscard]] bool foundAnotherJob() const noexcept { return anotherJob; }
    /// The tile of that number, when it is there, undamaged, and has so many pixels.
    [[nodiscard]] std::optional<std::vector<krod::RGBAHalf>> take(std::size_t tile, std::size_t pixels);
    /// Keeps a finished tile: it outlives this program from here on. Nothing is flushed to the disk, which would
    /// take longer than a small tile; what a loss of power takes is missed by its checksum.
    void keep(std::size_t tile, std::span<const krod::RGBAHalf> pixels);
    /// Deletes the tiles, and the folder if nothing else is in it: the picture is complete.
    void remove() noexcept;

    /// What the tiles of a picture of so many pixels take beside those that are there already.
    [[nodiscard]] std::uint64_t missingBytes(std::uint64_t pixels) const noexcept;
    /// How many tiles were taken so far.
    [[nodiscard]] std::size_t takenCount() const noexcept { return taken; }
    /// Whether another run could take something.
    [[nodiscard]] bool holdsTiles() const noexcept { return !entries.empty(); }
    [[nodiscard]] const std::filesystem::path& folder() const noexcept { return place; }

private:
    struct Entry {
        std::uint64_t size = 0, checksum = 0;
    };
    struct Descriptor {
        int number = -1;
        Descriptor() = default;
        Descriptor(const Descriptor&) = delete;
        Descriptor& operator=(const Descriptor&) = delete;
        ~Descriptor() { close(); }
        int close() { return number < 0 ? 0 : ::close(std::exchange(number, -1)); }
    };

    [[nodiscard]] bool isOurs() const;
    void claimFolder();
    void begin();
    void goOn(const std::string& text);
    void readLine(std::string_view line);
    void writeAll(const Descriptor& file, const std::filesystem::path& path, const void* data,
                  std::size_t size) const;
    void removeTiles() const noexcept;
    [[nodiscard]] std::filesystem::path journalPath() const { return place / "journal"; }
    [[nodiscard]] std::filesystem::path pathOf(std::size_t tile) const;

    std::filesystem::path place;
    std::string head; ///< the journal's first line
    Descriptor lock, journal;
    std::map<std::size_t, Entry> entries; ///< of tiles that are complete, as far as is known
    std::size_t taken = 0;
    bool ours = false; ///< the folder may be deleted
    bool anotherJob = false;
    bool holdsOthers = false; ///< tiles that are not to be taken, but not yet deleted either
};

} // namespace workbench
