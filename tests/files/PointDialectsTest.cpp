// SPDX-License-Identifier: Apache-2.0
// Point lists as other programs write them: Python's csv and gzip modules, spreadsheets, scanners.
#include "FilesTest.h"

#include "workbench/files/InputKind.h"
#include "workbench/files/Points.h"

#include <glm/geometric.hpp>

#include <cstdlib>

using namespace workbench;

namespace {

class PointDialects : public FilesTest {
protected:
    /// Runs Python in the folder.
    void python(const std::string& script) const {
        const auto file = write("script.py", script);
        ASSERT_EQ(std::system(("cd " + folder.string() + " && python3 " + file.string()).c_str()), 0);
    }
    PointSet written(const std::string& name, const std::string& text) const {
        return readPoints(write(name, text));
    }
    std::string refusal(const std::string& name, const std::string& text) const {
        return sentenceOf(Fault::Input, [&] { return written(name, text); });
    }
};

using Names = std::vector<std::string>;

/// The place of a point in double precision.
glm::dvec3 placeOf(const PointSet& points, std::size_t i) {
    return points.origin + glm::dvec3(points.positions.at(i));
}

} // namespace

TEST_F(PointDialects, ByteOrderMark_quotesAndLineEnds_ofPythonsCsvWriter_areRead) {
    for (const char* const end : {"\\r\\n", "\\n", "\\r"})
        for (const char* const separator : {",", ";", "\\t"}) {
            SCOPED_TRACE(std::string(separator) + end);
            python("import csv\n"
                   "rows = [['name', 'x', 'y', 'z', 'red', 'green', 'blue'],\n"
                   "        ['Bee, the \"first\"; of\\tall', 1, 2, 3, 0.5, 2, 0], ['', 4, 5, 6, 1, 1, 1]]\n"
                   "with open('a.csv', 'w', encoding='utf-8-sig', newline='') as out:\n"
                   "    csv.writer(out, quoting=csv.QUOTE_ALL, delimiter='" +
                   std::string(separator) + "', lineterminator='" + end + "').writerows(rows)\n");
            const PointSet points = readPoints(folder / "a.csv");
            ASSERT_EQ(points.positions.size(), 2U);
            EXPECT_EQ(points.positions[0], glm::vec3(1, 2, 3));
            EXPECT_EQ(points.positions[1], glm::vec3(4, 5, 6));
            EXPECT_EQ(points.colours[0], glm::vec4(0.5F, 2, 0, 1));
            EXPECT_EQ(points.columns, (Names{"x", "y", "z", "red", "green", "blue"}));
            EXPECT_EQ(points.unusedColumns, Names{"name"});
        }
}

TEST_F(PointDialects, UnnamedColumns_withByteOrderMarkAndQuotes_areRead) {
    EXPECT_EQ(written("a.csv", "\xef\xbb\xbf\"1\",\"2\",\"3\"\n").positions.at(0), glm::vec3(1, 2, 3));
    EXPECT_EQ(written("a.xyz", "\xef\xbb\xbf\"1\" \"2\"  \"3\"\n").positions.at(0), glm::vec3(1, 2, 3));
    EXPECT_EQ(written("a.xyz", "1 2 3\r4 5 6\r").positions.at(1), glm::vec3(4, 5, 6));
}

TEST_F(PointDialects, QuotationMarkWithoutItsPartner_isALetter) {
    EXPECT_EQ(written("a.csv", "name,x,y,z\n\"5 inches,1,2,3\n\"a\" b,4,5,6\n").positions.at(1),
              glm::vec3(4, 5, 6));
    const std::string many = [] {
        std::string text = "x,y,z";
        for (int i = 0; i < 300000; ++i) text += ",\"\"\"a";
        return text;
    }();
    expectHas(refusal("a.csv", many + "\n1,2,3\n"), "expected 300003 columns, got 3"); // and comes to an end
}

TEST_F(PointDialects, Utf16_isNamed) {
    python("open('a.csv', 'w', encoding='utf-16').write('x,y,z\\n1,2,3\\n')");
    EXPECT_EQ(sentenceOf(Fault::Input, [&] { return readPoints(folder / "a.csv"); }),
              (folder / "a.csv").string() +
                  ": the points cannot be read — expected a text in UTF-8, got one in UTF-16. "
                  "Save it as UTF-8, which spreadsheets call \"CSV UTF-8\".");
}

TEST_F(PointDialects, DecimalCommas_areReadBetweenSemicolons) {
    EXPECT_EQ(written("a.csv", "x;y;z\n1,5;-2,25;3\n").positions.at(0), glm::vec3(1.5F, -2.25F, 3));
    EXPECT_EQ(written("a.csv", "1,5;-2,25;3\n").positions.at(0), glm::vec3(1.5F, -2.25F, 3));
    expectHas(refusal("a.csv", "x;y;z\n1,234.5;2;3\n"),
              "line 2, column 1: the points cannot be read — expected a "
              "number, got \"1,234.5\"");
}

TEST_F(PointDialects, Tabs_separateNamesWithBlanksWithin) {
    for (const char* const name : {"a.tsv", "a.txt", "a.dat"}) {
        const PointSet points =
            written(name, "star name\tx\ty\tz\tmag\nBeta Cep\t1\t2\t3\t\n\t4\t5\t6\t2.1\n");
        ASSERT_EQ(points.positions.size(), 2U) << name;
        EXPECT_EQ(points.positions[1], glm::vec3(4, 5, 6));
        EXPECT_EQ(points.unusedColumns, (Names{"star name", "mag"}));
    }
    EXPECT_EQ(written("a.xyz", "1\t\t2\t3\n 4 5\t6\n").positions.at(1), glm::vec3(4, 5, 6)); // as blanks
}

TEST_F(PointDialects, NamesInAComment_count_whereTheyFitTheColumns) {
    EXPECT_EQ(written("a.txt", "//X Y Z Intensity R G B\n1 2 3 10 0.5 0.25 1\n").colours.at(0),
              glm::vec4(5, 2.5F, 10, 1)); // as point cloud programs write
    EXPECT_EQ(written("a.csv", "# z,y,x\n1,2,3\n").positions.at(0), glm::vec3(3, 2, 1)); // numpy.savetxt
    EXPECT_EQ(written("a.xyz", "# x y z of 2024\n1 2 3\n").positions.at(0), glm::vec3(1, 2, 3));
}

TEST_F(PointDialects, ColoursFromZeroTo255_areDividedBy255) {
    for (const char* const text :
         {"1 2 3 255 51 0\n4 5 6 0 0 255\n", "1 2 3 255.0 51.000 0\n4 5 6 0 0 2.55e2\n"}) {
        const PointSet points = written("a.xyz", text);
        EXPECT_EQ(points.colours.at(0), glm::vec4(1, 0.2F, 0, 1));
        EXPECT_EQ(points.colours.at(1), glm::vec4(0, 0, 1, 1));
        EXPECT_TRUE(points.hasEightBitColours);
    }
    EXPECT_EQ(written("b.xyz", "0 0 0 255 0 0 51\n").colours.at(0), glm::vec4(1, 0, 0, 0.2F));
    EXPECT_EQ(written("b.xyz", "0 0 0 255 0 0 1\n").colours.at(0), glm::vec4(1, 0, 0, 1));
    const std::string head = "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float y\n"
                             "property float z\n";
    for (const std::string type : {"float", "int", "uint", "double"}) {
        const std::string colours = "property " + type + " red\nproperty " + type + " green\nproperty " +
                                    type + " blue\nend_header\n";
        EXPECT_EQ(written("a.ply", head + colours + "0 0 0 255 51 0\n").colours.at(0),
                  glm::vec4(1, 0.2F, 0, 1))
            << type;
    }
}

TEST_F(PointDialects, LightThatAddsUp_staysAsItIs) {
    for (const char* const text :
         {"0 0 0 300 0 4\n", "0 0 0 20.5 0 4\n", "0 0 0 2 3 5\n", "0 0 0 -1 0 255\n"}) {
        const PointSet points = written("a.xyz", text);
        EXPECT_FALSE(points.hasEightBitColours) << text;
        EXPECT_EQ(points.colours.at(0).g, std::string(text).find("2 3 5") == std::string::npos ? 0 : 3);
    }
    const std::string ply =
        "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float y\n"
        "property float z\nproperty int red\nproperty int green\nproperty int blue\nend_header\n"
        "0 0 0 2147483647 0 300\n";
    EXPECT_EQ(written("a.ply", ply).colours.at(0).r, 1);
}

TEST_F(PointDialects, PackedFiles_areUnpacked) {
    python("import gzip\n"
           "gzip.open('a.csv.gz', 'wb').write(b'x,y,z\\n1,2,3\\n' * 1 + b'4,5,6\\n' * 300000)\n"
           "ply = b'ply\\nformat ascii 1.0\\nelement vertex 1\\nproperty float x\\nproperty float y\\n'\n"
           "ply += b'property float z\\nend_header\\n1 2 3\\n'\n"
           "gzip.open('a.ply.gz', 'wb').write(ply)\n"
           "faces = ply.replace(b'end_', b'element face 1\\nproperty list uchar int vertex_indices\\nend_')\n"
           "gzip.open('b.ply.gz', 'wb').write(faces)\n"
           "whole = open('a.csv.gz', 'rb').read()\n"
           "open('cut.csv.gz', 'wb').write(whole[:len(whole) // 2])\n");
    for (const char* const name : {"a.csv.gz", "a.ply.gz"}) {
        EXPECT_EQ(classifyInput(folder / name), InputKind::Points) << name;
        EXPECT_EQ(readPoints(folder / name).positions.at(0), glm::vec3(1, 2, 3)) << name;
    }
    EXPECT_EQ(readPoints(folder / "a.csv.gz").positions.size(), 300001U);
    expectHas(sentenceOf(Fault::Input, [&] { return classifyInput(folder / "b.ply.gz"); }),
              "Unpack it with gunzip.");
    expectHas(sentenceOf(Fault::Input, [&] { return readPoints(folder / "cut.csv.gz"); }),
              "cut.csv.gz: cannot be read to its end — got ");
}

TEST_F(PointDialects, PackedFileBeyondTheBudget_isRefusedWithTheSizeToAllow) {
    python("import gzip\ngzip.open('bomb.xyz.gz', 'wb').write(b'1 2 3\\n' * 12000000)"); // 72 MB
    const MemoryBudget budget{.allowed = std::uint64_t{100} << 20, .held = std::uint64_t{32} << 20};
    const std::string text =
        sentenceOf(Fault::Output, [&] { return readPoints(folder / "bomb.xyz.gz", budget); });
    expectHas(text, "bomb.xyz.gz: needs more memory than is allowed — expected at most 100M, got ");
    expectHas(text, ". Allow it with --memory ");
    const auto list = write("a.xyz", std::string(6000000, '\n') + "1 2 3\n"); // may be that many points
    expectHas(sentenceOf(Fault::Output, [&] { return readPoints(list, budget); }),
              "got 336M. Allow it with --memory 336M.");
    EXPECT_EQ(readPoints(list, {.allowed = std::uint64_t{336} << 20, .held = std::uint64_t{32} << 20})
                  .positions.size(),
              1U);
}

TEST_F(PointDialects, PlyWithOldMacintoshLineEnds_isRead) {
    std::string ply = "ply\nformat ascii 1.0\nelement vertex 2\nproperty float x\nproperty float y\n"
                      "property float z\nend_header\n1 2 3\n4 5 6\n";
    std::ranges::replace(ply, '\n', '\r');
    EXPECT_EQ(classifyInput(write("a.ply", ply)), InputKind::Points);
    EXPECT_EQ(written("a.ply", ply).positions.at(1), glm::vec3(4, 5, 6));
}

TEST_F(PointDialects, PointsFarFromZero_keepTheirDistances) {
    python("import struct\n"
           "places = [(500000 + i / 100, 5200000 + i / 50, 200 - i / 1000) for i in range(100)]\n"
           "open('a.csv', 'w').write('x,y,z\\n' + ''.join('%.3f,%.3f,%.3f\\n' % p for p in places))\n"
           "head = 'ply\\nformat binary_little_endian 1.0\\nelement vertex 100\\nproperty double x\\n'\n"
           "head += 'property double y\\nproperty double z\\nend_header\\n'\n"
           "open('a.ply', 'wb').write(head.encode() + b''.join(struct.pack('<3d', *p) for p in places))\n");
    for (const char* const name : {"a.csv", "a.ply"}) {
        const PointSet points = readPoints(folder / name);
        ASSERT_EQ(points.positions.size(), 100U);
        for (int i = 0; i < 100; ++i) {
            const glm::dvec3 expected(500000 + i / 100.0, 5200000 + i / 50.0, 200 - i / 1000.0);
            EXPECT_LT(glm::distance(placeOf(points, static_cast<std::size_t>(i)), expected), 1e-6)
                << name << i;
        }
    }
    EXPECT_EQ(written("near.xyz", "100 200 300\n0 0 0\n").origin, glm::dvec3(0));
}
