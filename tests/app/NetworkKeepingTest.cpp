// SPDX-License-Identifier: Apache-2.0
// Networks that could not be read again: not saved, not kept, and never without a word.
#include "tests/app/PictureProgram.h"

namespace {

using workbench::Picture;

const std::string Expected = " — expected UTF-8 without control characters, got ";

class PlimeNetworkKeeping : public PictureProgramTest {
protected:
    /// Runs the program in the folder; it must succeed. Gives what it says.
    std::string in(const Words& words) const {
        Call call{words + Words{"--gpu", "software"}};
        call.folder = folder.string();
        const Result result = run(call);
        EXPECT_EQ(result.code, 0) << result.error;
        return result.error;
    }
    /// The picture is there, and says in words that it keeps no network.
    void expectNoNetworkIn(const std::string& name) const {
        EXPECT_FALSE(workbench::readPicture(at(name)).pixels.empty());
        const Result shown = run({"info", at(name), "--network"});
        EXPECT_EQ(shown.code, 3);
        EXPECT_NE(shown.error.find(": holds no network."), std::string::npos) << shown.error;
    }
    /// Runs a command with and without --save-network: once nothing is left, once the picture, a warning and no
    /// network. `cause` is what comes before "cannot be saved".
    void expectNothingLost(const Words& command, const std::string& cause, const std::string& got) const {
        Call call{command + Words{"-o", "out.exr", "--gpu", "software", "--save-network", "net.json"}};
        call.folder = folder.string();
        expectFailure(8,
                      "net.json, " + cause + " cannot be saved as it is" + Expected + got +
                          ". The picture can be made without --save-network.",
                      call);
        expectWarning(command, cause, got);
    }
    void expectWarning(const Words& command, const std::string& cause, const std::string& got) const {
        EXPECT_EQ(in(command + Words{"-o", "out.exr"}), "plime: warning: " + cause +
                                                            " cannot be saved as it is, so the picture keeps "
                                                            "no network" +
                                                            Expected + got + ".\n");
        expectNoNetworkIn("out.exr");
        std::filesystem::remove(at("out.exr"));
    }

    const std::string program = "uniform sampler2D frame;\nvoid main() { gl_FragColor = vec4(0.25); }\n";
    const std::string triangle = "v 0 0 0\nv 4 0 0\nv 0 4 0\nf 1 2 3\n";
    const Words toner = {"--with", "Hollywood/TileProgram", "-p", "code=@my.frag"};
};

TEST_F(PlimeNetworkKeeping, textsThatAreNoText_areNeverReplaced) {
    static_cast<void>(picture("in.exr", gradient(8, 8)));
    const std::pair<const char*, const char*> bad[] = {
        {"// caf\xe9\n", "\\xe9"}, {"// \a\n", "\\x07"}, {"// \x1b[2J\n", "\\x1b"}};
    for (const auto& [comment, got] : bad) {
        write("my.frag", program + comment);
        const std::string where = got + std::string(" in line 3");
        expectNothingLost(Words{"process", "in.exr"} + toner, "tileprogram.code:", where);
        expectNothingLost(Words{"render", "demo:knot", "--size", "16x16"} + toner,
                          "tileprogram.code:", where);
    }
    write("my.frag", program + "// caf\xc3\xa9\n");
    EXPECT_EQ(in(Words{"process", "in.exr", "-o", "out.exr", "--save-network", "net.json"} + toner), "");
    EXPECT_EQ(in({"run", "net.json", "-o", "again.exr"}), "");
    EXPECT_EQ(read(at("again.exr")), read(at("out.exr")));
}

TEST_F(PlimeNetworkKeeping, pathsThatAreNoText_areNeverReplaced) {
    const std::pair<std::string, std::string> bad[] = {{"mod\xe9l", "\\xe9"}, {"mod\x1bl", "\\x1b"}};
    for (const auto& [name, got] : bad) {
        write(name + ".obj", triangle);
        expectNothingLost({"render", name + ".obj", "--size", "16x16"}, "model.file:", got);
        static_cast<void>(picture(name + ".exr", gradient(8, 8)));
        const Words command = {"process", name + ".exr", "--with", "Hollywood/GammaCorrection"};
        Call call{command + Words{"-o", "out.exr", "--save-network", "net.json"}};
        call.folder = folder.string();
        expectFailure(8,
                      "net.json, \"picture\" of the view main: cannot be saved as it is" + Expected + got +
                          ". The picture can be made without --save-network.",
                      call);
        expectWarning(command, "mod" + got + "l.exr: its name", got);
    }
}

TEST_F(PlimeNetworkKeeping, folderThatIsNoText_isNotKeptAnyway) {
    std::filesystem::create_directories(folder / "d\xe9");
    write("d\xe9/one.obj", triangle);
    const Words command = {"render", "d\xe9/one.obj", "--size", "16x16", "-o", "a.exr"};
    Call call{command + Words{"--save-network", "net.json"}};
    call.folder = folder.string();
    EXPECT_EQ(run(call).code, 8);
    EXPECT_FALSE(std::filesystem::exists(at("a.exr")));
    EXPECT_EQ(in(command), "");
    EXPECT_NE(run({"info", at("a.exr"), "--network"}).output.find("\"file\": \"one.obj\""),
              std::string::npos);
    EXPECT_EQ(in(command + Words{"--save-network", "d\xe9/net.json"}), "") << "the path from there is a text";
}

TEST_F(PlimeNetworkKeeping, manyPictures_areToldOfOnce_orByName) {
    write("my.frag", program + "// caf\xe9\n");
    for (const char* const name : {"a.exr", "b.exr", "c\xe9.exr", "d\xe9.exr"})
        static_cast<void>(picture(name, gradient(8, 8)));
    const Words all = {"process", "a.exr", "b.exr", "c\xe9.exr", "d\xe9.exr", "-o", "{stem}.png"};
    EXPECT_EQ(in(all + toner),
              "plime: warning: tileprogram.code: cannot be saved as it is, so pictures made with it keep no "
              "network" +
                  Expected + "\\xe9 in line 3.\nplime: 4 notes, -v shows them.\n");
    expectNoNetworkIn("b.png");
    const std::string said = in(all + Words{"--with", "Hollywood/GammaCorrection"});
    EXPECT_EQ(occurrences(said, "warning"), 2U) << said;
    for (const std::string name : {"c", "d"})
        EXPECT_NE(said.find(name +
                            "\\xe9.exr: its name cannot be saved as it is, so the picture keeps no "
                            "network" +
                            Expected + "\\xe9.\n"),
                  std::string::npos)
            << said;
    EXPECT_EQ(run({"info", at("b.png"), "--network"}).code, 0);
    expectNoNetworkIn("d\xe9.png");
}

TEST_F(PlimeNetworkKeeping, networkOfAnEarlierPicture_isNotPassedOn) {
    in({"render", "demo:knot", "--size", "16x16", "-o", "in.exr"});
    write("my.frag", program + "// \a\n");
    expectWarning(Words{"process", "in.exr"} + toner, "tileprogram.code:", "\\x07 in line 3");
}

TEST_F(PlimeNetworkKeeping, settingOfASavedNetwork_isToldOfOnceForAllViews) {
    write("my.frag", program + "// \a\n");
    write("net.json", R"({"version": 1, "objects": [{"name": "a", "creator": "Scene/Knot"},
        {"name": "t", "creator": "Hollywood/TileProgram"}],
        "views": [{"name": "v", "shows": "a", "processors": ["t"], "size": [16, 16]},
                  {"name": "w", "shows": "a", "processors": ["t"], "size": [16, 16]}]})");
    EXPECT_EQ(in({"run", "net.json", "-o", "{view}.exr", "--set", "t.code=@my.frag"}),
              "plime: warning: t.code: cannot be saved as it is, so pictures made with it keep no network" +
                  Expected + "\\x07 in line 3.\n");
    expectNoNetworkIn("v.exr");
    expectNoNetworkIn("w.exr");
}

TEST_F(PlimeNetworkKeeping, backgroundsBeyondFloats_areRefused_andTheLargestAreKept) {
    const Words command = {"render", "demo:knot", "--size", "16x16", "-o", at("out.exr"), "--background"};
    const std::string sentence = "--background: is beyond what can be drawn — expected values of single "
                                 "precision, got \"1e300,0,0,1\".";
    expectFailure(2, sentence, command + Words{"1e300,0,0,1"});
    expectFailure(2, sentence, command + Words{"1e300,0,0,1", "--save-network", at("net.json")});
    write("view.json", R"({"version": 1, "objects": [{"name": "a", "creator": "Scene/Knot"}],
                           "views": [{"name": "v", "shows": "a", "size": [16, 16]}]})");
    expectFailure(2, sentence,
                  Words{"run", at("view.json"), "-o", at("out.exr"), "--background", "1e300,0,0,1"});
    in(command + Words{"3.4028234e38,0,-3.4028234e38,1e-45", "--save-network", "net.json"});
    EXPECT_EQ(run({"info", at("out.exr"), "--network"}).output, read(at("net.json")));
}

TEST_F(PlimeNetworkKeeping, noNetwork_keepsNoneInAnyFormat) {
    static_cast<void>(picture("in.png", gradient(8, 8)));
    for (const std::string name : {"out.exr", "out.png", "out.jpg", "out.tif"}) {
        const Words command = {"process", at("in.png"), "--with", "Hollywood/GammaCorrection",
                               "-o",      at(name)};
        static_cast<void>(messagesOf(command));
        EXPECT_EQ(run({"info", at(name), "--network"}).code, 0) << name;
        static_cast<void>(messagesOf(command + Words{"--no-network"}));
        expectNoNetworkIn(name);
    }
    EXPECT_EQ(messagesOf({"render", "demo:knot", "--size", "16x16", "--no-network", "-o", at("knot.exr")}),
              "");
    expectNoNetworkIn("knot.exr");
}

TEST_F(PlimeNetworkKeeping, faultThatIsPassedOver_isANote) {
    static_cast<void>(picture("in.jpg", gradient(64, 64, false)));
    const std::string whole = read(at("in.jpg"));
    write("in.jpg", whole.substr(0, whole.size() - 2)); // without the marker of its end
    const Words command = {"process", at("in.jpg"), "--with", "Hollywood/GammaCorrection",
                           "-o",      at("out.exr")};
    EXPECT_EQ(messagesOf(command), "plime: 1 note, -v shows it.\n");
    expectHas(messagesOf(command + Words{"-v"}),
              "plime: note: " + at("in.jpg") + ": the marker of its end is missing.\n");
}

} // namespace
