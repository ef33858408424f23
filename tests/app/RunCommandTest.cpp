// SPDX-License-Identifier: Apache-2.0
// plime run, and --save-network of the commands that come before it.
#include "tests/app/PictureProgram.h"

#include <cmath>

namespace {

using workbench::Picture;

class PlimeRun : public PictureProgramTest {
protected:
    /// Runs the program in the folder; it must succeed.
    std::string in(const Words& words, const std::string& where = "") const {
        Call call{words + Words{"--gpu", "software"}};
        call.folder = (folder / where).string();
        const Result result = run(call);
        EXPECT_EQ(result.code, 0) << result.error;
        return result.error;
    }
    /// The network kept in a picture, in several lines.
    [[nodiscard]] std::string networkOf(const std::string& picture) const {
        const Result result = run({"info", at(picture), "--network"});
        EXPECT_EQ(result.code, 0) << result.error;
        return result.output;
    }
    /// Saves the network and runs it: the pictures must be the same bytes.
    void expectSame(const Words& command, const std::string& extension = "exr") const {
        in(command + Words{"-o", "first." + extension, "--save-network", "net.json"});
        in({"run", "net.json", "-o", "second." + extension});
        EXPECT_FALSE(read(at("first." + extension)).empty());
        EXPECT_EQ(read(at("second." + extension)), read(at("first." + extension)));
    }
    /// What is said of a network that cannot be run.
    void expectRefused(const std::string& text, int code, const std::string& sentence,
                       const Words& more = {}) const {
        write("net.json", text);
        expectFailure(code, sentence, Words{"run", at("net.json")} + more);
    }
};

const Words Chain = {"--display",    "Display/Blurred", "-p",      "width=5", "--display",
                     "Display/CMYK", "--unset",         "samples", "--size",  "120x90"};

Picture slope(int width, int height) {
    Picture made;
    made.description.width = width;
    made.description.height = height;
    for (int i = 0; i < width * height; ++i)
        made.pixels.push_back(pixel(float(i % width) / float(width), float(i / width) / float(height), 0.5F));
    return made;
}

TEST_F(PlimeRun, drawnPicture_isTheSameBytes) {
    expectSame(Words{"render", "demo:galaxy"} + Chain);
    expectSame(Words{"render", "demo:knot"} + Chain + Words{"--display", "Display/Depth@DisplayDepth"});
    expectSame(Words{"render", "demo:columns", "--background", "0.3,0.1,0,0.5", "--camera",
                     "1,2,9:0,0.5,0:40", "--up", "0.1,1,0", "--size", "90x120"});
    expectSame(Words{"render", "demo:galaxy"} + Chain +
                   Words{"--with", "Hollywood/ArcTangens", "--with", "Hollywood/PixelBlur", "-p", "width=3"},
               "png");
}

TEST_F(PlimeRun, pictureDrawnInTiles_isTheSameBytes) {
    expectSame(Words{"render", "demo:galaxy"} + Chain + Words{"--tile", "64", "--overlap", "7"});
    const std::string text = read(at("net.json"));
    EXPECT_NE(text.find("\"size\": [64, 64],\n        \"overlap\": 7"), std::string::npos) << text;
    expectSame(Words{"render", "demo:galaxy"} + Chain +
               Words{"--tile", "64", "--overlap", "0", "--with", "Hollywood/GammaCorrection"});
}

TEST_F(PlimeRun, drawnPictureCutForItsProcessors_isTheSameBytesWithMoreMemory) {
    expectSame({"render", "demo:galaxy", "--size", "600x500", "--tile", "128", "--overlap", "0", "--memory",
                "126M", "-q", "--with", "Hollywood/PixelBlur", "-p", "width=3"});
    EXPECT_NE(read(at("net.json")).find("\"processorTiles\": {"), std::string::npos);
}

TEST_F(PlimeRun, processedPicture_isTheSameBytes_inOneTileAndInMany) {
    static_cast<void>(picture("in.exr", slope(300, 100)));
    const Words modules = {"process", "in.exr",  "--with", "Hollywood/PixelBlur",
                           "-p",      "width=3", "--with", "Hollywood/GammaCorrection"};
    expectSame(modules);
    expectSame(modules + Words{"--tile", "128", "--overlap", "10", "-q"});
    expectSame({"process", "in.exr", "--with", "Hollywood/GammaCorrection"});
    expectSame({"process", "in.exr", "--with", "Hollywood/TileProgram", "--unset", "code"});
}

TEST_F(PlimeRun, keptNetwork_isTheSavedOne_andMakesThePictureAgain) {
    in(Words{"render", "demo:galaxy", "-o", "a.exr", "--save-network", "a.json"} + Chain);
    const std::string kept = networkOf("a.exr");
    EXPECT_EQ(kept, read(at("a.json")));
    write("kept.json", kept);
    in({"run", "kept.json"});
    EXPECT_EQ(read(at("kept_main.exr")), read(at("a.exr")));
}

TEST_F(PlimeRun, filesOfANetwork_leadFromItsFolder) {
    std::filesystem::create_directories(folder / "models");
    std::filesystem::create_directories(folder / "networks");
    write("models/one.obj", "v 0 0 0\nv 4 0 0\nv 0 4 0\nf 1 2 3\n");
    const Words command = {"render", "models/one.obj", "--size", "32x32", "-o"};
    in(command + Words{"a.exr", "--save-network", "here.json"});
    EXPECT_NE(read(at("here.json")).find("\"file\": \"models/one.obj\""), std::string::npos);
    in(command + Words{"a.exr", "--save-network", "networks/there.json"});
    EXPECT_NE(read(at("networks/there.json")).find("\"file\": \"../models/one.obj\""), std::string::npos);
    in({"run", "here.json", "-o", "b.exr"});
    in({"run", "../networks/there.json", "-o", "../c.exr"}, "models");
    in({"run", at("here.json"), "-o", "../d.exr"}, "networks");
    for (const char* const name : {"b.exr", "c.exr", "d.exr"})
        EXPECT_EQ(read(at(name)), read(at("a.exr"))) << name;
    EXPECT_NE(networkOf("a.exr").find("\"file\": \"one.obj\""), std::string::npos);
}

TEST_F(PlimeRun, absolutePaths_stay) {
    const auto model = write("one.obj", "v 0 0 0\nv 4 0 0\nv 0 4 0\nf 1 2 3\n");
    expectSame({"render", model.string(), "--size", "32x32"});
    EXPECT_NE(read(at("net.json")).find('"' + model.string() + '"'), std::string::npos);
}

const std::string TwoViews = R"({"version": 1,
"objects": [{"name": "knot", "creator": "Scene/Knot"},
            {"name": "soft", "creator": "Display/Blurred", "input": "knot"},
            {"name": "deep", "creator": "Hollywood/GammaCorrection"}],
"views": [{"name": "plain", "shows": "knot", "size": [32, 24]},
          {"name": "soft", "shows": "soft", "size": [24, 32], "processors": ["deep"]},
          {"name": "photo", "picture": "in.exr", "processors": ["deep", "deep"]}]})";

TEST_F(PlimeRun, severalViews_areSeveralPictures) {
    static_cast<void>(picture("in.exr", slope(20, 10)));
    write("many.json", TwoViews);
    in({"run", "many.json"});
    in({"run", "many.json", "-o", "{view}.png", "-q"});
    EXPECT_EQ(workbench::readPicture(at("many_plain.exr")).description.height, 24);
    EXPECT_EQ(workbench::readPicture(at("many_soft.exr")).description.height, 32);
    const Picture photo = workbench::readPicture(at("many_photo.exr"));
    EXPECT_NEAR(float(photo.pixels[0].b), std::pow(0.5F, 2.25F), 0.001F) << "the same module works twice";
    EXPECT_TRUE(std::filesystem::exists(at("photo.png")));
    EXPECT_EQ(networkOf("many_photo.exr").find("knot"), std::string::npos) << "a view keeps what it needs";
    in({"run", "many.json", "--size", "16x16"});
    EXPECT_EQ(workbench::readPicture(at("many_soft.exr")).description.height, 16);
    expectFailure(2,
                  "-o: leads 3 views to one file — expected {view}, the name of a view, got \"" +
                      at("a.exr") + "\". Write it like -o {view}.exr.",
                  Words{"run", at("many.json"), "-o", at("a.exr")});
    expectFailure(2, "-o: has an unknown placeholder — expected {view}, the name of a view, got {viw}.",
                  Words{"run", at("many.json"), "-o", at("{viw}.exr")});
}

TEST_F(PlimeRun, pictureThatKeepsItsNetwork_isMadeAgain) {
    in(Words{"render", "demo:galaxy", "-o", "first.exr"} + Chain);
    in({"run", "first.exr", "-o", "second.exr"});
    EXPECT_EQ(read(at("second.exr")), read(at("first.exr")));
    in(Words{"render", "demo:galaxy", "-o", "bare.exr", "--no-network"} + Chain);
    const std::string path = at("bare.exr");
    expectFailure(
        3, path + ": is a picture that keeps no network — expected a network, or a picture made by plime.",
        Words{"run", path});
}

TEST_F(PlimeRun, savedLook_isTakenToAnotherPicture) {
    static_cast<void>(picture("a.exr", slope(20, 10)));
    static_cast<void>(picture("b.exr", slope(300, 70)));
    const Words look = {"--with", "Hollywood/ColorGammaCorrection", "-p", "red=-0.5"};
    in(Words{"process", "a.exr", "-o", "a_tm.exr", "--save-network", "look.json"} + look);
    in({"run", "look.json", "-o", "b_tm.exr", "--set", "main.picture=b.exr"});
    in(Words{"process", "b.exr", "-o", "direct.exr"} + look);
    EXPECT_EQ(read(at("b_tm.exr")), read(at("direct.exr")));
    expectFailure(2,
                  at("b.exr") + ": is read by this command and would be replaced — got -o " + at("b.exr") +
                      ". Choose another folder or name, like -o out/{view}.exr.",
                  Words{"run", at("look.json"), "-o", at("b.exr"), "--set", "main.picture=" + at("b.exr")});
}

TEST_F(PlimeRun, setting_changesThePicture_andIsKept) {
    in(Words{"render", "demo:galaxy", "-o", "a.exr", "--save-network", "a.json"} + Chain);
    in({"run", "a.json", "-o", "b.exr", "--set", "blurred.width=12", "--set", "galaxy.size=3"});
    EXPECT_NE(read(at("b.exr")), read(at("a.exr")));
    EXPECT_NE(networkOf("b.exr").find("\"width\": \"12.0\""), std::string::npos);
    EXPECT_NE(networkOf("b.exr").find("\"size\": \"3.0\""), std::string::npos);
    const Words direct = {"render", "demo:galaxy", "-o", "c.exr"};
    Words wider = Chain;
    wider[3] = "width=12";
    in(direct + wider);
    in({"run", "a.json", "-o", "d.exr", "--set", "blurred.width=12"});
    EXPECT_EQ(read(at("d.exr")), read(at("c.exr")));
}

TEST_F(PlimeRun, depthAndEncoding_areSaved_andReplacedByOptions) {
    static_cast<void>(picture("in.exr", slope(20, 10)));
    const Words command = {"process", "in.exr", "--with", "Hollywood/GammaCorrection",
                           "-d",      "uint8",  "--srgb"};
    expectSame(command, "png");
    EXPECT_NE(read(at("net.json")).find("\"depth\": \"uint8\",\n      \"srgb\": true"), std::string::npos)
        << read(at("net.json"));
    expectSame(Words{"render", "demo:knot", "--size", "32x24", "-d", "float", "--srgb"});
    expectSame(
        Words{"render", "demo:knot", "--size", "128x96", "--tile", "64", "--overlap", "0", "-d", "uint8"},
        "tif");
    in(command + Words{"-o", "a.png", "--save-network", "net.json"});
    in({"run", "net.json", "-o", "b.png", "-d", "uint16"});
    EXPECT_EQ(workbench::readPicture(at("b.png")).description.depth, workbench::PixelDepth::UInt16);
    EXPECT_NE(networkOf("b.png").find("\"depth\": \"uint16\""), std::string::npos);
    EXPECT_EQ(in({"run", "net.json", "-o", "c.exr"}),
              "plime: warning: c.exr: cannot have the depth uint8 of the view main.\n");
    EXPECT_EQ(workbench::readPicture(at("c.exr")).description.depth, workbench::PixelDepth::Half);
}

TEST_F(PlimeRun, networksThatDoNotSayDepthAndEncoding_areAsBefore) {
    static_cast<void>(picture("in.exr", slope(20, 10)));
    in({"process", "in.exr", "-o", "a.png", "--with", "Hollywood/GammaCorrection", "--save-network",
        "net.json"});
    EXPECT_EQ(read(at("net.json")).find("depth"), std::string::npos);
    EXPECT_EQ(read(at("net.json")).find("srgb"), std::string::npos);
    in({"run", "net.json", "-o", "b.png", "--srgb"});
    EXPECT_NE(read(at("b.png")), read(at("a.png")));
    in({"run", "net.json", "-o", "b.png"});
    EXPECT_EQ(read(at("b.png")), read(at("a.png")));
}

TEST_F(PlimeRun, uncheckedValue_needsUncheckedAgain) {
    in({"render", "demo:knot", "-o", "a.exr", "--size", "32x32", "--save-network", "a.json", "--display",
        "Display/Blurred", "--unchecked", "-p", "samples=17"});
    EXPECT_EQ(run({"run", at("a.json"), "-o", at("b.exr")}).code, 8);
    in({"run", "a.json", "-o", "b.exr", "--unchecked"});
    EXPECT_EQ(read(at("b.exr")), read(at("a.exr")));
}

TEST_F(PlimeRun, brokenNetworks_leaveNothing) {
    const std::string file = at("net.json");
    expectRefused("{\"version\": 1", 8, file + ", line 1: ends in the middle of its JSON text.");
    expectRefused(
        "{\"version\": 1}", 8,
        file + ": has no view, so that there is nothing to make — expected a picture or an object under "
               "\"views\".");
    const std::string objects =
        "{\"version\": 1, \"objects\": [{\"name\": \"a\", \"creator\": \"Scene/Knot\"}],\n";
    const auto view = [&](const std::string& what) {
        return objects + "\"views\": [{\"name\": \"v\", \"shows\": \"a\", " + what + "}]}";
    };
    expectRefused(
        view("\"tiles\": {\"size\": [64, 32]}"), 8,
        file + ", line 2: the view v is drawn in tiles that cannot be — expected tiles of 16 to 16384 pixels "
               "on both sides alike, more than twice the overlap.");
    expectRefused(
        view("\"camera\": {\"eye\": [0, 0, 1], \"target\": [0, 0, 1], \"up\": [0, 1, 0], \"fieldOfView\": "
             "30}"),
        8,
        file +
            ", line 2: the view v is seen by a camera that has no direction — expected an eye and a target "
            "at different places.");
    expectRefused(
        view("\"background\": [1e300, 0, 0, 1]"), 8,
        file + ", line 2: the view v has a background beyond what can be drawn — expected values of single "
               "precision.");
    expectRefused(view("\"size\": [131072, 131072]"), 8,
                  file + ", line 2: the view v is too large — expected at most 2147483648 pixels in all.");
    expectRefused(objects + "\"views\": [{\"name\": \"/tmp/x\", \"shows\": \"a\"}]}", 8,
                  file + ", line 2: the view /tmp/x cannot name a file — expected a name without strokes.");
    expectFailure(3, at("none.json") + ": does not exist. Check the path.", Words{"run", at("none.json")});
}

TEST_F(PlimeRun, missingFileOfANetwork_isAnInputError) {
    write("net.json", R"({"version": 1, "objects": [{"name": "a", "creator": "Scene/Model",
                          "parameters": {"file": "gone.obj"}}], "views": [{"name": "v", "shows": "a"}]})");
    const Result result = run({"run", at("net.json"), "-o", at("a.exr")});
    EXPECT_EQ(result.code, 3);
    EXPECT_NE(result.error.find(at("gone.obj") + ": "), std::string::npos) << result.error;
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(PlimeRun, optionsWithoutMeaning_areRefused) {
    static_cast<void>(picture("in.exr", slope(20, 10)));
    write("net.json", R"({"version": 1, "objects": [{"name": "deep", "creator": "Hollywood/GammaCorrection"}],
                          "views": [{"name": "v", "picture": "in.exr", "processors": ["deep"]}]})");
    expectFailure(2, "--size: has no meaning here: " + at("net.json") + " draws nothing.",
                  Words{"run", at("net.json"), "-o", at("a.exr"), "--size", "8x8"});
}

TEST_F(PlimeRun, mistakenSetting_namesOptionObjectAndParameter) {
    write("net.json",
          R"({"version": 1, "objects": [{"name": "deep", "creator": "Hollywood/ColorGammaCorrection"}],
                          "views": [{"name": "v", "picture": "in.exr", "processors": ["deep"]}]})");
    expectFailure(
        2,
        "--set, deep, Hollywood/ColorGammaCorrection: parameter \"red\" is outside its limits — expected "
        "-1.0 to 1.0, got 2.0. Set it nevertheless with --unchecked.",
        Words{"run", at("net.json"), "-o", at("a.exr"), "--set", "deep.red=2"});
}

TEST_F(PlimeRun, networkThatCannotBeSaved_isSaidBeforeTheWork) {
    const auto refused = [&](const Words& words) {
        const Result result = run(words);
        EXPECT_EQ(filesInFolder(), 1) << result.error;
        return result.code;
    };
    const std::string path = picture("in.exr", slope(20, 10));
    EXPECT_EQ(refused({"render", "demo:knot", "-o", at("a.exr"), "--save-network", at("none/a.json")}), 4);
    EXPECT_EQ(refused({"render", "demo:knot", "-o", at("a.exr"), "--save-network", at("a.exr")}), 2);
    EXPECT_EQ(refused({"render", "demo:knot", "-o", at("a.exr"), "--no-clobber", "--save-network", path}), 4);
    EXPECT_EQ(refused({"process", path, path, "-o", at("{stem}_2.exr"), "--with", "Hollywood/ArcTangens",
                       "--save-network", at("a.json")}),
              2);
}

} // namespace
