// SPDX-License-Identifier: Apache-2.0
// plime info.
#include "tests/app/PictureProgram.h"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;

class PlimeInfo : public PictureProgramTest {
protected:
    /// What is printed about a file; the program must succeed without OpenGL and without a word.
    static std::string infoOf(const std::string& file, const Words& more = {}) {
        const Result result = run(Call{Words{"info", file} + more, WithoutOpenGL});
        EXPECT_EQ(result.code, 0) << result.error;
        EXPECT_EQ(result.error, "");
        return result.output;
    }
    static Json jsonOf(const std::string& file) { return Json::parse(infoOf(file, {"--json"})); }
};

workbench::Picture small() {
    workbench::Picture made;
    made.description.width = 3;
    made.description.height = 2;
    made.description.setText("owner", "somebody");
    made.pixels.assign(6, pixel(0, 0.5F, 1));
    return made;
}

TEST_F(PlimeInfo, picture_tellsSizeChannelsDepthAndTexts) {
    const std::string path = picture("a.exr", small());
    const std::string text = infoOf(path);
    EXPECT_TRUE(text.starts_with(path + ": picture\n")) << text;
    for (const char* const row : {"size  ", "3x2\n", "R, G, B\n", "half\n", "none\n", "somebody\n"})
        EXPECT_EQ(occurrences(text, row), 1U) << row << text;
    const Json json = jsonOf(path);
    EXPECT_EQ(json["kind"], "picture");
    EXPECT_EQ(json["size"], Json({3, 2}));
    EXPECT_EQ(json["channels"], Json({"R", "G", "B"}));
    EXPECT_EQ(json["depth"], "half");
    EXPECT_EQ(json["network"], false);
    EXPECT_EQ(json["metadata"]["owner"], "somebody");
}

TEST_F(PlimeInfo, pictureOfOurs_keepsItsNetwork) {
    const std::string path = picture("a.exr", small());
    for (const std::string name : {"b.exr", "b.png", "b.tif", "b.jpg"}) {
        messagesOf({"process", path, "-o", at(name), "--with", "Hollywood/GammaCorrection"});
        EXPECT_EQ(jsonOf(at(name))["network"], true) << name;
        EXPECT_EQ(infoOf(at(name), {"--network"}), R"({
  "version": 1,
  "objects": [
    {
      "name": "gammacorrection",
      "creator": "Hollywood/GammaCorrection"
    }
  ],
  "views": [
    {
      "name": "main",
      "picture": "a.exr",
      "processors": ["gammacorrection"]
    }
  ]
}
)") << name;
    }
}

TEST_F(PlimeInfo, format_isThatOfTheFile_whateverItsName) {
    const std::string path = picture("a.exr", small());
    for (const std::string name : {"b.png", "c"}) {
        std::filesystem::copy(path, at(name));
        EXPECT_EQ(jsonOf(at(name))["format"], "exr") << name;
    }
    EXPECT_EQ(jsonOf(picture("a.jpg", small()))["format"], "jpeg");
}

TEST_F(PlimeInfo, withoutANetwork_isAnInputError) {
    const std::string path = picture("a.exr", small());
    expectFailure(
        3, path + ": holds no network. Pictures that \"plime render\" and \"plime process\" write hold one.",
        Words{"info", path, "--network"});
    expectFailure(3, at("none") + ": does not exist. Check the path.", Words{"info", at("none")});
}

TEST_F(PlimeInfo, keptTextThatIsNoNetwork_isSaid) {
    workbench::Picture odd = small();
    odd.description.setText(workbench::NetworkName, "{\"version\": 1, \"objects\": 3}");
    const std::string path = picture("a.exr", odd);
    expectFailure(8, path + ", line 1: \"objects\" is of the wrong kind — expected a list, got 3.",
                  Words{"info", path, "--network"});
    EXPECT_EQ(jsonOf(path)["network"], true);
}

TEST_F(PlimeInfo, network_listsObjectsConnectionsAndViews) {
    const std::string text = R"({"version": 1, "objects": [
{"name": "a", "creator": "Scene/Galaxy", "parameters": {"size": "3.0"}},
{"name": "second", "creator": "Display/Depth", "source": "DisplayDepth", "input": "a", "unset": ["samples"]},
{"name": "tone", "creator": "Nobody/Knows"}],
"shared": [["a.x", "second.x"]],
"views": [{"name": "v", "shows": "second", "processors": ["tone"], "size": [32, 16]},
          {"name": "w", "picture": "b.exr"}]})";
    for (const std::string name : {"net.json", "net"}) {
        const std::string path = write(name, text).string();
        EXPECT_EQ(infoOf(path), path + R"(: network
Objects
  a       Scene/Galaxy, size=3.0
  second  Display/Depth@DisplayDepth, takes a, without samples
  tone    Nobody/Knows
Shared parameters
  a.x, second.x
Views
  v  shows second through tone, 32x16
  w  processes b.exr
)");
        const Json json = jsonOf(path);
        EXPECT_EQ(json["kind"], "network");
        EXPECT_EQ(json["network"], Json::parse(text));
        const std::string usual = infoOf(path, {"--network"});
        EXPECT_EQ(infoOf(write("usual.json", usual).string(), {"--network"}), usual);
    }
}

TEST_F(PlimeInfo, modelAndPoints_tellHowMuchThereIsAndWhere) {
    const Json model = jsonOf(write("a.obj", "v 0 0 0\nv 4 0 0\nv 0 2 -1\nf 1 2 3\n").string());
    EXPECT_EQ(model["kind"], "model");
    EXPECT_EQ(model["triangles"], 1);
    EXPECT_EQ(model["bounds"], Json::parse(R"({"least": [0.0, 0.0, -1.0], "most": [4.0, 2.0, 0.0]})"));
    const std::string points = write("a.xyz", "0 0 0\n1 2 3\n").string();
    EXPECT_EQ(jsonOf(points)["points"], 2);
    EXPECT_EQ(infoOf(points),
              points + ": points\n  points   2\n  dropped  0\n  columns  x, y, z\n  colours  1.0 to 1.0\n"
                       "  bounds   0.0, 0.0, 0.0 to 1.0, 2.0, 3.0\n");
}

TEST_F(PlimeInfo, points_tellTheirColumnsAndTheRangeOfTheirColours) {
    const std::string list = "id,x,y,z,r,g,b\n7,500000.25,5200000.5,1,255,51,0\n8,500001,5200001,2,0,0,0\n";
    const std::string points = write("a.csv", list).string();
    const std::string text = infoOf(points);
    for (const char* const row :
         {"columns   x, y, z, red, green, blue\n", "not used  id\n", "colours   0.0 to 1.0, divided by 255\n",
          "bounds    500000.25, 5200000.5, 1.0 to 500001.0, 5200001.0, 2.0\n"})
        EXPECT_EQ(occurrences(text, row), 1U) << row << text;
    const Json json = jsonOf(points);
    EXPECT_EQ(json["unused"], Json::array({"id"}));
    EXPECT_EQ(json["colours"], Json({{"least", 0.0}, {"most", 1.0}, {"dividedBy", 255}}));
}

TEST_F(PlimeInfo, model_tellsHowManyTexturesItHas) {
    const auto spider = packaged("/usr/share/assimp/models/OBJ/spider.obj", "assimp-testmodels");
    EXPECT_EQ(jsonOf(spider.string())["textures"], 4);
}

} // namespace
