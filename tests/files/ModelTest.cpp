// SPDX-License-Identifier: Apache-2.0
#include "ModelOutcome.h"

#include <algorithm>
#include <array>
#include <cmath>

using namespace workbench;

namespace {

class ModelTest : public FilesTest {
protected:
    static std::filesystem::path sample(const std::string& name) {
        return packaged("/usr/share/assimp/models/" + name, "assimp-testmodels");
    }
};

} // namespace

TEST_F(ModelTest, Model_filesOfManyFormats_areSound) {
    for (const std::string name :
         {"PLY/Wuson.ply", "PLY/cube_binary.ply", "OBJ/spider.obj", "STL/Spider_binary.stl",
          "STL/Spider_ascii.stl", "3DS/fels.3ds", "Collada/duck.dae", "OFF/Cube.off",
          "glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb",
          "glTF2/BoxTextured-glTF/BoxTextured.gltf"}) {
        SCOPED_TRACE(name);
        const Model model = readModel(sample(name));
        expectSound(model);
        EXPECT_EQ(model.droppedVertices, 0U);
    }
}

TEST_F(ModelTest, Model_knownFiles_haveTheirTriangles) {
    EXPECT_EQ(trianglesOf(readModel(sample("Collada/duck.dae"))), 4212U);
    EXPECT_EQ(readModel(sample("OBJ/spider.obj")).meshes.size(), 19U);
    EXPECT_EQ(trianglesOf(readModel(sample("OFF/Cube.off"))), 12U);
}

TEST_F(ModelTest, Model_vertexColours_areRead) {
    const Model model = readModel(sample("OBJ/cube_with_vertexcolors.obj"));
    ASSERT_EQ(model.meshes.size(), 1U);
    EXPECT_FALSE(model.meshes[0].colours.empty());
    EXPECT_EQ(model.meshes[0].materialColour, glm::vec4(1.0F));
}

TEST_F(ModelTest, Model_materialColour_isTheDiffuseOne) {
    write("a.mtl", "newmtl red\nKd 0.75 0.25 0.125\n");
    const auto path = write("a.obj", "mtllib a.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl red\nf 1 2 3\n");
    const Model model = readModel(path);
    ASSERT_EQ(model.meshes.size(), 1U);
    EXPECT_EQ(model.meshes[0].materialColour, glm::vec4(0.75F, 0.25F, 0.125F, 1));
}

TEST_F(ModelTest, Model_withoutNormals_getsSmoothOnes) {
    const auto path = write("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\nf 1 2 3\nf 2 4 3\n");
    const Model model = readModel(path);
    ASSERT_EQ(model.meshes.size(), 1U);
    ASSERT_EQ(model.meshes[0].positions.size(), 4U);
    for (const auto& normal : model.meshes[0].normals) EXPECT_EQ(normal, glm::vec3(0, 0, 1));
}

TEST_F(ModelTest, Model_nodeTransforms_areApplied) {
    const auto path = write("a.gltf", R"({"asset": {"version": "2.0"}, "scene": 0,
        "scenes": [{"nodes": [0]}],
        "nodes": [{"translation": [10, 0, 0], "children": [1]}, {"scale": [2, 2, 2], "mesh": 0}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0}}]}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3",
                       "min": [0, 0, 0], "max": [1, 1, 0]}],
        "bufferViews": [{"buffer": 0, "byteLength": 36}],
        "buffers": [{"byteLength": 36,
            "uri": "data:application/octet-stream;base64,AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA"}]})");
    const Model model = readModel(path);
    ASSERT_EQ(model.meshes.size(), 1U);
    float largest = 0;
    for (const auto& position : model.meshes[0].positions) largest = std::max(largest, position.x);
    EXPECT_FLOAT_EQ(largest, 12);
}

TEST_F(ModelTest, Model_verticesThatAreNotFinite_areDroppedWithTheirTriangles) {
    std::string ply =
        "ply\nformat binary_little_endian 1.0\nelement vertex 4\nproperty float x\nproperty float y\n"
        "property float z\nelement face 2\nproperty list uchar int vertex_indices\nend_header\n";
    const auto add = [&](auto value) { ply.append(reinterpret_cast<const char*>(&value), sizeof value); };
    const float nan = std::nanf("");
    for (const float value : {0.0F, 0.0F, 0.0F, 1.0F, 0.0F, 0.0F, 0.0F, 1.0F, 0.0F, nan, 1.0F, 0.0F})
        add(value);
    for (const auto& face : {std::array{0, 1, 2}, std::array{1, 3, 2}}) {
        add(std::uint8_t{3});
        for (const int corner : face) add(corner);
    }
    const auto path = write("a.ply", ply);
    const Model model = readModel(path);
    expectSound(model);
    EXPECT_EQ(model.droppedVertices, 1U);
    EXPECT_EQ(trianglesOf(model), 1U);
}

TEST_F(ModelTest, Model_whoseVerticesAreAllInfinite_isRefused) {
    const auto path = sample("glTF2/BoxWithInfinites-glTF-Binary/BoxWithInfinites.glb");
    EXPECT_EQ(sentenceOf(Fault::Input, [&] { return readModel(path); }),
              path.string() + ": holds no triangles — expected a model with faces, got only faces with "
                              "vertices that are not finite.");
}

TEST_F(ModelTest, Model_withoutTriangles_isRefused) {
    const auto path = write("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\np 1 2 3\n");
    EXPECT_EQ(
        sentenceOf(Fault::Input, [&] { return readModel(path); }),
        path.string() +
            ": holds no triangles — expected a model with faces. Save points as a PLY, XYZ or CSV file.");
}

TEST_F(ModelTest, Model_notAModel_isRefused) {
    const auto path = write("a.3ds", "This is a text.");
    expectHas(sentenceOf(Fault::Input, [&] { return readModel(path); }),
              "a.3ds: cannot be read as a model — got ");
}

TEST_F(ModelTest, Model_thatMakesTheImporterHang_endsAtTheLimit) {
    const auto path = sample("invalid/OutOfMemory.off");
    const ModelLimits limits{std::chrono::milliseconds(1500), std::uint64_t{64} << 30};
    expectHas(sentenceOf(Fault::Input, [&] { return readModel(path, limits); }),
              "OutOfMemory.off: cannot be read as a model — got no end after 1500 ms. The file is probably "
              "damaged.");
}

TEST_F(ModelTest, Model_thatNeedsTooMuchMemory_endsAtTheLimit) {
    const ModelLimits limits{std::chrono::milliseconds(20000), std::uint64_t{1} << 20};
    const auto path = sample("Collada/duck.dae");
    const std::string text = sentenceOf(Fault::Input, [&] { return readModel(path, limits); });
    expectHas(text, "duck.dae: cannot be read as a model — got ");
#if !defined(__SANITIZE_ADDRESS__) // which ends the importing process by itself when there is no memory
    expectHas(text, "got more than 1 MiB of memory needed");
#endif
}

TEST_F(ModelTest, Model_invalidFiles_areReadOrRefusedAndNeverCrashThisProcess) {
    const std::filesystem::path all = packaged("/usr/share/assimp/models/invalid", "assimp-testmodels");
    for (const auto& entry : std::filesystem::directory_iterator(all)) {
        if (!entry.is_regular_file()) continue;
        try {
            expectSound(readModel(entry.path(), {std::chrono::milliseconds(1500)}));
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.fault(), Fault::Input) << failure.what();
        }
    }
}
