// SPDX-License-Identifier: Apache-2.0
// Point lists made to harm: long ones, wide ones, and sizes just within and just beyond what is allowed.
#include "FilesTest.h"

#include "workbench/files/InputKind.h"
#include "workbench/files/Points.h"
#include "workbench/files/points/Ply.h"

using namespace workbench;

namespace {

class HostilePoints : public FilesTest {
protected:
    std::string refusal(const std::string& name, const std::string& text) {
        return sentenceOf(Fault::Input, [&] { return readPoints(write(name, text)); });
    }
};

std::string repeated(const std::string& part, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += part;
    return text;
}

const std::string Xyz = "property float x\nproperty float y\nproperty float z\n";

std::string plyHead(const std::string& format, std::uint64_t count) {
    return "ply\nformat " + format + " 1.0\nelement vertex " + std::to_string(count) + '\n' + Xyz +
           "end_header\n";
}

/// A PLY file whose head has exactly that many bytes.
std::string plyWithHead(std::size_t size) {
    const std::string start = "ply\nformat ascii 1.0\ncomment ",
                      end = "\nelement vertex 1\n" + Xyz + "end_header\n";
    return start + std::string(size - start.size() - end.size(), 'c') + end + "1 2 3\n";
}

} // namespace

/// Work that grew with the square of the lines would not end within the limit that every test has.
TEST_F(HostilePoints, Lines_byTheMillion_areAllRead) {
    constexpr std::size_t Many = 1000000;
    EXPECT_EQ(readPoints(write("a.xyz", repeated("1 2 3\n", Many))).positions.size(), Many);
    EXPECT_EQ(readPoints(write("a.csv", "x,y,z\n" + repeated("1,2,3\n", Many))).positions.size(), Many);
    EXPECT_EQ(readPoints(write("a.ply", plyHead("ascii", Many) + repeated("1 2 3\n", Many))).positions.size(),
              Many);
    EXPECT_EQ(readPoints(write("c.xyz", repeated("#\n\n", Many) + "1 2 3\n")).positions.size(), 1U);
    expectHas(refusal("b.xyz", repeated("1 2 3\n", Many) + "1 2\n"), ", line 1000001, column 4: ");
}

TEST_F(HostilePoints, Line_ofThirtyMegabytes_ends) {
    const std::string words = repeated("1 2 3 ", 5000000), digits(30000000, '7');
    EXPECT_EQ(readPoints(write("a.ply", plyHead("ascii", 5000000) + words)).positions.size(), 5000000U);
    expectHas(refusal("a.xyz", words), "got 15000000 columns.");
    expectHas(refusal("d.xyz", "1 2 " + digits), "line 1, column 5: the points cannot be read");
    expectHas(refusal("a.csv", "x,y," + std::string(30000000, ',')), "expected columns named x, y and z");
    const std::string wide = "x,y,z" + std::string(3000000, ',') + '\n';
    EXPECT_EQ(readPoints(write("d.csv", wide + "1,2,3" + std::string(3000000, ',') + '\n')).positions.size(),
              1U);
}

TEST_F(HostilePoints, Ply_head_mayHaveItsLargestSizeAndNoByteMore) {
    const auto largest = write("a.ply", plyWithHead(LongestPlyHeader));
    EXPECT_EQ(classifyInput(largest), InputKind::Points);
    EXPECT_EQ(readPoints(largest).positions.size(), 1U);
    const auto larger = write("b.ply", plyWithHead(LongestPlyHeader + 1));
    expectHas(sentenceOf(Fault::Input, [&] { return readPoints(larger); }),
              "expected a head that ends with the line end_header");
    expectHas(sentenceOf(Fault::Input, [&] { return classifyInput(larger); }),
              "expected a head that ends with the line end_header");
}

TEST_F(HostilePoints, Ply_count_mayBeWhatTheFileHoldsAndNoMore) {
    const std::string three(36, '\0');
    EXPECT_EQ(readPoints(write("a.ply", plyHead("binary_little_endian", 3) + three)).positions.size(), 3U);
    expectHas(refusal("b.ply", plyHead("binary_little_endian", 4) + three), "expected at most 3, got 4");
    expectHas(refusal("c.ply", plyHead("binary_little_endian", 3) + three.substr(1)),
              "expected at most 2, got 3");
    EXPECT_EQ(readPoints(write("d.ply", plyHead("ascii", 1) + "1 2 3")).positions.size(), 1U);
    expectHas(refusal("e.ply", plyHead("ascii", 2) + "1 2 3"), "declares more entries");
}

TEST_F(HostilePoints, Ply_countsBeyondAllMemory_areRefused) {
    for (const std::string format : {"ascii", "binary_little_endian"})
        for (const std::uint64_t count : {1000000000ULL, 18446744073709551615ULL})
            expectHas(refusal("a.ply", plyHead(format, count) + "1 2 3\n4 5 6\n"), "declares more entries");
    const std::string nothing = "ply\nformat ascii 1.0\nelement nothing 18446744073709551615\n";
    EXPECT_EQ(readPoints(write("b.ply", nothing + "element vertex 1\n" + Xyz + "end_header\n1 2 3\n"))
                  .positions.size(),
              1U);
    expectHas(refusal("c.ply", "ply\nformat ascii 1.0\nelement vertex 18446744073709551616\nend_header\n"),
              "expected a number of entries");
}

TEST_F(HostilePoints, Lists_ofEndlessLength_endWithTheFile) {
    const std::string head =
        "ply\nformat ascii 1.0\nelement l 1\nproperty list float char c\nelement vertex 1\n" + Xyz +
        "end_header\n";
    for (const std::string length : {"inf", "1e300", "1000000000"})
        expectHas(refusal("a.ply", head + length + " 1 2 3\n4 5 6\n"),
                  "expected another number, got the end of the file");
    for (const std::string length : {"nan", "-inf", "-1", "0"})
        EXPECT_EQ(readPoints(write("b.ply", head + length + "\n4 5 6\n")).positions.at(0), glm::vec3(4, 5, 6))
            << length;
}

TEST_F(HostilePoints, Lines_thatEndInCrLf_areRead) {
    EXPECT_EQ(readPoints(write("a.xyz", "1 2 3\r\n4 5 6\r\n")).positions.size(), 2U);
    EXPECT_EQ(readPoints(write("a.csv", "x,y,z\r\n1,2,3\r\n4,5,6\r\n")).positions.at(1), glm::vec3(4, 5, 6));
    const std::string ply =
        "ply\r\nformat ascii 1.0\r\nelement vertex 1\r\nproperty float x\r\nproperty float y\r\n"
        "property float z\r\nend_header\r\n1 2 3\r\n";
    EXPECT_EQ(readPoints(write("a.ply", ply)).positions.at(0), glm::vec3(1, 2, 3));
}

TEST_F(HostilePoints, Fields_inMessages_areCutAfterFortyBytes) {
    expectHas(refusal("a.xyz", "1 2 3\n1 2 " + std::string(40, 'x')),
              "got \"" + std::string(40, 'x') + "\".");
    expectHas(refusal("a.xyz", "1 2 3\n1 2 " + std::string(41, 'x')),
              "got \"" + std::string(40, 'x') + "…\".");
}
