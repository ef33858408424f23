// SPDX-License-Identifier: Apache-2.0
#include "FilesTest.h"

#include "workbench/files/Points.h"

#include <algorithm>
#include <limits>

using namespace workbench;

namespace {

class PlyTest : public FilesTest {
protected:
    static std::string head(const std::string& format, const std::string& count,
                            const std::string& properties) {
        return "ply\nformat " + format + " 1.0\ncomment made by hand\nelement vertex " + count + "\n" +
               properties + "end_header\n";
    }
    std::string refusal(const std::string& text) {
        return sentenceOf(Fault::Input, [&] { return readPoints(write("a.ply", text)); });
    }
    template <typename Value>
    static std::string bytes(Value value, bool big) {
        std::string result(reinterpret_cast<const char*>(&value), sizeof value);
        if (big) std::reverse(result.begin(), result.end());
        return result;
    }
    static constexpr const char* Xyz = "property float x\nproperty float y\nproperty float z\n";
};

} // namespace

TEST_F(PlyTest, Ply_ascii_hasColoursAndIntensity) {
    const auto path =
        write("a.ply", head("ascii", "2",
                            std::string(Xyz) + "property uchar red\nproperty uchar green\n"
                                               "property uchar blue\nproperty float intensity\n") +
                           "1 2 3 255 51 0 10\n4 5 6 0 0 255 0.5\n");
    const PointSet points = readPoints(path);
    ASSERT_EQ(points.positions.size(), 2U);
    EXPECT_EQ(points.positions[1], glm::vec3(4, 5, 6));
    EXPECT_EQ(points.colours[0], glm::vec4(10, 2, 0, 1));
    EXPECT_EQ(points.colours[1], glm::vec4(0, 0, 0.5F, 1));
}

TEST_F(PlyTest, Ply_binary_isReadInBothByteOrders) {
    for (const bool big : {false, true}) {
        const auto path = write(
            "a.ply",
            head(big ? "binary_big_endian" : "binary_little_endian", "1",
                 "property double x\nproperty float y\nproperty short z\nproperty list uchar int ignored\n"
                 "property ushort red\nproperty float green\nproperty float blue\n") +
                bytes(1.5, big) + bytes(2.5F, big) + bytes(std::int16_t{-3}, big) +
                bytes(std::uint8_t{2}, big) + bytes(7, big) + bytes(8, big) +
                bytes(std::uint16_t{65535}, big) + bytes(20.0F, big) + bytes(0.25F, big));
        const PointSet points = readPoints(path);
        ASSERT_EQ(points.positions.size(), 1U);
        EXPECT_EQ(points.positions[0], glm::vec3(1.5F, 2.5F, -3));
        EXPECT_EQ(points.colours[0], glm::vec4(1, 20, 0.25F, 1));
    }
}

TEST_F(PlyTest, Ply_elementsBeforeThePoints_areSkipped) {
    const auto path = write(
        "a.ply", "ply\nformat ascii 1.0\nelement camera 2\nproperty float f\nproperty list uchar int l\n"
                 "element vertex 1\n" +
                     std::string(Xyz) + "end_header\n50 2 8 9\n60 0\n1 2 3\n");
    EXPECT_EQ(readPoints(path).positions[0], glm::vec3(1, 2, 3));
}

TEST_F(PlyTest, Ply_realPoints_areRead) {
    const PointSet points =
        readPoints(packaged("/usr/share/assimp/models/PLY/points.ply", "assimp-testmodels"));
    ASSERT_EQ(points.positions.size(), 4U);
    EXPECT_EQ(points.positions[3], glm::vec3(0, 1, 1));
    EXPECT_EQ(points.colours[1], glm::vec4(1, 0, 1, 1));
}

TEST_F(PlyTest, Ply_realCloudDamagedByATextConversion_isRefused) {
    // Each "\r\n" among this file's binary numbers has lost a byte, so that they are garbage after some 600
    // points.
    const auto pond = packaged("/usr/share/assimp/models/PLY/pond.0.ply", "assimp-testmodels");
    expectHas(sentenceOf(Fault::Input, [&] { return readPoints(pond); }),
              "expected at most 70048, got 70051");
}

TEST_F(PlyTest, Ply_badNumber_isNamedWithLineAndColumn) {
    EXPECT_EQ(refusal(head("ascii", "2", Xyz) + "1 2 3\n4 x5 6\n"),
              (folder / "a.ply").string() +
                  ", line 10, column 3: the points cannot be read — expected a number, got \"x5\".");
}

TEST_F(PlyTest, Ply_tooFewPoints_areNoticed) {
    expectHas(refusal(head("ascii", "2", Xyz) + "1 2 3\n4 5\n"),
              "expected another number, got the end of the file");
    expectHas(refusal(head("binary_little_endian", "2", Xyz) + std::string(20, 'x')),
              "declares more entries of \"vertex\" than it can hold");
}

TEST_F(PlyTest, Ply_hugeCount_isNotBelieved) {
    EXPECT_EQ(refusal(head("binary_little_endian", "1000000000000", Xyz) + std::string(24, 'x')),
              (folder / "a.ply").string() +
                  ": declares more entries of \"vertex\" than it can hold — expected at most 2, got "
                  "1000000000000. The file is damaged or was not written to its end.");
}

TEST_F(PlyTest, Ply_endlessList_endsWithTheFile) {
    expectHas(refusal(head("binary_little_endian", "1", "property list uint uchar l\n" + std::string(Xyz)) +
                      "\xff\xff\xff\xff" + std::string(40, 'x')),
              "the points cannot be read — expected another value, got the end of the file");
}

TEST_F(PlyTest, Ply_pointsThatAreNotFinite_areDropped) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const auto path =
        write("a.ply", head("binary_little_endian", "2", Xyz) + bytes(nan, false) + bytes(0.0F, false) +
                           bytes(0.0F, false) + bytes(1.0F, false) + bytes(2.0F, false) + bytes(3.0F, false));
    const PointSet points = readPoints(path);
    EXPECT_EQ(points.positions.size(), 1U);
    EXPECT_EQ(points.droppedPoints, 1U);
}

TEST_F(PlyTest, Ply_brokenHeads_areRefusedWithTheirLine) {
    expectHas(refusal("ply\nformat ascii 1.0\nelement vertex many\nend_header\n"),
              "line 3, column 16: the points cannot be read — expected a number of entries, got \"many\".");
    expectHas(refusal("ply\nformat ascii 1.0\nelement vertex 1\nproperty long x\nend_header\n"),
              "line 4, column 10: the points cannot be read — expected a type such as float or uchar, got "
              "\"long\".");
    expectHas(refusal("ply\nformat ascii 1.0\nelement vertex 1\n"),
              "expected a head that ends with the line end_header");
    expectHas(refusal("ply\nelement vertex 1\n" + std::string(Xyz) + "end_header\n1 2 3\n"),
              "expected a line \"format\"");
    expectHas(refusal("ply\nformat text 1.0\nend_header\n"),
              "line 2, column 1: this is no PLY file that can be read — expected ascii, binary_little_endian "
              "or binary_big_endian");
    expectHas(refusal(head("ascii", "1", "property float x\nproperty float y\n") + "1 2\n"),
              "expected properties named x, y and z");
}
