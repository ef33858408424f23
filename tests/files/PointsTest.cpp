// SPDX-License-Identifier: Apache-2.0
#include "FilesTest.h"

#include "workbench/files/Points.h"

#include <clocale>

using namespace workbench;

namespace {

class PointsTest : public FilesTest {
protected:
    std::string refusal(const std::string& name, const std::string& text) {
        return sentenceOf(Fault::Input, [&] { return readPoints(write(name, text)); });
    }
};

} // namespace

TEST_F(PointsTest, Xyz_threeColumns_areWhitePoints) {
    const PointSet points = readPoints(write("a.xyz", "# a comment\n1 2 3\n\n  -4.5\t+5e-1 6\r\n// end\n"));
    ASSERT_EQ(points.positions.size(), 2U);
    EXPECT_EQ(points.positions[0], glm::vec3(1, 2, 3));
    EXPECT_EQ(points.positions[1], glm::vec3(-4.5F, 0.5F, 6));
    EXPECT_EQ(points.colours[1], glm::vec4(1));
}

TEST_F(PointsTest, Xyz_otherCountsOfColumns_haveTheirMeaning) {
    EXPECT_EQ(readPoints(write("a.xyz", "1 2 3 5")).colours[0], glm::vec4(5, 5, 5, 1));
    EXPECT_EQ(readPoints(write("a.xyz", "1 2 3 0.5 20 0")).colours[0], glm::vec4(0.5F, 20, 0, 1));
    EXPECT_EQ(readPoints(write("a.xyz", "1 2 3 1 2 3 0.25")).colours[0], glm::vec4(1, 2, 3, 0.25F));
    EXPECT_EQ(readPoints(write("a.xyz", "1,2,3,1,2,3,0.25,10")).colours[0], glm::vec4(10, 20, 30, 0.25F));
    EXPECT_EQ(refusal("a.xyz", "1 2\n"),
              (folder / "a.xyz").string() +
                  ", line 1, column 4: the points cannot be read — expected 3, 4, 6, 7 or 8 "
                  "columns, or names of the columns in the first line, got 2 columns.");
}

TEST_F(PointsTest, Csv_namedColumns_areFoundInAnyOrder) {
    const PointSet points =
        readPoints(write("a.csv", "Name,\"Z\",y,X,intensity,G\nstar,3,2,1,100,0.5\n,6,5,4,2,1\n"));
    ASSERT_EQ(points.positions.size(), 2U);
    EXPECT_EQ(points.positions[0], glm::vec3(1, 2, 3));
    EXPECT_EQ(points.colours[0], glm::vec4(100, 50, 100, 1));
    EXPECT_EQ(points.colours[1], glm::vec4(2, 2, 2, 1));
}

TEST_F(PointsTest, Csv_semicolons_separateToo) {
    EXPECT_EQ(readPoints(write("a.csv", "x;y;z\n1;2;3\n")).positions[0], glm::vec3(1, 2, 3));
}

TEST_F(PointsTest, Text_badNumber_isNamedWithLineAndColumn) {
    EXPECT_EQ(refusal("a.xyz", "1 2 3\n4 five 6\n"),
              (folder / "a.xyz").string() +
                  ", line 2, column 3: the points cannot be read — expected a number, got \"five\".");
    EXPECT_EQ(refusal("a.csv", "x,y,z\n1,2,3\n1,,3\n"),
              (folder / "a.csv").string() +
                  ", line 3, column 3: the points cannot be read — expected a number, got an empty field.");
    expectHas(refusal("a.xyz", "1 2 3\n4 5\x1b[31m 6\n"),
              "line 2, column 3: the points cannot be read — expected a number, got \"5?[31m\"");
}

TEST_F(PointsTest, Text_wrongCountOfColumns_isNamedWithLineAndColumn) {
    expectHas(refusal("a.xyz", "1 2 3\n4 5\n"),
              "line 2, column 4: the points cannot be read — expected 3 columns, got 2.");
    expectHas(refusal("a.xyz", "1 2 3\n4 5 6 7\n"), "line 2, column 7: the points cannot be read — expected "
                                                    "the end of the line after 3 columns, got \"7\".");
}

TEST_F(PointsTest, Csv_namesWithoutCoordinates_areRefused) {
    expectHas(refusal("a.csv", "x,y,red\n1,2,3\n"), "expected columns named x, y and z");
    expectHas(refusal("a.csv", "x,y,z,X\n1,2,3,4\n"),
              "line 1, column 7: the points cannot be read — expected each column once, got \"X\".");
}

TEST_F(PointsTest, Text_numbersThatAreNotFinite_dropTheirPoint) {
    const PointSet points = readPoints(write("a.xyz", "1 2 3\nnan 2 3\n1 inf 3\n1 2 1e300\n4 5 6\n"));
    EXPECT_EQ(points.positions.size(), 2U);
    EXPECT_EQ(points.colours.size(), 2U);
    EXPECT_EQ(points.droppedPoints, 3U);
}

TEST_F(PointsTest, Text_withoutPoints_isRefused) {
    EXPECT_EQ(refusal("a.xyz", "# nothing\n"),
              (folder / "a.xyz").string() + ": holds no points — expected at least one point.");
    expectHas(refusal("a.xyz", "nan 0 0\n"), "got only points that are not finite");
}

TEST_F(PointsTest, Text_commaLocale_changesNothing) {
    const char* old = std::setlocale(LC_ALL, "de_DE.UTF-8"); // where it is installed
    EXPECT_EQ(readPoints(write("a.xyz", "1.5 2.5 3.5")).positions[0], glm::vec3(1.5F, 2.5F, 3.5F));
    if (old) std::setlocale(LC_ALL, "C");
}
