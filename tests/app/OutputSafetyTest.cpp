// SPDX-License-Identifier: Apache-2.0
// Files of the user that no command may destroy: its inputs, folders beside its pictures, and tiles of earlier runs.
#include "tests/app/PictureProgram.h"

namespace {

const Words Gamma = {"--with", "Hollywood/GammaCorrection"};
const Words Colours = {"--with", "Hollywood/ColorGammaCorrection", "-p", "red=-0.5"};
const std::string Read = "is read by this command and would be replaced";

/// Does not become smaller when it is compressed.
workbench::Picture noise(int side) {
    workbench::Picture made;
    made.description.width = made.description.height = side;
    made.description.hasAlpha = true;
    unsigned seed = 1;
    const auto next = [&] {
        seed = seed * 1664525U + 1013904223U; // a linear congruential generator
        return static_cast<float>(seed >> 8U) * 0x1p-24F + 0.01F;
    };
    for (int i = 0; i < side * side; ++i) made.pixels.push_back(pixel(next(), next(), next(), next()));
    return made;
}

class PlimeOutputSafety : public PictureProgramTest {
protected:
    /// Runs the program in the folder; the sentence must follow, and nothing may have changed.
    void refused(const std::string& sentence, const Words& words) const {
        Call call{words};
        call.folder = folder.string();
        expectFailure(2, sentence, call);
    }
    [[nodiscard]] static std::string twoViews(const std::string& processor) {
        return R"({"version": 1, "objects": [{"name": "g", "creator": ")" + processor + R"("}],
            "views": [{"name": "a", "picture": "b.exr", "processors": ["g"]},
                      {"name": "b", "picture": "c.exr", "processors": ["g"]}]})";
    }
    /// A run that finds no room for its picture behind the last tile.
    void leaveTiles(const Words& words) const {
        Call call{words};
        call.largestFile = std::uint64_t{1} << 20;
        const Result result = run(call);
        EXPECT_EQ(result.code, 4) << result.error;
        expectHas(result.error, "; continue with the same command and --resume\n");
    }

    std::string b = picture("b.exr", gradient(9, 5)), c = picture("c.exr", gradient(4, 4));
};

TEST_F(PlimeOutputSafety, viewOfANetwork_replacesNoPictureThatItReads) {
    write("n.json", twoViews("Hollywood/GammaCorrection"));
    refused("b.exr: " + Read + " — got -o {view}.exr. Choose another folder or name, like -o out/{view}.exr.",
            {"run", "n.json", "-o", "{view}.exr"});
    std::filesystem::rename(at("n.json"), at("b.json"));
    std::filesystem::create_hard_link(at("c.exr"), at("b_a.exr"));
    refused("b_a.exr: is the same file as c.exr, which " + Read +
                ". Choose another folder or name, like -o out/{view}.exr.",
            {"run", "b.json"});
}

TEST_F(PlimeOutputSafety, network_replacesNothingThatIsReadOrWritten) {
    const std::string advice = "Give every picture a name of its own, like -o out/{stem}.exr.";
    refused("c.exr: " + Read + " — got --save-network c.exr. " + advice,
            Words{"process", "c.exr", "-o", "d.exr", "--save-network", "c.exr"} + Gamma);
    refused(at("e.exr") + ": would be written twice, for b.exr and for --save-network — got --save-network " +
                at("e.exr") + ". " + advice,
            Words{"process", "b.exr", "-o", "e.exr", "--save-network", at("e.exr")} + Gamma);
    write("my.frag", "uniform sampler2D frame;\nvoid main() { gl_FragColor = vec4(0.25); }\n");
    const Words program = {"--with", "Hollywood/TileProgram", "-p", "code=@my.frag"};
    refused("./my.frag: is the same file as my.frag, which " + Read + " — got --save-network ./my.frag. " +
                advice,
            Words{"process", "b.exr", "-o", "e.exr", "--save-network", "./my.frag"} + program);
    write("tri.obj", "v 0 0 0\nv 4 0 0\nv 0 4 0\nf 1 2 3\n");
    refused("tri.obj: " + Read + " — got --save-network tri.obj. Choose another name or folder.",
            {"render", "tri.obj", "-o", "e.exr", "--size", "8x8", "--save-network", "tri.obj"});
    write("BlurredObject.frag", "// mine");
    refused(
        "BlurredObject.frag: is the same file as " + at("./BlurredObject.frag") + ", which " + Read +
            " — got --save-network BlurredObject.frag. Choose another name or folder.",
        {"render", "tri.obj", "-o", "e.exr", "--shader-dir", ".", "--save-network", "BlurredObject.frag"});
}

TEST_F(PlimeOutputSafety, filesThatAModelNames_areNotReplaced) {
    const auto named = [&](const std::string& output, const std::string& model) {
        return output + ": belongs to " + model +
               ", which is read by this command, and would be replaced — got -o " + output +
               ". Choose another name or folder.";
    };
    std::filesystem::create_directories(at("parts/skin"));
    write("parts/tri.obj", "mtllib my tri.mtl\nv 0 0 0\nv 4 0 0\nv 0 4 0\nusemtl a\nf 1 2 3\n");
    write("parts/my tri.mtl", "newmtl a\nKd 1 0 0\nmap_Kd -s 1 1 1 skin\\red tile.png\n");
    write("parts/skin/red tile.png", "a texture");
    for (const std::string path : {"parts/skin/red tile.png", "parts/../parts/skin/red tile.png"})
        refused(named(path, "parts/tri.obj"), {"render", "parts/tri.obj", "-o", path, "--size", "8x8"});
    write("tri.gltf", R"({"asset": {"version": "2.0"}, "images": [{"uri": "parts/skin/red%20tile.png"}]})");
    const Result other =
        run({"render", at("tri.gltf"), "-o", at("parts/skin/red tile.png"), "--size", "8x8"});
    EXPECT_EQ(other.code, 2) << other.error;
    EXPECT_EQ(read(at("parts/skin/red tile.png")), "a texture");
    refused(
        "parts/my tri.mtl: belongs to parts/tri.obj, which is read by this command, and would be replaced"
        " — got --save-network parts/my tri.mtl. Choose another name or folder.",
        {"render", "parts/tri.obj", "-o", "a.exr", "--size", "8x8", "--save-network", "parts/my tri.mtl"});
    write("red tile.png", "of the same name, but elsewhere");
    const Result elsewhere = run({"render", at("parts/tri.obj"), "-o", at("red tile.png"), "--size", "8x8"});
    EXPECT_EQ(elsewhere.code, 0) << elsewhere.error;
}

TEST_F(PlimeOutputSafety, settingsFileOfRun_isNotReplaced) {
    write("n.json", R"({"version": 1, "objects": [{"name": "t", "creator": "Hollywood/TileProgram"}],
                        "views": [{"name": "v", "picture": "b.exr", "processors": ["t"]}]})");
    write("v.exr", "uniform sampler2D frame;\nvoid main() { gl_FragColor = vec4(0.25); }\n");
    refused("v.exr: " + Read + " — got -o {view}.exr. Choose another folder or name, like -o out/{view}.exr.",
            {"run", "n.json", "-o", "{view}.exr", "--set", "t.code=@v.exr"});
}

TEST_F(PlimeOutputSafety, linksCountAsTheirFiles) {
    const std::string advice = "Give every picture a name of its own, like -o out/{stem}.exr.";
    const auto same = [&](const std::string& output) {
        return output + ": is the same file as b.exr, which " + Read + " — got -o " + output + ". " + advice;
    };
    std::filesystem::create_symlink("b.exr", at("soft.exr"));
    std::filesystem::create_hard_link(b, at("hard.exr"));
    std::filesystem::create_directory_symlink(".", at("here"));
    for (const std::string output : {"soft.exr", "hard.exr", "here/b.exr", "./here/./b.exr"})
        refused(same(output), Words{"process", "b.exr", "-o", output} + Gamma);
    refused("b.exr: " + Read + " — got -o b.exr. " + advice,
            Words{"process", "b.exr", "-o", "b.exr"} + Gamma);
    refused("b.exr: " + Read + " — got -o b.exr. Choose another name or folder.",
            {"render", "b.exr", "-o", "b.exr", "--size", "8x8"});
    std::filesystem::create_symlink("new.exr", at("one.exr"));
    write("n.json", R"({"version": 1, "objects": [{"name": "k", "creator": "Scene/Knot"}],
        "views": [{"name": "one", "shows": "k", "size": [8, 8]}, {"name": "new", "shows": "k", "size": [8, 8]}]})");
    refused(
        "new.exr: would be written twice, for the view one and for the view new — got -o {view}.exr. Choose "
        "another folder or name, like -o out/{view}.exr.",
        {"run", "n.json", "-o", "{view}.exr"});
}

TEST_F(PlimeOutputSafety, placeOfKeptTiles_isNoPlaceForOtherFiles) {
    refused("a.exr.parts: lies where the tiles of b.exr are kept, in " + at("a.exr.parts") +
                " — got -o a.exr. Give every picture a name of its own, like -o out/{stem}.exr.",
            Words{"process", "b.exr", "-o", "a.exr", "--save-network", "a.exr.parts"} + Gamma);
    std::filesystem::create_directory(at("a.exr.parts"));
    std::filesystem::rename(b, at("a.exr.parts/tile-1"));
    refused("a.exr.parts/tile-1: lies where the tiles of a.exr.parts/tile-1 are kept, in " +
                at("a.exr.parts") +
                " — got -o a.exr. Give every picture a name of its own, like -o out/{stem}.exr.",
            Words{"process", "a.exr.parts/tile-1", "-o", "a.exr"} + Gamma);
}

TEST_F(PlimeOutputSafety, folderBesideThePicture_isOursByItsJournalAlone) {
    std::filesystem::create_directory(at("a.exr.parts"));
    write("a.exr.parts/journal", "my diary\n");
    write("a.exr.parts/tile-plan.txt", "the bathroom");
    const std::string input = picture("large.exr", noise(200));
    expectFailure(
        4,
        at("a.exr.parts") +
            ": is in the way: finished tiles are kept under this name — expected a folder that plime "
            "has made, or nothing. Move it away, or choose another name for the picture.",
        Words{"process", input, "-o", at("a.exr"), "--tile", "96", "--gpu", "software"} + Colours);
}

TEST_F(PlimeOutputSafety, fileOfTheUserAmongTheTiles_stays) {
    const std::string input = picture("large.exr", noise(400));
    const Words words =
        Words{"process", input, "-o", at("a.exr"), "--tile", "96", "--gpu", "software"} + Colours;
    leaveTiles(words);
    write("a.exr.parts/tile-plan.txt", "the bathroom");
    succeed(words);
    EXPECT_EQ(read(at("a.exr.parts/tile-plan.txt")), "the bathroom");
    EXPECT_FALSE(std::filesystem::exists(at("a.exr.parts/tile-0")));
}

TEST_F(PlimeOutputSafety, interruptedRun_goesOn) {
    static_cast<void>(picture("b.exr", noise(400)));
    write("n.json", R"({"version": 1, "objects": [{"name": "g", "creator": "Hollywood/ColorGammaCorrection",
                        "parameters": {"red": "-0.5"}}],
                        "views": [{"name": "a", "picture": "b.exr", "processors": ["g"]}]})");
    const Words words = {"run", at("n.json"), "-o", at("a.exr"), "--tile", "96", "--gpu", "software"};
    leaveTiles(words);
    expectHas(messagesOf(words + Words{"--resume", "-v"}),
              "plime: 81 of 81 tiles taken from " + at("a.exr.parts"));
    EXPECT_FALSE(std::filesystem::exists(at("a.exr.parts")));
    succeed({"run", at("n.json"), "-o", at("whole.exr"), "--tile", "96", "--gpu", "software"});
    EXPECT_TRUE(read(at("a.exr")) == read(at("whole.exr")));
}

TEST_F(PlimeOutputSafety, refusedRun_deletesNoTiles) {
    const std::string input = picture("large.exr", noise(400));
    const Words words =
        Words{"process", input, "-o", at("a.exr"), "--tile", "96", "--gpu", "software"} + Colours;
    leaveTiles(words);
    write("a.exr", "precious");
    expectFailure(
        4, at("a.exr") + ": exists already and is not replaced. Choose another name, or allow replacing.",
        words + Words{"--no-clobber"});
    expectHas(messagesOf(words + Words{"--resume", "-v"}), "plime: 81 of 81 tiles taken from ");
}

TEST_F(PlimeOutputSafety, linkToAFileThatDoesNotExistYet_isFollowed) {
    std::filesystem::create_directory(at("real"));
    std::filesystem::create_symlink("real/new.exr", at("link.exr"));
    succeed(Words{"process", b, "-o", at("link.exr")} + Gamma);
    EXPECT_TRUE(std::filesystem::is_symlink(at("link.exr")));
    EXPECT_FALSE(workbench::readPicture(at("real/new.exr")).pixels.empty());
}

} // namespace
