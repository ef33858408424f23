// SPDX-License-Identifier: Apache-2.0
// plime render, on Mesa's software renderer.
#include "tests/app/PictureProgram.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <sstream>
#include <tuple>

namespace {

using workbench::Picture;
using workbench::readPicture;
using Json = nlohmann::json;

const Words Separated = {"--display", "Display/CMYK"};

/// Draws on the software renderer, 96x64 pixels unless `more` says otherwise.
Words drawing(const std::string& input, const std::string& path, const Words& more = {}) {
    const bool sized = std::ranges::find(more, "--size") != more.end();
    return Words{"render", input, "-o", path, "--gpu", "software"} + more +
           (sized ? Words{} : Words{"--size", "96x64"});
}

class PlimeRender : public PictureProgramTest {
protected:
    /// Draws into a new file, which must go without a word, and reads it.
    Picture drawn(const std::string& input, const Words& more = {}) {
        const std::string path = at("drawn" + std::to_string(number++) + ".exr");
        succeed(drawing(input, path, more));
        return readPicture(path);
    }
    /// What is said when a picture is drawn.
    std::string saidOf(const std::string& input, const std::string& name, const Words& more = {}) const {
        return messagesOf(drawing(input, at(name), more));
    }

private:
    int number = 0;
};

const krod::RGBAHalf& pixelAt(const Picture& picture, int x, int y) {
    return picture.pixels.at(static_cast<std::size_t>(y * picture.description.width + x));
}

float largest(const Picture& picture) {
    float value = 0;
    for (const krod::RGBAHalf& p : picture.pixels)
        value = std::max({value, float(p.r), float(p.g), float(p.b)});
    return value;
}

Json networkOf(const Picture& picture) {
    const auto* kept = picture.description.find(workbench::NetworkName);
    EXPECT_NE(kept, nullptr);
    return kept ? Json::parse(kept->text) : Json();
}

TEST_F(PlimeRender, demo_hasTheSizeAskedFor_andABlackOpaqueBackground) {
    const Picture knot = drawn("demo:knot");
    EXPECT_EQ(knot.description.width, 96);
    EXPECT_EQ(knot.description.height, 64);
    EXPECT_EQ(knot.description.depth, workbench::PixelDepth::Half);
    expectSameBits({pixelAt(knot, 0, 0), pixelAt(knot, 95, 63)}, {pixel(0, 0, 0), pixel(0, 0, 0)});
    EXPECT_GT(largest(knot), 0.2F);
}

TEST_F(PlimeRender, demoInCapitals_isTheSame) {
    expectSameBits(drawn("demo:Knot").pixels, drawn("demo:knot").pixels);
}

TEST_F(PlimeRender, model_isLitFromTheEyeOnBothSides) {
    const auto front = write("front.obj", "v 0 0 0\nv 4 0 0\nv 0 4 0\nf 1 2 3\n");
    const auto back = write("back.obj", "v 0 0 0\nv 4 0 0\nv 0 4 0\nf 1 3 2\n");
    const Picture seen = drawn(front.string());
    expectSameBits(seen.pixels, drawn(back.string()).pixels);
    EXPECT_GT(float(pixelAt(seen, 40, 36).r), 0.9F); // faces the eye
    EXPECT_EQ(float(pixelAt(seen, 2, 2).r), 0.0F);
}

TEST_F(PlimeRender, points_addUp) {
    const auto file = write("points.xyz", "0 0 0\n0 0 0\n0 0 0\n1 0 0\n");
    const Picture points = drawn(file.string(), {"--point-size", "4"});
    EXPECT_EQ(largest(points), 3.0F);
    EXPECT_EQ(std::ranges::count_if(points.pixels, [](const auto& p) { return float(p.r) == 1.0F; }), 16);
}

TEST_F(PlimeRender, picture_isShownOnAPlane) {
    Picture blue;
    blue.description.width = blue.description.height = 8;
    blue.pixels.assign(64, pixel(0, 0, 0.5F));
    const Picture shown = drawn(picture("blue.exr", blue));
    expectSameBits({pixelAt(shown, 48, 32)}, {pixel(0, 0, 0.5F)});
}

TEST_F(PlimeRender, intensitiesFarAboveOne_areKeptInExr) { EXPECT_GT(largest(drawn("demo:galaxy")), 100.0F); }

TEST_F(PlimeRender, display_changesThePicture_andThreeInAChainDifferFromOne) {
    const Picture plain = drawn("demo:knot");
    EXPECT_EQ(saidOf("demo:knot", "one.exr", Separated), "");
    EXPECT_EQ(saidOf("demo:knot", "three.exr", Separated + Separated + Separated), "");
    const Picture one = readPicture(at("one.exr")), three = readPicture(at("three.exr"));
    EXPECT_LT(shareWithin(0, plain, one), 0.95);
    EXPECT_LT(shareWithin(0, one, three), 0.95);
    EXPECT_EQ(networkOf(three)["objects"].size(), 4U);
}

TEST_F(PlimeRender, camera_up_andBackground_areObeyed) {
    const auto file = write("square.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4\n");
    const Picture right =
        drawn(file.string(), {"--camera", "-2,0.5,9:-2,0.5,0:40", "--background", "0.25,0.5,2,0.5"});
    expectSameBits({pixelAt(right, 0, 0), pixelAt(right, 47, 32)},
                   {pixel(0.25F, 0.5F, 2, 0.5F), pixel(0.25F, 0.5F, 2, 0.5F)});
    const auto isLit = [&](const krod::RGBAHalf& p) { return float(p.g) > 0.9F; };
    EXPECT_TRUE(isLit(pixelAt(right, 72, 32)));
    const Picture below =
        drawn(file.string(), {"--camera", "-2,0.5,9:-2,0.5,0:40", "--up", "-1,0,0", "--size", "64x96"});
    EXPECT_TRUE(std::ranges::any_of(below.pixels.begin() + 64 * 64, below.pixels.end(), isLit));
    EXPECT_TRUE(std::ranges::none_of(below.pixels.begin(), below.pixels.begin() + 64 * 32, isLit));
}

TEST_F(PlimeRender, samples_withoutEffect_areSaidOncePerModule) {
    const std::string text = saidOf("demo:knot", "a.exr", Separated + Separated + Words{"--samples", "3"});
    EXPECT_EQ(text, "plime: warning: Display/CMYK: --samples has no effect on it, it always asks for 8 "
                    "samples.\n");
    EXPECT_EQ(saidOf("demo:knot", "b.exr", {"--samples", "3"}),
              "plime: warning: --samples: has no effect without a --display.\n");
    EXPECT_EQ(saidOf("demo:knot", "c.exr", Separated + Words{"-p", "samples=2", "--samples", "3"}), "");
    EXPECT_EQ(networkOf(readPicture(at("c.exr")))["objects"][1]["parameters"], Json({{"samples", "2"}}));
}

TEST_F(PlimeRender, settingsOfAGeneratedScene_areObeyed_andKept) {
    EXPECT_EQ(saidOf("demo:galaxy", "few.exr", {"--set", "count=50"}), "");
    const Picture few = readPicture(at("few.exr"));
    EXPECT_LT(shareWithin(0, few, drawn("demo:galaxy")), 0.99);
    EXPECT_EQ(networkOf(few)["objects"][0]["parameters"], Json({{"count", "50"}}));
    for (const std::string setting : {"count", "=5", "file=x.obj"})
        expectFailure(2,
                      "--set: is no setting of demo:galaxy — expected NAME=VALUE, got \"" + setting +
                          "\". See \"plime describe Scene/Galaxy\".",
                      drawing("demo:galaxy", at("no.exr")) + Words{"--set", setting});
}

TEST_F(PlimeRender, valuesThatAFormulaMakesNoNumbers_areANote) {
    const Words hue = {"--display", "Display/HSVAdjust", "-p", "hue=120", "-v"};
    const std::string said = saidOf("demo:knot", "hue.png", hue);
    expectHas(said, "plime: note: " + at("hue.png") + ": ");
    EXPECT_EQ(occurrences(said, "warning"), 0U) << said;
}

TEST_F(PlimeRender, samplesThatTheDriverHasNot_areToldToThoseWhoAskedForThem) {
    const std::string said = "plime: warning: Display/Blurred: asks for 16 samples, but the driver has ";
    const Words blurred = {"--display", "Display/Blurred"};
    EXPECT_TRUE(saidOf("demo:knot", "a.exr", blurred + Words{"-p", "samples=16"}).starts_with(said));
    EXPECT_TRUE(saidOf("demo:knot", "b.exr", blurred + blurred + Words{"--samples", "16"}).starts_with(said));
    EXPECT_EQ(occurrences(saidOf("demo:knot", "b.exr", blurred + blurred + Words{"--samples", "16"}), "\n"),
              1U);
    EXPECT_EQ(saidOf("demo:knot", "c.exr", {"--display", "Display/HSVAdjust"}), "") << "its own 8";
}

TEST_F(PlimeRender, with_isTheSameAsProcessingThePictureAfterwards) {
    const Words modules = {"--with", "Hollywood/ColorGammaCorrection", "-p", "red=-0.3",
                           "--with", "Hollywood/GammaCorrection"};
    succeed(drawing("demo:galaxy", at("plain.exr")));
    succeed(Words{"process", at("plain.exr"), "-o", at("after.exr")} + modules);
    const Picture after = readPicture(at("after.exr"));
    expectSameBits(drawn("demo:galaxy", modules).pixels, after.pixels);
    EXPECT_LT(shareWithin(0, readPicture(at("plain.exr")), after), 0.95);
}

TEST_F(PlimeRender, inTiles_equalsTheWholePicture) {
    // The columns are not put through CMYK: where red is the largest channel, cyan is the rounding of a
    // difference that is zero, and its half steps say nothing.
    for (const auto& [demo, displays] :
         {std::pair{"demo:columns", Words{}}, {"demo:galaxy", Words{}}, {"demo:knot", Separated}}) {
        const Words words = displays + Words{"--size", "320x200"};
        saidOf(demo, "whole.exr", words);
        const std::string text =
            saidOf(demo, "tiles.exr", words + Words{"--tile", "96", "--overlap", "16", "-v"});
        expectHas(text, "plime: Drawing in 20 tiles.\n");
        const Picture whole = readPicture(at("whole.exr")), tiles = readPicture(at("tiles.exr"));
        EXPECT_GE(shareWithin(8, whole, tiles), 0.999) << demo;
        EXPECT_EQ(networkOf(tiles)["views"][0]["tiles"], Json({{"size", {96, 96}}, {"overlap", 16}}));
    }
}

TEST_F(PlimeRender, network_isKeptInExrAndPng_withoutTimePathOrHost) {
    const auto model = write("model.obj", "v 0 0 0\nv 4 0 0\nv 0 4 0\nf 1 2 3\n");
    for (const std::string name : {"made.exr", "made.png"}) {
        saidOf(model.string(), name, Separated + Words{"-p", "options=+glow -halo"});
        const Json network = networkOf(readPicture(at(name)));
        EXPECT_EQ(network["version"], 1);
        EXPECT_EQ(network["objects"],
                  Json::parse(R"([{"name": "model", "creator": "Scene/Model", "source": "ModelFile",
                                   "parameters": {"file": "model.obj"}},
                                  {"name": "cmyk", "creator": "Display/CMYK", "input": "model",
                                   "source": "CMYKObjectDisplay", "parameters": {"options": "+glow -halo"}}])"));
        const Json& view = network["views"][0];
        EXPECT_EQ(view["shows"], "cmyk");
        EXPECT_EQ(view["size"], Json({96, 64}));
        EXPECT_EQ(view["camera"]["fieldOfView"], 30.0);
        EXPECT_FALSE(view.contains("tiles"));
        const std::string bytes = read(at(name));
        EXPECT_EQ(bytes.find(folder.string()), std::string::npos);
        saidOf(model.string(), "again" + name, Separated + Words{"-p", "options=+glow -halo"});
        EXPECT_EQ(read(at("again" + name)), bytes) << "the same work must leave the same bytes";
    }
}

TEST_F(PlimeRender, clipping_isSaidOnce) {
    const std::string text = saidOf("demo:galaxy", "galaxy.png");
    EXPECT_EQ(occurrences(text, "\n"), 1U) << text;
    EXPECT_TRUE(text.starts_with("plime: warning: " + at("galaxy.png") + ": ")) << text;
    expectHas(text, " values were clipped to uint16, the largest was ");
    expectHas(text, ". Write .exr to keep them, or say --clip.\n");
    EXPECT_EQ(saidOf("demo:galaxy", "quiet.png", {"-q"}), "");
}

// The PNG holds colors that are not multiplied by alpha.
TEST_F(PlimeRender, srgb_encodesColoursAndNotAlpha) {
    const auto file = write("point.xyz", "0 0 0\n");
    saidOf(file.string(), "a.png", {"--srgb", "-d", "uint8", "--background", "0.125,0.25,0,0.5"});
    const krod::RGBAHalf corner = readPicture(at("a.png")).pixels.front();
    expectNear({corner}, {pixel(137 / 255.0F, 188 / 255.0F, 0, 128 / 255.0F)}, 0.001F);
}

TEST_F(PlimeRender, modelWithoutExtent_warns) {
    const auto dot = write("dot.obj", "v 1 1 1\nv 1 1 1\nv 1 1 1\nf 1 2 3\n");
    EXPECT_EQ(saidOf(dot.string(), "a.exr"), "plime: warning: " + dot.string() +
                                                 ": draws nothing: it has no extent. See what is in the "
                                                 "file.\n");
    const auto point = write("point.xyz", "1 1 1\n");
    EXPECT_EQ(saidOf(point.string(), "b.exr"), "");
    EXPECT_EQ(largest(readPicture(at("b.exr"))), 1.0F);
}

TEST_F(PlimeRender, pointsFarFromZero_areSeenAsIfTheyWereNear) {
    const auto grid = [](double x, double y) {
        std::string text = "x,y,z\n";
        for (int i = 0; i < 400; ++i)
            text += std::to_string(x + i % 20 * 0.2) + ',' + std::to_string(y + i / 20 * 0.2) + ",0\n";
        return text;
    };
    const auto near = write("near.csv", grid(0, 0)), far = write("far.csv", grid(500000, 5200000));
    const auto count = [](const Picture& shown) {
        return std::ranges::count_if(shown.pixels, [](const auto& p) { return float(p.r) > 0; });
    };
    const Words size{"--size", "192x128"};
    const auto lit = count(drawn(near.string(), size));
    EXPECT_GT(lit, 350);
    EXPECT_NEAR(static_cast<double>(count(drawn(far.string(), size))), static_cast<double>(lit), 20);

    // A camera counts in the coordinates of the file, typed or saved.
    const auto picture = [&](const char* camera) {
        return drawn(far.string(), size + Words{"--camera", camera, "--save-network", at("far.json")});
    };
    const Picture typed = picture("500001.9,5200001.9,9:500001.9,5200001.9,0:30");
    EXPECT_GT(count(typed), 350);
    EXPECT_EQ(networkOf(typed)["views"][0]["camera"]["eye"], Json({500001.9, 5200001.9, 9.0}));
    succeed({"run", at("far.json"), "-o", at("again.exr"), "--gpu", "software"});
    EXPECT_EQ(read(at("again.exr")), read(at("drawn2.exr")));
    expectSameBits(readPicture(at("again.exr")).pixels, typed.pixels);
}

TEST_F(PlimeRender, wideAndHighPictures_areFittedToTheirRectangle) {
    for (const auto& [width, height, size] :
         {std::tuple{512, 4, "128x8"}, {4, 512, "9x144"}, {60, 40, "96x64"}}) {
        Picture blue;
        blue.description.width = width;
        blue.description.height = height;
        blue.pixels.assign(static_cast<std::size_t>(width * height), pixel(0, 0, 0.5F));
        const Picture shown = drawn(picture("blue.exr", blue), {"--size", size});
        const int columns = shown.description.width, rows = shown.description.height;
        EXPECT_EQ(float(pixelAt(shown, 0, rows / 2).b), width >= height ? 0.5F : 0.0F) << size;
        EXPECT_EQ(float(pixelAt(shown, columns - 1, rows / 2).b), width >= height ? 0.5F : 0.0F) << size;
        EXPECT_EQ(float(pixelAt(shown, columns / 2, 0).b), width <= height || width == 60 ? 0.5F : 0.0F)
            << size;
        EXPECT_EQ(float(pixelAt(shown, columns / 2, rows - 1).b),
                  width <= height || width == 60 ? 0.5F : 0.0F)
            << size;
    }
}

TEST_F(PlimeRender, texturesThatAreLeftOut_areToldOnceWithTheirNumber) {
    const auto spider = packaged("/usr/share/assimp/models/OBJ/spider.obj", "assimp-testmodels").string();
    const std::string text = saidOf(spider, "plain.exr");
    EXPECT_EQ(text, "plime: warning: " + spider +
                        ": 4 textures are left out; only the colours of materials and vertices are drawn.\n");
}

TEST_F(PlimeRender, unusedColumnsAndEightBitColours_areNotes) {
    const auto list = write("a.csv", "x,y,z,mag,red,green,blue\n0,0,0,2.5,255,0,51\n");
    EXPECT_EQ(saidOf(list.string(), "a.exr"), "plime: 2 notes, -v shows them.\n");
    const std::string text = saidOf(list.string(), "a.exr", {"-v"});
    expectHas(text, "plime: note: " + list.string() +
                        ": columns that are not used: mag; used are x, y, z, red, green, blue.\n");
    expectHas(text,
              "plime: note: " + list.string() + ": colours are from 0 to 255 and are divided by 255.\n");
    EXPECT_EQ(largest(readPicture(at("a.exr"))), 1.0F);
}

TEST_F(PlimeRender, flatModelSeenFromItsEdge_isWarnedOf_withTheCameraToType) {
    const auto wall = write("wall.obj", "v 7 0 0\nv 7 2 0\nv 7 2 3\nv 7 0 3\nf 1 2 3 4\n");
    const auto floor = write("floor.obj", "v 0 5 0\nv 2 5 0\nv 2 5 3\nv 0 5 3\nf 1 2 3 4\n");
    for (const auto& file :
         {wall, floor,
          packaged("/usr/share/assimp/models/LWO/LWO2/concave_polygon.lwo", "assimp-testmodels")}) {
        const std::string text = saidOf(file.string(), "a.exr"),
                          start =
                              "plime: warning: " + file.string() + ": is flat and seen from its edge. Type ";
        ASSERT_TRUE(text.starts_with(start)) << text;
        Words typed;
        std::istringstream words(text.substr(start.size(), text.size() - start.size() - 2)); // without ".\n"
        for (std::string word; words >> word;) typed.push_back(word);
        EXPECT_GT(largest(drawn(file.string(), typed)), 0.3F);
    }
}

TEST_F(PlimeRender, pictureThatShowsNothing_isWarnedOf) {
    EXPECT_EQ(
        saidOf("demo:knot", "a.exr", {"--camera", "0,0,9:0,0,20"}),
        "plime: warning: demo:knot: is not seen in the picture. Type --camera 0.147,0,6.87:0.147,0,0.\n");
    write("a.mtl", "newmtl coal\nKd 0 0 0\n");
    const auto coal = write("coal.obj", "mtllib a.mtl\nv 0 0 0\nv 4 0 0\nv 0 4 0\nusemtl coal\nf 1 2 3\n");
    EXPECT_EQ(saidOf(coal.string(), "b.exr"),
              "plime: warning: " + coal.string() +
                  ": is black, and so is the background. Type --background 1,1,1.\n");
    EXPECT_EQ(saidOf(coal.string(), "c.exr", {"--background", "1,1,1"}), "");
}

TEST_F(PlimeRender, verbose_namesDriverAndOverrideFile) {
    const auto file = write("CMYK.frag", "void main() { gl_FragColor = vec4(0.25, 0.5, 0.75, 1); }\n");
    const std::string text =
        saidOf("demo:knot", "a.exr", Separated + Words{"-v", "--shader-dir", folder.string()});
    expectHas(text, "plime: Drawing on ");
    expectHas(text, "llvmpipe");
    expectHas(text, "plime: CMYK.frag is taken from " + file.string() + ".\n");
    expectSameBits({pixelAt(readPicture(at("a.exr")), 0, 0)}, {pixel(0.25F, 0.5F, 0.75F)});
}

TEST_F(PlimeRender, listDemos_listsThem) {
    const Result result = run(Call{{"render", "--list-demos"}, WithoutOpenGL});
    EXPECT_EQ(result.code, 0);
    for (const std::string demo : {"demo:knot ", "demo:galaxy ", "demo:columns "})
        EXPECT_EQ(occurrences('\n' + result.output, '\n' + demo), 1U) << result.output;
}

TEST_F(PlimeRender, interruptedInItsOnlyTile_leavesNothing) {
    Call call{{"render", "demo:knot", "-o", at("a.exr"), "--size", "2048x2048"}};
    call.meanwhile = interruptAtFirstFile(folder);
    expectFailure(130, "interrupted.", call);
}

} // namespace
