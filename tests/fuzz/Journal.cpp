// SPDX-License-Identifier: Apache-2.0
// What an interrupted run has left, and command lines. The first byte chooses.
// 'j': fields with zero bytes between them: the journal behind its head, then the files of tiles 0, 1, 2 …; an
// 'h' as first byte of the journal leaves the head out. 'c': words with line ends between them.
#include "Target.h"

#include "apps/plime/commandline/Options.h"
#include "apps/plime/commands/Commands.h"
#include "apps/plime/pictures/TileJournal.h"
#include "apps/plime/terminal/Text.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

using namespace workbench;

constexpr std::string_view Job = "a drawing";
constexpr std::size_t MostTiles = 4;

std::vector<std::string> fieldsOf(std::string_view text, char separator) {
    std::vector<std::string> fields;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find(separator, at), text.size());
        fields.emplace_back(text.substr(at, end - at));
        at = end + 1;
    }
    return fields;
}

void write(const std::filesystem::path& file, std::string_view bytes) {
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string contentsOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// A folder for one process, empty for each input.
class Folder {
public:
    Folder() : path(std::filesystem::temp_directory_path() / ("fuzz-journal-" + std::to_string(::getpid()))) {
        std::filesystem::remove_all(path);
        std::filesystem::create_directories(parts());
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { std::filesystem::remove_all(path); }

    [[nodiscard]] std::filesystem::path output() const { return path / "a.exr"; }
    [[nodiscard]] std::filesystem::path parts() const { return path / "a.exr.parts"; }
    [[nodiscard]] std::filesystem::path tile(std::size_t number) const {
        return parts() / ("tile-" + std::to_string(number));
    }

private:
    std::filesystem::path path;
};

/// FNV-1a with 64 bits, in sixteen digits.
std::string checksumText(std::string_view bytes) {
    std::uint64_t sum = 0xcbf29ce484222325;
    for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    std::string text;
    for (int shift = 60; shift >= 0; shift -= 4) text += "0123456789abcdef"[(sum >> shift) & 15U];
    return text;
}

/// Whether a whole line of the journal vouches for these bytes; digits may be of either case and lead with zeros.
bool isVouchedFor(const std::string& journal, std::size_t tile, std::string_view bytes) {
    for (const std::string& line : fieldsOf(journal, '\n')) {
        const std::vector<std::string> words = fieldsOf(line, ' ');
        if (words.size() != 3) continue;
        std::size_t number = 0, size = 0;
        const auto reads = [](const std::string& word, std::size_t& value) {
            const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
            return error == std::errc{} && end == word.data() + word.size();
        };
        if (reads(words[0], number) && reads(words[1], size) && number == tile && size == bytes.size() &&
            lowerCase(words[2]) == checksumText(bytes))
            return true;
    }
    return false;
}

std::string bytesOf(const std::vector<krod::RGBAHalf>& pixels) {
    return {reinterpret_cast<const char*>(pixels.data()), pixels.size() * sizeof(krod::RGBAHalf)};
}

/// Another run: what it takes is vouched for, and what it keeps can be taken.
void resume(const Folder& folder, const std::string& lines, const std::vector<std::string>& tiles) {
    const std::vector<krod::RGBAHalf> kept(3);
    {
        TileJournal journal(folder.output(), Job, true);
        for (std::size_t i = 0; i < tiles.size(); ++i)
            for (const std::size_t pixels :
                 {tiles[i].size() / sizeof(krod::RGBAHalf), std::size_t{1}, std::size_t{0}})
                if (const auto taken = journal.take(i, pixels)) {
                    fuzz::require(!journal.foundAnotherJob(), "tiles of another job are not taken");
                    fuzz::require(bytesOf(*taken) == tiles[i], "a tile is what its file holds");
                    fuzz::require(isVouchedFor(lines, i, tiles[i]), "a damaged line is not believed");
                }
        journal.keep(MostTiles, kept);
    }
    TileJournal again(folder.output(), Job, true);
    fuzz::require(!again.foundAnotherJob(), "a journal that was gone on with is the same job's");
    const auto taken = again.take(MostTiles, kept.size());
    fuzz::require(taken && bytesOf(*taken) == bytesOf(kept), "what was kept is taken");
}

/// A folder that is not ours is left as it is.
void refuse(const Folder& folder, const std::string& lines) {
    try {
        const TileJournal journal(folder.output(), Job, true);
        fuzz::require(false, "a journal without our first line is refused");
    } catch (const Failure& failure) {
        fuzz::require(failure.fault() == Fault::Output, "a folder in the way is a fault of the output");
    }
    fuzz::require(contentsOf(folder.parts() / "journal") == lines, "what is refused is left alone");
}

void readJournal(std::string_view input) {
    std::vector<std::string> fields = fieldsOf(input, '\0');
    const Folder folder;
    std::string head;
    {
        TileJournal journal(folder.output(), Job, false);
        journal.keep(0, {});
        head = contentsOf(folder.parts() / "journal");
        head.erase(head.find('\n') + 1);
    }
    const bool withoutHead = fields[0].starts_with('h');
    const std::string lines = withoutHead ? fields[0].substr(1) : fields[0];
    write(folder.parts() / "journal", (withoutHead ? "" : head) + lines);
    std::vector<std::string> tiles(fields.begin() + 1, fields.end());
    tiles.resize(std::min(tiles.size(), MostTiles));
    for (std::size_t i = 0; i < tiles.size(); ++i) write(folder.tile(i), tiles[i]);
    if (withoutHead && !lines.starts_with("plime tiles 1 "))
        refuse(folder, lines);
    else
        resume(folder, lines, tiles);
}

void readCommandLine(std::string_view input) {
    const Commands commands = makeCommands();
    try {
        const Invocation invocation = parseArguments(fieldsOf(input, '\n'), commands);
        fuzz::require(invocation.command || invocation.help || invocation.version,
                      "there is something to do");
    } catch (const Failure& failure) {
        fuzz::require(failure.fault() == Fault::Usage, "a wrong command line is a fault of usage");
        fuzz::require(fuzz::isOneLine(printable(failure.diagnostic().sentence())), "the message is one line");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view input = fuzz::textOf(data + 1, size - 1);
    if (data[0] == 'j') readJournal(input);
    if (data[0] == 'c') readCommandLine(input);
    return 0;
}
