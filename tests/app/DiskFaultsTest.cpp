// SPDX-License-Identifier: Apache-2.0
// Disks that are full or fail, and waiting that is interrupted all the time.
#include "tests/app/FaultyProgram.h"

#include <cerrno>
#include <fstream>
#include <iostream>
#include <set>

namespace {

const Words Gamma = {"--with", "Hollywood/GammaCorrection"};
const std::string Old = "the old file";

class PlimeDisk : public PictureProgramTest {
protected:
    /// Everything that writes files, into a folder.
    struct Writer {
        Words words;
        Words written; ///< the names of what is written
    };
    [[nodiscard]] std::vector<Writer> writersInto(const std::string& target) const {
        const auto to = [&](const std::string& name) { return target + '/' + name; };
        return {
            {Words{"process", large, "-o", to("a.exr"), "-q"} + Gamma, {"a.exr"}},
            {Words{"process", large, "-o", to("a.png"), "-q"} + Gamma, {"a.png"}},
            {{"render", "demo:galaxy", "-o", to("a.exr"), "--size", "200x200", "-q"}, {"a.exr"}},
            {{"render", "demo:galaxy", "-o", to("a.exr"), "--size", "256x128", "--tile", "128", "--overlap",
              "0"},
             {"a.exr"}},
            {{"run", network, "-o", to("a.exr"), "-q"}, {"a.exr"}},
            {Words{"process", small, "-o", at("b.exr"), "--save-network", to("a.json")} + Gamma, {"a.json"}}};
    }
    /// One line with the code 4, or none with the code 0, the old or the new file complete, and nothing else.
    void expectOldOrNew(const Call& call, const std::filesystem::path& file, const std::string& whole) {
        const auto others = otherFiles();
        const Result result = run(call);
        EXPECT_EQ(occurrences('\n' + result.error, "\nplime: "), result.code == 0 ? 0U : 1U) << result.error;
        EXPECT_TRUE(result.code == 0 || result.code == 4) << result.code;
        EXPECT_TRUE(read(file) == (result.code == 0 ? whole : Old));
        expectKept(result.error, file, whole);
        if (result.code == 0 || result.error.find("Finished tiles are kept") != std::string::npos)
            std::filesystem::remove_all(file.string() + ".parts");
        EXPECT_EQ(otherFiles(), others);
        (result.code == 0 ? succeeded : failed) += 1;
    }
    /// A complete file that could not take its place is where the message says.
    static void expectKept(const std::string& said, const std::filesystem::path& file,
                           const std::string& whole) {
        const std::string words = "the finished file is kept as ";
        const std::size_t begin = said.find(words) + words.size();
        if (said.find(words) == std::string::npos) return;
        const std::filesystem::path kept = said.substr(begin, said.find(" — got", begin) - begin);
        EXPECT_TRUE(std::filesystem::exists(kept)) << said;
        const bool isMeant = said.find(file.string() + ": ") != std::string::npos;
        EXPECT_TRUE(!isMeant || read(kept) == whole);
        std::filesystem::remove(kept);
    }
    [[nodiscard]] std::set<std::string> otherFiles() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
            names.insert(entry.path().string());
        return names;
    }

    std::string large = picture("large.exr", gradient(200, 900)),
                small = picture("small.exr", gradient(4, 4));
    std::string network = at("network.json");
    int succeeded = 0, failed = 0;
};

TEST_F(PlimeDisk, thatIsFull_keepsTheOldFile_whateverWrites) {
    succeed({"render", "demo:galaxy", "-o", at("b.exr"), "--size", "200x200", "--save-network", network});
    std::filesystem::create_directory(at("out"));
    const SmallDisk disk(at("out"), 65536);
    const std::string target = at("out");
    for (const auto& [words, written] : writersInto(target)) {
        const std::filesystem::path file = std::filesystem::path(target) / written.front();
        std::ofstream(file) << Old;
        if (disk.isThere())
            std::ofstream(std::filesystem::path(target) / "fills") << std::string(15 * 4096, 'x');
        Call call{words};
        if (!disk.isThere()) call.largestFile = 200; // the system lets no test have a disk of its own
        const Result result = run(call);
        EXPECT_EQ(result.code, 4) << words[0];
        EXPECT_EQ(occurrences(result.error, "\n"), 1U) << result.error;
        // Where every file is limited, the picture beside a network fails before it.
        const bool beside = !disk.isThere() && written.front() == "a.json";
        EXPECT_TRUE(result.error.starts_with("plime: error: " + (beside ? at("b.exr") : file.string())))
            << result.error;
        EXPECT_EQ(read(file), Old);
        std::filesystem::remove(file);
        std::filesystem::remove(std::filesystem::path(target) / "fills");
        EXPECT_TRUE(std::filesystem::is_empty(target)) << "something is left after " << words[0];
    }
}

TEST_F(PlimeDisk, thatIsFull_isNamedWithTheBytesThatAreNeeded) {
    Call call{Words{"process", large, "-o", at("a.exr")} + Gamma};
    call.largestFile = 1000;
    const Result result = run(call);
    EXPECT_EQ(result.code, 4);
    const std::string start =
        "plime: error: " + at("a.exr") + ": cannot be written completely — expected room for at least ";
    ASSERT_TRUE(result.error.starts_with(start)) << result.error;
    EXPECT_GT(std::stoi(result.error.substr(start.size())), 1000);
    expectHas(result.error, " bytes, got File too large. Make room on the disk, or choose another place.\n");
}

/// Each call that works on files fails in turn.
TEST_F(PlimeDisk, thatFailsAtAnyCall_keepsTheOldOrTheNewFile) {
    std::filesystem::create_directory(at("out"));
    succeed({"render", "demo:galaxy", "-o", at("b.exr"), "--size", "200x200", "--save-network", network});
    for (const auto& [words, written] : writersInto(at("out"))) {
        const std::string file = at("out/" + written.front());
        const int calls = callsOf(words, "any", folder / "calls");
        const std::string whole = read(file);
        for (int number = 1; number <= calls; ++number) {
            SCOPED_TRACE(words[0] + " with call " + std::to_string(number) + " of " + std::to_string(calls));
            write("out/" + written.front(), Old);
            expectOldOrNew(Call{words, failing("any", number, number % 2 == 0 ? EIO : ENOSPC)}, file, whole);
        }
        std::filesystem::remove(file);
    }
    std::cout << failed << " runs failed as they should, " << succeeded << " went on\n";
    EXPECT_GT(failed, 20);
    EXPECT_GT(succeeded, 5) << "the flush of a folder, for instance, is worth no failure";
}

TEST_F(PlimeDisk, fullForALaterTile_keepsThoseBefore_andGoesOn) {
    const Words words = {"render", "demo:knot", "-o",     at("a.exr"), "--gpu",     "software",
                         "--size", "256x256",   "--tile", "64",        "--overlap", "0"};
    succeed(words);
    const std::string whole = read(at("a.exr"));
    // The head of the journal, then tile and line in turn.
    const Result result = run(Call{words, failing("write", 1 + 2 * 5 + 1, ENOSPC)});
    EXPECT_EQ(result.code, 4);
    expectHas(result.error, "/tile-5: cannot be written completely");
    expectHas(result.error,
              "\n  Finished tiles are kept in " + at("a.exr.parts") + "; continue with the same command");
    expectHas(messagesOf(words + Words{"--resume", "-v"}), "plime: 5 of 16 tiles taken from ");
    EXPECT_TRUE(read(at("a.exr")) == whole);
}

TEST_F(PlimeDisk, callsThatASignalInterrupts_areRepeated) {
    const Words words = Words{"process", large, "-o", at("a.exr"), "--save-network", at("a.json")} + Gamma;
    for (const std::string call : {"write", "fsync"}) {
        const int calls = callsOf(words, call, folder / "calls");
        ASSERT_GE(calls, 2);
        const std::string bytes = read(at("a.exr")), saved = read(at("a.json"));
        for (int number = 1; number <= calls; ++number) {
            const Result result = run(Call{words, failing(call, number, EINTR)});
            EXPECT_EQ(result.code, 0) << result.error;
            EXPECT_TRUE(read(at("a.exr")) == bytes && read(at("a.json")) == saved);
        }
    }
}

TEST_F(PlimeDisk, inAStormOfSignals_getsTheSameBytes) {
    std::filesystem::create_directory(at("out"));
    succeed({"render", "demo:galaxy", "-o", at("b.exr"), "--size", "200x200", "--save-network", network});
    for (const auto& [words, written] : writersInto(at("out"))) {
        const std::string file = at("out/" + written.front());
        EXPECT_EQ(run(words).code, 0);
        const std::string whole = read(file);
        const Result result = run(Call{words, inAStorm()});
        EXPECT_EQ(result.code, 0) << result.error;
        EXPECT_TRUE(read(file) == whole) << words[0];
    }
    const Words user = {"process", small, "-o", at("b.exr"), "--with", "Hollywood/TileProgram"};
    succeed(user);
    const std::string whole = read(at("b.exr"));
    EXPECT_EQ(run(Call{user, inAStorm()}).code, 0);
    EXPECT_TRUE(read(at("b.exr")) == whole) << "a program of a user, which a child tries first";
}

} // namespace
