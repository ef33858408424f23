// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/TileJournal.h"

#include "workbench/report/Failure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <iterator>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace workbench {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view Version = "plime tiles 1 ";
constexpr std::string_view TilePrefix = "tile-";
constexpr std::size_t ChecksumDigits = 16;
constexpr int CreateFlags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW;

[[noreturn]] void fail(const fs::path& path, const char* what, int error) {
    const bool full = error == ENOSPC || error == EDQUOT || error == EFBIG;
    throw Failure(Fault::Output, {path.string(),
                                  what,
                                  "",
                                  std::strerror(error),
                                  full ? "Make room on the disk, or choose another place" : "",
                                  {}});
}

/// FNV-1a with 64 bits: http://www.isthe.com/chongo/tech/comp/fnv/
std::uint64_t checksumOf(const void* data, std::size_t size) {
    std::uint64_t sum = 0xcbf29ce484222325;
    for (const auto* byte = static_cast<const unsigned char*>(data); size > 0; ++byte, --size)
        sum = (sum ^ *byte) * 0x100000001b3;
    return sum;
}

std::string digits(std::uint64_t checksum) {
    std::array<char, ChecksumDigits> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), checksum, 16).ptr;
    const std::string number(text.data(), end);
    return std::string(ChecksumDigits - number.size(), '0') + number;
}

/// Of a regular file; nothing of any other, and none that links lead to.
std::string contentsOf(const fs::path& path) {
    std::error_code problem;
    if (!fs::is_regular_file(fs::symlink_status(path, problem))) return {};
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// "tile-" and a number.
bool isTile(std::string_view name) {
    if (!name.starts_with(TilePrefix) || name.size() == TilePrefix.size()) return false;
    return name.find_first_not_of("0123456789", TilePrefix.size()) == std::string_view::npos;
}

} // namespace

fs::path TileJournal::folderOf(const fs::path& output) { return fs::absolute(output) += ".parts"; }

TileJournal::TileJournal(const fs::path& output, std::string_view job, bool resume)
    : place(folderOf(output)),
      head(std::string(Version) + digits(checksumOf(job.data(), job.size())) + '\n') {
    claimFolder();
    const std::string text = contentsOf(journalPath());
    anotherJob = resume && !text.empty() && !text.starts_with(head);
    if (resume && text.starts_with(head))
        goOn(text);
    else
        holdsOthers = !text.empty();
}

TileJournal::~TileJournal() {
    if (entries.empty() && !holdsOthers) remove();
}

/// A run that was killed at its very beginning leaves a folder with nothing, or an empty journal.
bool TileJournal::isOurs() const {
    if (contentsOf(journalPath()).starts_with(Version)) return true;
    std::error_code problem;
    return std::ranges::all_of(fs::directory_iterator(place, problem),
                               [&](const fs::directory_entry& entry) {
                                   return entry.path() == journalPath() &&
                                          entry.symlink_status(problem).type() == fs::file_type::regular &&
                                          entry.file_size(problem) == 0;
                               }) &&
           !problem;
}

void TileJournal::claimFolder() {
    if (::mkdir(place.c_str(), 0777) != 0 && errno != EEXIST) fail(place, "cannot be created", errno);
    lock.number = ::open(place.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    if (lock.number < 0 || !isOurs())
        throw Failure(Fault::Output, {place.string(),
                                      "is in the way: finished tiles are kept under this name",
                                      "a folder that plime has made, or nothing",
                                      "",
                                      "Move it away, or choose another name for the picture",
                                      {}});
    if (::flock(lock.number, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        throw Failure(Fault::Output, {place.string(),
                                      "is in use: another plime draws the same picture",
                                      "",
                                      "",
                                      "Wait for its end, or choose another name for the picture",
                                      {}});
    ours = true;
}

/// The journal goes before the tiles: what it does not name is not there. It is ours by its first line at any moment.
void TileJournal::begin() {
    constexpr int Flags = O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW;
    journal.number = ::open(journalPath().c_str(), Flags, 0666);
    if (journal.number < 0) fail(journalPath(), "cannot be created", errno);
    writeAll(journal, journalPath(), head.data(), head.size());
    if (::ftruncate(journal.number, static_cast<off_t>(head.size())) != 0)
        fail(journalPath(), "cannot be written", errno);
    removeTiles();
    holdsOthers = false;
}

/// A last line that was cut is ended, so that the next one stands alone.
void TileJournal::goOn(const std::string& text) {
    const std::string_view lines = text;
    std::size_t end = 0;
    for (std::size_t at = lines.find('\n') + 1; at < lines.size(); at = end + 1) {
        end = std::min(lines.find('\n', at), lines.size());
        readLine(lines.substr(at, end - at));
    }
    journal.number = ::open(journalPath().c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NOFOLLOW);
    if (journal.number < 0) fail(journalPath(), "cannot be written", errno);
    if (!lines.ends_with('\n')) writeAll(journal, journalPath(), "\n", 1);
}

/// A line that is not whole is passed over; of two for one tile the later holds.
void TileJournal::readLine(std::string_view line) {
    std::size_t tile = 0;
    Entry entry;
    const char* const end = line.data() + line.size();
    const auto [tileEnd, tileError] = std::from_chars(line.data(), end, tile);
    if (tileError != std::errc{} || tileEnd == end || *tileEnd != ' ') return;
    const auto [sizeEnd, sizeError] = std::from_chars(tileEnd + 1, end, entry.size);
    if (sizeError != std::errc{} || sizeEnd == end || *sizeEnd != ' ') return;
    if (static_cast<std::size_t>(end - sizeEnd) != ChecksumDigits + 1) return;
    const auto [sumEnd, sumError] = std::from_chars(sizeEnd + 1, end, entry.checksum, 16);
    if (sumError == std::errc{} && sumEnd == end) entries[tile] = entry;
}

std::optional<std::vector<krod::RGBAHalf>> TileJournal::take(std::size_t tile, std::size_t pixels) {
    const auto found = entries.find(tile);
    if (found == entries.end()) return std::nullopt;
    const auto [size, checksum] = found->second;
    std::vector<krod::RGBAHalf> values(pixels);
    const std::size_t wanted = pixels * sizeof(krod::RGBAHalf);
    std::ifstream file(pathOf(tile), std::ios::binary);
    file.read(reinterpret_cast<char*>(values.data()), static_cast<std::streamsize>(wanted));
    if (size != wanted || !file || file.peek() != std::ifstream::traits_type::eof() ||
        checksumOf(values.data(), wanted) != checksum) {
        entries.erase(found);
        return std::nullopt;
    }
    ++taken;
    return values;
}

std::uint64_t TileJournal::missingBytes(std::uint64_t pixels) const noexcept {
    std::uint64_t bytes = pixels * sizeof(krod::RGBAHalf);
    for (const auto& [tile, entry] : entries) bytes -= std::min(bytes, entry.size);
    return bytes;
}

void TileJournal::keep(std::size_t tile, std::span<const krod::RGBAHalf> pixels) {
    if (journal.number < 0) begin();
    const fs::path path = pathOf(tile);
    const Entry entry{pixels.size_bytes(), checksumOf(pixels.data(), pixels.size_bytes())};
    Descriptor file;
    file.number = ::open(path.c_str(), CreateFlags, 0666);
    if (file.number < 0) fail(path, "cannot be created", errno);
    try {
        writeAll(file, path, pixels.data(), entry.size);
        if (file.close() != 0) fail(path, "cannot be written completely", errno);
    } catch (...) {
        ::unlink(path.c_str());
        throw;
    }
    const std::string line =
        std::to_string(tile) + ' ' + std::to_string(entry.size) + ' ' + digits(entry.checksum) + '\n';
    writeAll(journal, journalPath(), line.data(), line.size());
    entries[tile] = entry;
}

void TileJournal::writeAll(const Descriptor& file, const fs::path& path, const void* data,
                           std::size_t size) const {
    const auto* bytes = static_cast<const std::byte*>(data);
    while (size > 0) {
        const ssize_t written = ::write(file.number, bytes, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) fail(path, "cannot be written completely", written < 0 ? errno : ENOSPC);
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
}

void TileJournal::removeTiles() const noexcept {
    std::vector<fs::path> paths;
    std::error_code problem;
    for (fs::directory_iterator entry(place, problem), end; !problem && entry != end;
         entry.increment(problem))
        if (isTile(entry->path().filename().native())) paths.push_back(entry->path());
    for (const fs::path& path : paths) ::unlink(path.c_str());
}

/// The journal goes last, so that a folder with tiles is always known as ours.
void TileJournal::remove() noexcept {
    if (!ours) return;
    removeTiles();
    ::unlink(journalPath().c_str());
    ::rmdir(place.c_str());
    entries.clear();
    ours = false;
}

fs::path TileJournal::pathOf(std::size_t tile) const {
    return place / (std::string(TilePrefix) + std::to_string(tile));
}

} // namespace workbench
