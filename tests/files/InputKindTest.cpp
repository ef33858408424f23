// SPDX-License-Identifier: Apache-2.0
#include "FilesTest.h"

#include "workbench/files/InputKind.h"

#include <sys/stat.h>

using namespace workbench;

namespace {

class InputKindTest : public FilesTest {
protected:
    static std::string ply(int faces) {
        return "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float y\nproperty float "
               "z\n"
               "element face " +
               std::to_string(faces) + "\nproperty list uchar int vertex_indices\nend_header\n0 0 0\n";
    }
};

} // namespace

TEST_F(InputKindTest, InputKind_extension_decides) {
    EXPECT_EQ(classifyInput(write("a.png", "x")), InputKind::Picture);
    EXPECT_EQ(classifyInput(write("a.EXR", "x")), InputKind::Picture);
    EXPECT_EQ(classifyInput(write("a.obj", "x")), InputKind::Model);
    EXPECT_EQ(classifyInput(write("a.glb", "x")), InputKind::Model);
    EXPECT_EQ(classifyInput(write("a.csv", "x")), InputKind::Points);
    EXPECT_EQ(classifyInput(write("a.xyz", "x")), InputKind::Points);
}

TEST_F(InputKindTest, InputKind_ply_dependsOnItsFaces) {
    EXPECT_EQ(classifyInput(write("a.ply", ply(0))), InputKind::Points);
    EXPECT_EQ(classifyInput(write("a.ply", ply(1))), InputKind::Model);
    EXPECT_EQ(classifyInput(packaged("/usr/share/assimp/models/PLY/pond.0.ply", "assimp-testmodels")),
              InputKind::Points);
    EXPECT_EQ(classifyInput(packaged("/usr/share/assimp/models/PLY/Wuson.ply", "assimp-testmodels")),
              InputKind::Model);
}

TEST_F(InputKindTest, InputKind_unknownExtension_isDecidedByContent) {
    EXPECT_EQ(classifyInput(write("a", "\x89PNG\r\n")), InputKind::Picture);
    EXPECT_EQ(classifyInput(write("a.dat", ply(0))), InputKind::Points);
    expectHas(
        sentenceOf(Fault::Input, [&] { return classifyInput(write("a.doc", "text")); }),
        "a.doc: is of no kind that can be read — expected a picture (.exr .png .tif .jpg .hdr …), a model");
}

TEST_F(InputKindTest, InputKind_whatIsNoFile_isRefused) {
    EXPECT_EQ(sentenceOf(Fault::Input, [&] { return classifyInput(folder / "no.exr"); }),
              (folder / "no.exr").string() + ": does not exist. Check the path.");
    EXPECT_EQ(sentenceOf(Fault::Input, [&] { return classifyInput(folder); }),
              folder.string() + ": cannot be read — expected a file, got a folder.");
    const auto pipe = folder / "pipe.exr";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(sentenceOf(Fault::Input, [&] { return classifyInput(pipe); }),
              pipe.string() + ": cannot be read — expected a regular file, got a pipe, device or socket.");
    EXPECT_EQ(sentenceOf(Fault::Input, [&] { return classifyInput(write("a.exr", "")); }),
              (folder / "a.exr").string() + ": cannot be read — got an empty file.");
}

TEST_F(InputKindTest, InputKind_plyThatIsNone_isRefused) {
    expectHas(sentenceOf(Fault::Input, [&] { return classifyInput(write("a.ply", "text")); }),
              "expected ply in the first line of a PLY file");
}
