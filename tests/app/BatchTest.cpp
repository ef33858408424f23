// SPDX-License-Identifier: Apache-2.0
// plime process over many pictures.
#include "tests/app/PictureProgram.h"

#include <csignal>

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

using workbench::readPicture;

const Words Gamma = {"--with", "Hollywood/GammaCorrection"};
const Words Colours = {"--with", "Hollywood/ColorGammaCorrection", "-p", "red=-0.5"};
const std::string SomeFailed = "plime: error: 1 of 3 pictures failed.\n";

class PlimeBatch : public PictureProgramTest {
protected:
    PlimeBatch() { std::filesystem::create_directory(folder / "out"); }

    /// The words of a call over pictures of the folder.
    [[nodiscard]] Words over(const Words& names, const Words& more,
                             const std::string& output = "out/{stem}_tm.{ext}") const {
        Words words = {"process"};
        for (const std::string& name : names) words.push_back(at(name));
        return words + Words{"-o", at(output)} + more;
    }
    [[nodiscard]] bool exists(const std::string& name) const { return std::filesystem::exists(at(name)); }
    [[nodiscard]] std::string three() const {
        for (const std::string name : {"a.exr", "b.exr", "c.exr"})
            static_cast<void>(picture(name, gradient(9, 5)));
        return at("b.exr");
    }
};

TEST_F(PlimeBatch, everyPicture_isWhatItWouldBeAlone) {
    const Words names = {"a.exr", "b.png", "c.tif"};
    static_cast<void>(picture("a.exr", gradient(20, 30)));
    static_cast<void>(picture("b.png", gradient(31, 7)));
    static_cast<void>(picture("c.tif", gradient(5, 300)));
    for (const Words& modules : {Gamma, Colours + Gamma}) {
        succeed(over(names, modules));
        for (const std::string name : {"a", "b", "c"}) {
            const std::string extension = name == "a" ? ".exr" : name == "b" ? ".png" : ".tif";
            const std::string alone = at("alone" + extension);
            succeed(Words{"process", at(name + extension), "-o", alone} + modules);
            EXPECT_EQ(read(at("out/" + name + "_tm" + extension)), read(alone)) << name;
        }
    }
}

TEST_F(PlimeBatch, failingPicture_isToldInOneLine_andTheOthersAreWritten) {
    const std::string broken = three();
    for (const Words& modules : {Gamma, Colours}) {
        write("b.exr", read(broken).substr(0, 40));
        const Result result = run(over({"a.exr", "b.exr", "c.exr"}, modules));
        EXPECT_EQ(result.code, 1);
        EXPECT_TRUE(result.error.starts_with("plime: error: " + broken + ": ")) << result.error;
        EXPECT_TRUE(result.error.ends_with('\n' + SomeFailed + "  " + broken + '\n')) << result.error;
        EXPECT_EQ(occurrences(result.error, "\n"), 3U) << result.error;
        EXPECT_TRUE(exists("out/a_tm.exr") && exists("out/c_tm.exr"));
        EXPECT_FALSE(exists("out/b_tm.exr"));
    }
}

TEST_F(PlimeBatch, missingInput_andAllFailing_areCounted) {
    const Result result = run(over({"a.exr", "b.exr"}, Gamma));
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.error,
              "plime: error: " + at("a.exr") +
                  ": does not exist. Check the path.\nplime: error: " + at("b.exr") +
                  ": does not exist. Check the path.\nplime: error: 2 of 2 pictures failed.\n  " +
                  at("a.exr") + "\n  " + at("b.exr") + '\n');
}

TEST_F(PlimeBatch, onePictureBehindAPattern_endsAsWithoutIt) {
    static_cast<void>(three());
    succeed(over({"a.exr"}, Gamma));
    EXPECT_TRUE(exists("out/a_tm.exr"));
    expectFailure(3, at("none.exr") + ": does not exist. Check the path.", over({"none.exr"}, Gamma));
}

TEST_F(PlimeBatch, formatThatOneInputCannotKeep_failsThatOneOnly) {
    static_cast<void>(three());
    const auto text = write("notes.txt", "no picture");
    const Result result = run(over({"a.exr", "notes.txt", "c.exr"}, Gamma));
    EXPECT_EQ(result.code, 1);
    expectHas(result.error, SomeFailed);
    EXPECT_TRUE(exists("out/c_tm.exr"));
    expectFailure(2,
                  at("out/{stem}.bmp") + ": cannot be written as a picture — expected one of the extensions "
                                         ".exr .png .tif .tiff .jpg .jpeg .hdr, got .bmp.",
                  over({"a.exr", "c.exr"}, Gamma, "out/{stem}.bmp"));
    expectFailure(
        2, at("out/a.exr") + ": EXR cannot hold the depth asked for — expected half, float, got uint8.",
        over({"a.exr", "c.exr"}, Gamma + Words{"-d", "uint8"}, "out/{stem}.exr"));
}

TEST_F(PlimeBatch, noClobber_countsAsAFailure) {
    static_cast<void>(three());
    write("out/b_tm.exr", "precious");
    const Result result = run(over({"a.exr", "b.exr", "c.exr"}, Gamma + Words{"--no-clobber"}));
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.error,
              "plime: error: " + at("out/b_tm.exr") +
                  ": exists already and is not replaced. Choose another name, or allow replacing.\n" +
                  SomeFailed + "  " + at("b.exr") + '\n');
    EXPECT_EQ(read(at("out/b_tm.exr")), "precious");
    EXPECT_TRUE(exists("out/c_tm.exr"));
}

TEST_F(PlimeBatch, clashesOfNames_areRefusedBeforeWork) {
    static_cast<void>(three());
    expectFailure(2,
                  at("o.exr") + ": would be written twice, for " + at("a.exr") + " and for " + at("b.exr") +
                      " — got -o " + at("o.exr") +
                      ". Give every picture a name of its own, like -o out/{stem}.exr.",
                  over({"a.exr", "b.exr"}, Gamma, "o.exr"));
    expectFailure(2,
                  at("b.exr") + ": is read by this command and would be replaced — got -o " +
                      at("{stem}.exr") + ". Choose another folder or name, like -o out/{stem}_2.{ext}.",
                  over({"b.exr"}, Gamma, "{stem}.exr"));
    expectFailure(2,
                  at("o_a.exr") + ": would be written twice, for " + at("a.exr") + " and for " +
                      at("./a.exr") + " — got -o " + at("o_{stem}.exr") +
                      ". Choose another folder or name, like -o out/{stem}_2.{ext}.",
                  over({"a.exr", "b.exr", "./a.exr"}, Gamma, "o_{stem}.exr"));
    std::filesystem::create_directory_symlink(folder, folder / "link");
    const Result result = run(over({"a.exr", "c.exr"}, Gamma, "link/{stem}.exr"));
    EXPECT_EQ(result.code, 2);
    expectHas(result.error,
              at("link/a.exr") + ": is the same file as " + at("a.exr") + ", which is read by this command");
    expectFailure(
        2,
        "-o: has an unknown placeholder — expected {stem}, the name of the input without its extension, "
        "or {ext}, its extension, got {name}.",
        over({"a.exr", "b.exr"}, Gamma, "{name}.exr"));
}

TEST_F(PlimeBatch, bracesInNames_areTakenLiterally) {
    const std::string name = "{ext}{x}.exr";
    static_cast<void>(picture(name, gradient(3, 3)));
    succeed(over({name}, Gamma, "out/{1}{stem}.exr"));
    EXPECT_TRUE(exists("out/{1}{ext}{x}.exr"));
}

TEST_F(PlimeBatch, wrongModulesAndParameters_stopBeforeAnyPicture) {
    static_cast<void>(three());
    expectFailure(2,
                  "Hollywood/GamaCorrection: is not the key of a module. Did you mean "
                  "\"Hollywood/GammaCorrection\"?",
                  over({"none.exr", "a.exr"}, {"--with", "Hollywood/GamaCorrection"}));
    expectFailure(2, "Hollywood/ColorGammaCorrection: has no parameter \"rad\". Did you mean \"red\"?",
                  over({"none.exr", "a.exr"}, {"--with", "Hollywood/ColorGammaCorrection", "-p", "rad=1"}));
    EXPECT_EQ(run(over({"none.exr", "a.exr"}, Gamma + Words{"--plugin", at("none.so")})).code, 5);
}

TEST_F(PlimeBatch, shaderThatDoesNotCompile_stopsBeforeAnyPicture) {
    static_cast<void>(three());
    const std::string code = write("bad.frag", "void main() { nonsense; }\n").string();
    expectFailure(6,
                  "Hollywood/TileProgram, parameter \"code\" from " + code +
                      ": does not compile as a fragment shader — got text line 1, column 15: `nonsense' "
                      "undeclared. It would fail for every picture, so none is begun.",
                  over({"none.exr", "a.exr"}, {"--with", "Hollywood/TileProgram", "-p", "code=@" + code}));
}

TEST_F(PlimeBatch, withoutOpenGL_stopsBeforeAnyPicture) {
    static_cast<void>(three());
    const Result result = run(Call{over({"none.exr", "a.exr"}, Colours), WithoutOpenGL});
    EXPECT_EQ(result.code, 7);
    EXPECT_EQ(occurrences(result.error, "\n"), 1U) << result.error;
}

TEST_F(PlimeBatch, progress_isShownOnATerminalAlone_andGivesWayToErrors) {
    static_cast<void>(three());
    for (const std::string name : {"a.exr", "c.exr"}) static_cast<void>(picture(name, gradient(3000, 2000)));
    Call call{over({"a.exr", "none.exr", "c.exr"}, Gamma)};
    EXPECT_EQ(run(call).error.find('\r'), std::string::npos);
    call.error = Sink::Terminal;
    const std::string said = run(call).error;
    EXPECT_NE(said.find("\r\x1b[K3 pictures: "), std::string::npos) << said;
    expectHas(said, " pictures/s, ");
    expectHas(said, "\r\x1b[Kplime: ");
}

TEST_F(PlimeBatch, verbose_saysHowManyAreWritten) {
    static_cast<void>(three());
    const std::string said = messagesOf(over({"a.exr", "b.exr"}, Gamma + Words{"-v"}));
    expectHas(said, "plime: 2 of 2 pictures are written.\n");
}

/// Sends SIGINT when a file appears in the folder for the second time.
std::function<void(int)> interruptAtSecondFile(const std::filesystem::path& folder) {
    const int watch = ::inotify_init1(IN_CLOEXEC);
    EXPECT_GE(::inotify_add_watch(watch, folder.c_str(), IN_CREATE), 0);
    return [watch](int child) {
        std::size_t created = 0;
        alignas(inotify_event) char buffer[4096];
        for (pollfd some{watch, POLLIN, 0}; created < 2;) {
            ASSERT_EQ(::poll(&some, 1, 60'000), 1) << "no second file was begun";
            const ssize_t size = ::read(watch, buffer, sizeof buffer);
            for (ssize_t at = 0; at < size; ++created)
                at += static_cast<ssize_t>(sizeof(inotify_event)) +
                      static_cast<ssize_t>(reinterpret_cast<const inotify_event*>(buffer + at)->len);
        }
        ::close(watch);
        ::kill(child, SIGINT);
    };
}

TEST_F(PlimeBatch, interrupted_keepsFinishedPictures_andLeavesNothingHalfWritten) {
    static_cast<void>(picture("a.exr", gradient(4, 4)));
    workbench::PictureDescription description;
    description.width = 512;
    description.height = 40000;
    const auto writer = workbench::PictureWriter::create(at("b.exr"), description);
    const std::vector<krod::RGBAHalf> rows(512 * 1000, pixel(0.5F, 0.25F, 2));
    for (int first = 0; first < description.height; first += 1000)
        writer->writeRows(first, 1000, rows.data());
    writer->finish();
    Call call{over({"a.exr", "b.exr"}, Gamma, "out/{stem}.exr")};
    call.meanwhile = interruptAtSecondFile(folder / "out");
    const Result result = run(call);
    EXPECT_EQ(result.code, 130);
    EXPECT_EQ(result.error, SignalAnswer + "plime: error: interrupted, 1 of 2 pictures are written.\n");
    EXPECT_EQ(readPicture(at("out/a.exr")).pixels.size(), 16U);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder / "out"), {}), 1);
}

} // namespace
