// SPDX-License-Identifier: Apache-2.0
// A program in the place of plime-picture-reader whose decoder goes wrong as the name of the picture says:
// "crashOpening", "hangAtRow", "lieRows" and so on. Any other picture is a good one of 100x2000 pixels.
#include "workbench/files/reader/PictureProcess.h"
#include "workbench/files/reader/PictureServer.h"

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <utility>
#include <vector>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using namespace workbench;

constexpr int WrongRow = 1000;

[[noreturn]] void crash() {
    static_cast<void>(std::raise(SIGSEGV));
    ::_exit(1);
}

[[noreturn]] void hang() {
    volatile bool goesOn = true; // what is read anew each time makes no loop that a compiler may leave out
    while (goesOn) continue;
    ::_exit(1);
}

/// Takes memory until there is none, without touching it: that would only take time.
void takeAllMemory() {
    std::vector<std::unique_ptr<char[]>> all;
    for (;;) all.emplace_back(new char[std::size_t{64} << 20]);
}

/// What this process may still do.
std::string limitsText() {
    std::string text = "rights " + std::to_string(::prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0));
    for (const auto& [name, what] : {std::pair{"core", RLIMIT_CORE},
                                     {"file", RLIMIT_FSIZE},
                                     {"files", RLIMIT_NOFILE},
                                     {"seconds", RLIMIT_CPU}}) {
        rlimit limit{};
        ::getrlimit(what, &limit);
        text += ", " + std::string(name) + ' ' + std::to_string(limit.rlim_cur);
    }
    return text;
}

/// Takes half a second of the processor.
void workHard() {
    const std::clock_t begin = std::clock();
    while (std::clock() - begin < CLOCKS_PER_SEC / 2) continue;
}

void goWrong(const std::string& way) {
    if (way == "crash") crash();
    if (way == "hang") hang();
    if (way == "memory") takeAllMemory();
    if (way == "abort") std::abort();
    if (way == "exit") ::_exit(0);
    if (way == "throw") throw std::runtime_error("words of the decoder");
    if (way == "limits") throw std::runtime_error(limitsText());
}

/// Its rows hold their numbers.
class PatternReader : public PictureReader {
public:
    explicit PatternReader(const std::filesystem::path& path) : PictureReader(path), name(path.stem()) {
        about.width = 100;
        about.height = 2000;
        if (name.ends_with("Opening")) goWrong(name.substr(0, name.find("Opening")));
    }

private:
    void decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows*) override {
        if (first <= WrongRow && WrongRow < first + count && name.ends_with("AtRow"))
            goWrong(name.substr(0, name.find("AtRow")));
        if (name == "slow") workHard();
        if (name == "lieOverflows") countLoss(first, {.overflows = 1000000});
        for (int i = 0; i < count * about.width; ++i) {
            const half_float::half row(static_cast<float>(first + i / about.width));
            out[i] = {row, row, row, row};
        }
    }
    std::string name;
};

/// Says something that is not so, and waits until the host has had enough.
void lie(const std::string& what, Channel& channel) {
    PictureDescription about;
    about.width = 100;
    about.height = 2000;
    if (what == "lieSize") about.width = 1 << 30;
    if (what == "lieNegative") about.height = -1;
    if (what == "lieWindow") about.displayWindow = PixelWindow{0, 0, 100, 0};
    if (what == "lieChannels") about.extraChannels.resize(100000);
    std::string bytes = packed(about);
    if (what == "lieShort") bytes.resize(bytes.size() / 2);
    if (what == "lieLong") bytes += "more";
    if (what == "lieMetadata") bytes.assign(std::size_t{100} << 20, 'x');
    if (what == "lieCount") bytes.replace(bytes.size() - 8, 8, 8, '\xff');
    if (what == "lieNothing") bytes.clear();
    channel.send(what == "lieKind" ? static_cast<MessageKind>(77) : MessageKind::Opened, bytes);
    while (const std::optional<Message> message = channel.receive()) {
        if (message->kind != MessageKind::Decode) continue;
        if (what == "lieSilent") {
            channel = Channel(Descriptor());
            hang();
        }
        RowsRequest rows = rowsRequestIn(message->bytes);
        if (what == "lieRows") rows.count += 1000000;
        if (what == "lieSlot") rows.slot = 1000000;
        channel.send(MessageKind::Decoded, what == "lieAnswer" ? "short" : packed(rows));
        if (what == "lieFlood")
            while (channel.send(MessageKind::Decoded, message->bytes)) continue;
    }
}

void work(const OpenRequest& request, Channel& channel) {
    const std::string name = std::filesystem::path(request.path).stem();
    if (name.starts_with("lie") && name != "lieOverflows") return lie(name, channel);
    servePicture(request, channel,
                 [](const std::filesystem::path& path) { return std::make_unique<PatternReader>(path); });
}

} // namespace

int main() {
    Channel control{Descriptor(3)};
    servePictures(
        control, [](const OpenRequest&) {}, work);
    return 0;
}
