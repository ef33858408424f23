// SPDX-License-Identifier: Apache-2.0
// Models made to harm: counts that are not there, endless lines, numbers beyond all bounds, deep nesting.
#include "ModelOutcome.h"
#include "ModelSamples.h"

using namespace workbench;

namespace {

constexpr ModelLimits Limits{std::chrono::milliseconds(5000), {std::uint64_t{1} << 30, 0}};

class HostileModel : public FilesTest {
protected:
    std::string outcome(const std::string& name, const std::string& bytes) const {
        return outcomeOfModel(write(name, bytes), Limits);
    }
    static std::string replaced(std::string text, const std::string& from, const std::string& to) {
        EXPECT_NE(text.find(from), std::string::npos) << from;
        return text.replace(text.find(from), from.size(), to);
    }
    static std::string repeated(const std::string& part, int count) {
        std::string text;
        for (int i = 0; i < count; ++i) text += part;
        return text;
    }
};

std::string withCrlf(const std::string& text) {
    std::string result;
    for (const char c : text) result += c == '\n' ? std::string("\r\n") : std::string(1, c);
    return result;
}

const std::string Billion = "1000000000";

} // namespace

TEST_F(HostileModel, Counts_ofABillion_areRefused) {
    const std::string ascii = modelBytes("ply"), binary = modelBytes("ply_binary");
    for (const auto& [name, bytes] : std::vector<std::pair<std::string, std::string>>{
             {"vertices.ply", replaced(ascii, "vertex 25", "vertex " + Billion)},
             {"faces.ply", replaced(ascii, "face 32", "face " + Billion)},
             {"binary.ply", replaced(binary, "vertex 25", "vertex " + Billion)},
             {"binary_faces.ply", replaced(binary, "face 32", "face " + Billion)},
             {"index.ply", replaced(ascii, "3 0 1 5", "3 0 1 " + Billion)},
             {"count.stl", modelBytes("stl_binary").replace(80, 4, "\x00\xca\x9a\x3b", 4)},
             {"a.off", replaced(modelBytes("off"), "25 32 0", Billion + " 32 0")}})
        EXPECT_NE(outcome(name, bytes), "read") << name;
    EXPECT_NE(outcome("index.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 " + Billion + '\n'), "read");
}

TEST_F(HostileModel, Line_ofThirtyMegabytes_ends) {
    const std::string words = repeated("1 2 3 4 5 6 7 8 9 0 ", 1500000), letters(30000000, 'x');
    EXPECT_EQ(outcome("comment.obj", "# " + words + '\n' + modelBytes("obj")), "read");
    EXPECT_NE(outcome("vertex.obj", "v " + words + '\n' + modelBytes("obj")), "hung");
    EXPECT_EQ(outcome("a.stl", replaced(modelBytes("stl"), "vertex 0", "vertex " + letters)), "refused");
    EXPECT_EQ(outcome("buffer.gltf", gltfText(R"([{"mesh": 0}])", letters)), "refused");
    EXPECT_NE(outcome("face.obj", modelBytes("obj") + "f " + words + '\n'), "hung");
    EXPECT_NE(outcome("a.off", replaced(modelBytes("off"), "3 0 1 5", words)), "hung");
    EXPECT_NE(outcome("a.ply", replaced(modelBytes("ply"), "3 0 1 5", letters)), "hung");
}

TEST_F(HostileModel, Lines_thatEndInCrLf_areRead) {
    for (const std::string format : {"obj", "stl", "ply", "off", "gltf", "dae"}) {
        const auto path = write("a." + format, withCrlf(modelBytes(format)));
        const Model model = readModel(path);
        expectSound(model);
        EXPECT_EQ(trianglesOf(model), format == "dae" ? 12U : 32U) << format;
    }
}

TEST_F(HostileModel, Coordinates_thatAreNotFinite_leaveTheirTrianglesOut) {
    const auto triangles = [this](const std::string& format, const std::string& from, const std::string& to) {
        const Model model = readModel(write("a." + format, replaced(modelBytes(format), from, to)));
        expectSound(model);
        return trianglesOf(model);
    };
    for (const std::string number : {"nan", "inf", "-inf", "1e39", "-1e39", "1e400", "3.4e38"}) {
        SCOPED_TRACE(number);
        const bool isFinite = number == "3.4e38";
        const std::size_t left = isFinite ? 32 : 29; // the vertex has three triangles, in STL files one
        EXPECT_EQ(triangles("obj", "v 1 0 0", "v " + number + " 0 0"), left);
        EXPECT_EQ(triangles("ply", "1 0 0", number + " 0 0"), left);
        EXPECT_EQ(triangles("off", "1 0 0", number + " 0 0"), left);
        EXPECT_EQ(triangles("stl", "vertex 1 0 0", "vertex " + number + " 0 0"), isFinite ? 32U : 31U);
        const std::string scale = R"("mesh": 0, "scale": [)" + number + ", 1, 1]";
        EXPECT_EQ(outcome("a.gltf", replaced(modelBytes("gltf"), R"("mesh": 0)", scale)),
                  isFinite ? "read" : "refused");
    }
}

TEST_F(HostileModel, Colours_thatAreNotFinite_areNotInTheModel) {
    const std::string vertices =
        "v 0 0 0 nan 1 1\nv 1 0 0 1 1e39 1\nv 0 1 0 1 1 1\nv 1 1 0 1 1 1\nv 2 2 0 1 1 1\n";
    const Model model = readModel(write("a.obj", vertices + "f 1 2 3\nf 3 4 5\n"));
    expectSound(model);
    EXPECT_EQ(trianglesOf(model), 1U);
    EXPECT_EQ(model.droppedVertices, 2U);
    write("a.mtl", "newmtl m\nKd nan 1e39 0\n");
    const Model material = readModel(write("b.obj", "mtllib a.mtl\nusemtl m\n" + modelBytes("obj")));
    expectSound(material);
    EXPECT_EQ(material.meshes.at(0).materialColour, glm::vec4(1));
}

TEST_F(HostileModel, Importer_thatDies_printsNothing) {
    const auto path = write("a.ply", replaced(modelBytes("ply"), "3 0 1 5", std::string(100000, 'x')));
    testing::internal::CaptureStderr();
    const std::string came = outcomeOfModel(path, Limits);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(came, "crashed");
}

TEST_F(HostileModel, Gltf_withoutItsBuffer_isRefused) {
    const auto path = write("a.gltf", gltfText(R"([{"mesh": 0}])", "missing.bin"));
    EXPECT_EQ(outcomeOfModel(path, Limits), "refused");
    write("missing.bin", std::string(491, 'x'));
    EXPECT_EQ(outcomeOfModel(path, Limits), "refused") << "a byte too short";
    write("missing.bin", std::string(492, '\0'));
    EXPECT_EQ(outcomeOfModel(path, Limits), "read");
}

TEST_F(HostileModel, Gltf_thatNestsDeeply_ends) {
    std::string chain = "[";
    for (int i = 1; i < 100000; ++i) chain += R"({"children": [)" + std::to_string(i) + "]},";
    const std::string nodes = chain + R"({"mesh": 0}])";
    const std::string good = modelBytes("gltf");
    const std::vector<std::string> outcomes{
        outcome("nodes.gltf", replaced(good, R"([{"mesh": 0}])", nodes)),
        outcome("circle.gltf", replaced(good, R"([{"mesh": 0}])", R"([{"mesh": 0, "children": [0]}])")),
        outcome("lists.gltf", replaced(good, R"({"asset")",
                                       R"({"extras": )" + std::string(1000000, '[') +
                                           std::string(1000000, ']') + R"(, "asset")")),
        outcome("open.gltf", std::string(1000000, '{'))};
    for (const auto& each : outcomes) EXPECT_NE(each, "hung");
    EXPECT_EQ(outcomes[1], "refused");
    EXPECT_EQ(outcomes[3], "refused");
}
