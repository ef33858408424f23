// SPDX-License-Identifier: Apache-2.0
// Pictures whose decoder crashes, hangs, takes all memory or lies. This program lies beside the broken reader,
// and so does a copy of plime.
#include "tests/app/PictureProgram.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include <unistd.h>

using namespace workbench;

namespace {

namespace fs = std::filesystem;

constexpr char Magic[] = "\x76\x2f\x31\x01 and nothing that any decoder will see";
const std::string Damaged = ". The file is probably damaged.";
const Words Gamma = {"--with", "Hollywood/GammaCorrection"};

/// The variable that tells the processes below this test from those of other tests, also when their parent is gone.
constexpr char Mark[] = "READER_FAULT_TEST";

class ReaderFaultTest : public PictureProgramTest {
protected:
    static void SetUpTestSuite() { ::setenv(Mark, std::to_string(::getpid()).c_str(), 1); }

    std::string file(const std::string& name) const { return write(name + ".exr", Magic).string(); }

    /// Opens and reads the whole picture, which must end in that sentence; the next picture must be read.
    void expectRefusal(const std::string& name, const std::string& sentence, PictureLimits limits = {},
                       Fault fault = Fault::Input) const {
        const std::string path = file(name);
        const auto readAll = [&] {
            const auto reader = PictureReader::open(path, limits);
            std::vector<krod::RGBAHalf> pixels(200000);
            reader->readRows(0, 2000, pixels.data());
        };
        EXPECT_EQ(sentenceOf(fault, readAll), path + ": " + sentence);
        EXPECT_EQ(readPicture(file("good")).pixels.size(), 200000U) << name;
    }

    /// The same through plime, which ends with that code and leaves nothing: no file, no process.
    void expectRefusalOfProgram(const std::string& name, const std::string& sentence, int code = 3) const {
        const std::string path = file(name);
        Call call{Words{"process", path, "-o", at("out.exr")} + Gamma};
        call.environment = {{"KROD_PICTURE_SECONDS", "2"}, {"KROD_PLUGIN_PATH", PLUGIN_FOLDER}};
        expectFailure(code, path + ": " + sentence, call);
        EXPECT_FALSE(fs::exists(at("out.exr")));
    }
};

/// The processes of the broken reader that this test has brought about.
std::vector<fs::path> readers() {
    const std::string mark = Mark + ('=' + std::to_string(::getpid()));
    std::vector<fs::path> all;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        std::error_code error;
        if (fs::read_symlink(entry.path() / "exe", error) != BROKEN_READER || error) continue;
        std::ifstream environment(entry.path() / "environ");
        for (std::string variable; std::getline(environment, variable, '\0');) {
            if (variable == mark) all.push_back(entry.path());
        }
    }
    return all;
}

/// Waits for the end of all but so many processes, which is on its way.
std::size_t readersLeft(std::size_t wanted) {
    std::size_t left = 0;
    for (int i = 0; i < 10000; ++i) {
        left = readers().size();
        if (left <= wanted) break;
    }
    return left;
}

std::string seconds(int count) { return "no answer of the decoder for " + std::to_string(count) + " s"; }

constexpr std::chrono::seconds Short{2};

} // namespace

TEST_F(ReaderFaultTest, Decoder_thatCrashes_isOneSentence) {
    expectRefusal("crashOpening",
                  "cannot be read as a picture — got a reading process that was ended by signal 11 "
                  "(SIGSEGV)" +
                      Damaged);
    expectRefusal("crashAtRow",
                  "cannot be read at the rows 960 to 1023 of 2000 — got a reading process that was "
                  "ended by signal 11 (SIGSEGV)" +
                      Damaged);
    expectRefusal("abortAtRow",
                  "cannot be read at the rows 960 to 1023 of 2000 — got a reading process that was "
                  "ended by signal 6 (SIGABRT)" +
                      Damaged);
}

TEST_F(ReaderFaultTest, Decoder_thatEndsTheProcess_isOneSentence) {
    expectRefusal("exitOpening",
                  "cannot be read as a picture — got a reading process that exited with code 0" + Damaged);
    expectRefusal("exitAtRow",
                  "cannot be read at the rows 960 to 1023 of 2000 — got a reading process that exited "
                  "with code 0" +
                      Damaged);
}

TEST_F(ReaderFaultTest, Decoder_thatHangs_isEnded) {
    expectRefusal("hangOpening", "cannot be read as a picture — got " + seconds(2) + Damaged,
                  {.time = Short});
    expectRefusal("hangAtRow", "cannot be read at the rows 960 to 1023 of 2000 — got " + seconds(2) + Damaged,
                  {.time = Short});
    EXPECT_LE(readersLeft(1), 1U) << "the program itself is kept, and no process of a picture";
}

TEST_F(ReaderFaultTest, Decoder_thatTakesAllMemory_meetsALimit) {
    const std::string advice = ". The file is damaged, or larger than this program allows.";
    const std::string budget = ". Allow more with --memory; a damaged file may want any amount.";
    const PictureLimits limits{.memory = std::uint64_t{512} << 20};
    expectRefusal("memoryOpening",
                  "cannot be read as a picture — got more than 512 MiB of memory needed" + budget, limits,
                  Fault::Output);
    expectRefusal("memoryAtRow",
                  "cannot be read at the rows 960 to 1023 of 2000 — got more than 512 MiB of memory needed" +
                      budget,
                  limits, Fault::Output);
    expectRefusal("memoryOpening",
                  "cannot be read as a picture — got more than 2048 MiB of memory needed" + advice);
}

/// Each step ends in time, and there are many of them.
TEST_F(ReaderFaultTest, Decoder_thatIsSlowInEveryStep_isEnded) {
    const std::string path = file("slow");
    const auto reader = PictureReader::open(path, {.time = std::chrono::seconds(6)});
    std::vector<krod::RGBAHalf> pixels(200000);
    const std::string sentence = sentenceOf(Fault::Input, [&] {
        reader->readRows(0, 2000, pixels.data());
        return 0;
    });
    expectHas(sentence, path + ": cannot be read at the rows ");
    expectHas(sentence,
              " — got a decoder that takes more time of the processor than its pixels may" + Damaged);
}

/// The last one is for a head, twice the time of the clock; rows add theirs.
TEST_F(ReaderFaultTest, Process_ofAPicture_hasGivenUpWhatItDoesNotNeed) {
    expectRefusal(
        "limitsOpening",
        "cannot be read as a picture — got rights 1, core 0, file 0, files 16, seconds 4. The file is "
        "damaged, or larger than this program allows.",
        {.time = Short});
}

TEST_F(ReaderFaultTest, Decoder_thatThrows_isQuoted) {
    expectRefusal("throwAtRow",
                  "cannot be read at the rows 960 to 1023 of 2000 — got words of the decoder. The file "
                  "is damaged, or larger than this program allows.");
}

TEST_F(ReaderFaultTest, Decoder_thatLiesAboutThePicture_isNotBelieved) {
    const std::string wrong = "cannot be read as a picture — got an answer that cannot be right" + Damaged;
    for (const char* const lie : {"lieNegative", "lieShort", "lieLong", "lieMetadata", "lieCount",
                                  "lieNothing", "lieKind", "lieWindow"}) {
        if (lie != std::string("lieNegative")) expectRefusal(lie, wrong);
    }
    const std::string advice = ". The file is damaged, or larger than this program allows.";
    expectRefusal("lieSize",
                  "declares a size that cannot be read — expected sides of 1 to 131072 pixels, got "
                  "1073741824x2000 pixels" +
                      advice);
    expectRefusal("lieNegative",
                  "declares a size that cannot be read — expected sides of 1 to 131072 pixels, got "
                  "100x-1 pixels" +
                      advice);
    expectRefusal("lieChannels",
                  "declares a size that cannot be read — expected 1 to 1024 channels, got 100003 "
                  "channels" +
                      advice);
}

TEST_F(ReaderFaultTest, Decoder_thatLiesAboutRows_isNotBelieved) {
    const std::string wrong =
        "cannot be read at the rows 0 to 63 of 2000 — got an answer that cannot be right" + Damaged;
    for (const char* const lie : {"lieRows", "lieSlot", "lieAnswer", "lieOverflows"})
        expectRefusal(lie, wrong);
    expectRefusal("lieFlood",
                  "cannot be read at the rows 64 to 127 of 2000 — got an answer that cannot be right" +
                      Damaged);
    expectRefusal("lieSilent", "cannot be read at the rows 0 to 63 of 2000 — got " + seconds(2) + Damaged,
                  {.time = Short});
}

TEST_F(ReaderFaultTest, Rows_beforeTheFault_areReadAndNotTheirs) {
    const auto reader = PictureReader::open(file("crashAtRow"));
    std::vector<krod::RGBAHalf> rows(100 * 100);
    for (int row = 0; row < 900; row += 100) {
        reader->readRows(row, 100, rows.data());
        EXPECT_EQ(static_cast<float>(rows[100].r), static_cast<float>(row + 1));
    }
    EXPECT_THROW(reader->readRows(900, 200, rows.data()), Failure);
    EXPECT_THROW(reader->readRows(0, 1, rows.data()), Failure) << "its process is gone";
}

TEST_F(ReaderFaultTest, Rows_afterAnOrderlyFailure_areReadAllTheSame) {
    const auto reader = PictureReader::open(file("throwAtRow"));
    std::vector<krod::RGBAHalf> rows(100 * 100);
    EXPECT_THROW(reader->readRows(950, 100, rows.data()), Failure);
    reader->readRows(1100, 100, rows.data());
    EXPECT_EQ(static_cast<float>(rows[0].r), 1100);
    reader->readRows(5, 1, rows.data());
    EXPECT_EQ(static_cast<float>(rows[0].r), 5);
}

TEST_F(ReaderFaultTest, Program_thatIsKilled_isStartedAgain) {
    const auto reader = PictureReader::open(file("good"));
    for (const fs::path& process : readers()) ::kill(std::stoi(process.filename()), SIGKILL);
    EXPECT_EQ(readersLeft(0), 0U);
    krod::RGBAHalf row[100];
    expectHas(sentenceOf(Fault::Input, [&] { reader->readRows(0, 1, row); }),
              "got a reading process that ended without a word" + Damaged);
    EXPECT_EQ(readPicture(file("good")).description.height, 2000);
}

TEST_F(ReaderFaultTest, Plime_endsInOrder_andLeavesNothing) {
    const std::size_t before = readers().size();
    expectRefusalOfProgram("crashOpening",
                           "cannot be read as a picture — got a reading process that was ended by "
                           "signal 11 (SIGSEGV)" +
                               Damaged);
    expectRefusalOfProgram("crashAtRow",
                           "cannot be read at the rows 960 to 1023 of 2000 — got a reading process that "
                           "was ended by signal 11 (SIGSEGV)" +
                               Damaged);
    expectRefusalOfProgram("hangAtRow",
                           "cannot be read at the rows 960 to 1023 of 2000 — got " + seconds(2) + Damaged);
    expectRefusalOfProgram("exitOpening",
                           "cannot be read as a picture — got a reading process that exited with code 0" +
                               Damaged);
    expectRefusalOfProgram("lieRows",
                           "cannot be read at the rows 0 to 63 of 2000 — got an answer that cannot be "
                           "right" +
                               Damaged);
    EXPECT_EQ(readersLeft(before), before);
}

TEST_F(ReaderFaultTest, Plime_whoseDecoderTakesAllMemory_endsInOrder) {
    expectRefusalOfProgram("memoryAtRow",
                           "cannot be read at the rows 960 to 1023 of 2000 — got more than 668 MiB of "
                           "memory needed. Allow more with --memory; a damaged file may want any amount.",
                           4);
}

TEST_F(ReaderFaultTest, Plime_overManyPictures_goesOnAfterACrash) {
    fs::create_directory(folder / "out");
    Call call{Words{"process", file("a"), file("crashAtRow"), file("b"), "-o", at("out/{stem}.exr")} + Gamma};
    call.environment = {{"KROD_PLUGIN_PATH", PLUGIN_FOLDER}};
    const Result result = run(call);
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(fs::exists(at("out/a.exr")));
    EXPECT_TRUE(fs::exists(at("out/b.exr")));
    EXPECT_FALSE(fs::exists(at("out/crashAtRow.exr")));
    EXPECT_EQ(occurrences(result.error, "\n"), 3U) << result.error;
}

TEST_F(ReaderFaultTest, Plime_thatIsKilled_takesItsReadersAlong) {
    const std::size_t before = readers().size();
    const std::string path = file("hangAtRow");
    Call call{Words{"process", path, "-o", at("out.exr")} + Gamma};
    call.environment = {{"KROD_PLUGIN_PATH", PLUGIN_FOLDER}};
    call.meanwhile = [before](int child) {
        while (readers().size() < before + 2) continue; // the program and the process of the picture
        ::kill(child, SIGKILL);
    };
    EXPECT_EQ(run(call).code, 1000 + SIGKILL);
    EXPECT_EQ(readersLeft(before), before);
}

TEST_F(ReaderFaultTest, Plime_withoutTheProgram_saysSo) {
    const std::string copy = at("plime");
    fs::copy_file(PLIME, copy);
    const std::string path = file("good");
    write("plime-picture-reader", "no program");
    const std::string line =
        "KROD_PLUGIN_PATH=" PLUGIN_FOLDER " " + copy + " info " + path + " 2> " + at("said");
    EXPECT_EQ(std::system(line.c_str()) >> 8, 3);
    EXPECT_EQ(
        read(at("said")),
        "plime: error: plime-picture-reader: this program reads pictures in place of this one, and does not "
        "work — got cannot be started: " +
            at("plime-picture-reader") +
            ": Permission denied. Install it where it was built or packed, beside this program or its "
            "libraries.\n");
}
