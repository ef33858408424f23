// SPDX-License-Identifier: Apache-2.0
#include "ModelOutcome.h"

#include "workbench/files/InputKind.h"

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

TEST_F(ModelTest, Model_coloursOfMinusOne_areWhite) {
    const Model model =
        readModel(sample("BLEND/BlenderDefault_250.blend")); // the importer gives its vertices -1
    ASSERT_FALSE(model.meshes.at(0).colours.empty());
    for (const glm::vec4& colour : model.meshes[0].colours) ASSERT_EQ(colour, glm::vec4(1));
    EXPECT_GT(model.meshes[0].materialColour.r, 0.5F);
}

TEST_F(ModelTest, Model_textures_areCounted) {
    EXPECT_EQ(readModel(sample("OBJ/spider.obj")).leftOutTextures, 4U);
    EXPECT_EQ(readModel(sample("glTF2/BoxTextured-glTF/BoxTextured.gltf")).leftOutTextures, 1U);
    EXPECT_EQ(readModel(sample("OFF/Cube.off")).leftOutTextures, 0U);
}

TEST_F(ModelTest, Model_extensionsOfTheGuide_areThoseThatTheImporterKnows) {
    const std::string guide = read(std::filesystem::path(GUIDE_FOLDER) / "models.md");
    std::size_t named = 0;
    for (const std::string& extension : modelExtensions())
        named += guide.find("`." + extension + "`") != std::string::npos ? 1 : 0;
    EXPECT_GE(named + 5,
              modelExtensions().size()); // movements have no triangles, and newer versions know more
    for (const std::string name :
         {"ASE/ThreeCubesGreen.ASE", "AMF/test1.amf", "COB/molecule.cob", "LWO/LWO2/boxuv.lwo"}) {
        EXPECT_EQ(classifyInput(sample(name)), InputKind::Model) << name;
        EXPECT_GT(trianglesOf(readModel(sample(name))), 0U) << name;
    }
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
    const ModelLimits limits{std::chrono::milliseconds(1500), {std::uint64_t{64} << 30, 0}};
    expectHas(sentenceOf(Fault::Input, [&] { return readModel(path, limits); }),
              "OutOfMemory.off: cannot be read as a model — got no end after 1.5 s. Large models may "
              "need more time: set KROD_MODEL_SECONDS to 4. A damaged file may never end.");
}

TEST_F(ModelTest, Model_thatNeedsTooMuchMemory_endsAtTheLimit_withTheSizeToAllow) {
#if !defined(__SANITIZE_ADDRESS__) // under which the address space cannot be limited
    const std::uint64_t megabyte = std::uint64_t{1} << 20;
    const ModelLimits limits{std::chrono::milliseconds(20000), {33 * megabyte, 32 * megabyte}};
    const auto path = sample("Collada/duck.dae");
    const std::string text = sentenceOf(Fault::Output, [&] { return readModel(path, limits); });
    expectHas(text, "duck.dae: needs more memory than is allowed — expected at most 33M, got ");
    const std::string option = "Allow it with --memory ";
    ASSERT_NE(text.find(option), std::string::npos) << text;
    const std::uint64_t named = std::stoull(text.substr(text.find(option) + option.size()));
    EXPECT_FALSE(readModel(path, {{}, {named * megabyte, 32 * megabyte}}).meshes.empty())
        << "what is named suffices";
#endif
}

TEST_F(ModelTest, Model_largerThanItsBudget_isRefusedBeforeTheImport) {
    const auto path = sample("Collada/duck.dae");
    const ModelLimits limits{std::chrono::milliseconds(20000), {100000, 0}};
    expectHas(sentenceOf(Fault::Output, [&] { return readModel(path, limits); }),
              "needs more memory than is allowed");
}

TEST_F(ModelTest, Model_ofManyInstances_isCountedWithAllOfThem) {
    const auto script = write("make.py", R"(import base64, json, struct, sys
data = base64.b64encode(b''.join(struct.pack('<3f', i % 7, i % 5, i % 3) for i in range(9999))).decode()
json.dump({'asset': {'version': '2.0'}, 'scene': 0, 'scenes': [{'nodes': list(range(4000))}],
           'nodes': [{'mesh': 0, 'translation': [i, 0, 0]} for i in range(4000)],
           'meshes': [{'primitives': [{'attributes': {'POSITION': 0}}]}],
           'accessors': [{'bufferView': 0, 'componentType': 5126, 'count': 9999, 'type': 'VEC3',
                          'min': [0, 0, 0], 'max': [6, 4, 2]}],
           'bufferViews': [{'buffer': 0, 'byteLength': 119988}],
           'buffers': [{'byteLength': 119988, 'uri': 'data:application/octet-stream;base64,' + data}]},
          open(sys.argv[1], 'w'))
)");
    const auto path = folder / "many.gltf";
    ASSERT_EQ(std::system(("python3 " + script.string() + ' ' + path.string()).c_str()), 0);
    const ModelLimits limits{std::chrono::milliseconds(60000), {std::uint64_t{250} << 20, 0}};
    expectHas(sentenceOf(Fault::Output, [&] { return readModel(path, limits); }),
              "many.gltf: needs more memory than is allowed — expected at most 250M, got ");
}

TEST_F(ModelTest, Model_whoseTimeIsTooShort_namesTheVariable) {
    ASSERT_EQ(::setenv("KROD_MODEL_SECONDS", "0.5", 1), 0);
    expectHas(sentenceOf(
                  Fault::Input,
                  [&] {
                      return readModel(sample("invalid/OutOfMemory.off"), {{}, {std::uint64_t{64} << 30, 0}});
                  }),
              "got no end after 0.5 s. Large models may need more time: set KROD_MODEL_SECONDS to 2.");
    ::unsetenv("KROD_MODEL_SECONDS");
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
