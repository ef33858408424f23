// SPDX-License-Identifier: Apache-2.0
// Many damaged point lists of each format. They are read in this process and without a limit of time, so that
// each must end by itself, in finite points or in one line.
#include "Damage.h"
#include "FilesTest.h"

#include "workbench/files/Points.h"

#include <cmath>

using namespace workbench;

namespace {

struct Campaign {
    std::string format;
    DamageAmount amount;
};

constexpr DamageAmount Short{100, 100}, Long{5000, 5000};
constexpr int Points = 60;

std::string textLine(int i, char separator) {
    std::string line = std::to_string(i) + separator + std::to_string(i % 7) + ".5" + separator + "-" +
                       std::to_string(i % 5) + "e-1";
    for (const int colour : {255, i, 0}) line += separator + std::to_string(colour);
    return line + '\n';
}

std::string plyHead(const std::string& format, const std::string& type) {
    std::string head = "ply\nformat " + format + " 1.0\nelement camera 2\nproperty list uchar short views\n" +
                       "element vertex " + std::to_string(Points) + '\n';
    for (const std::string name : {"x", "y", "z"}) head += "property " + type + ' ' + name + '\n';
    for (const std::string name : {"red", "green", "blue"}) head += "property uchar " + name + '\n';
    return head + "end_header\n";
}

std::string plyBinary(bool big) {
    std::string bytes = plyHead(big ? "binary_big_endian" : "binary_little_endian", "float");
    bytes += std::string("\x02\0\x01\0\x02\x01\0\x05", 8); // lists of two and of one
    for (int i = 0; i < Points; ++i) {
        for (const int value : {i, i % 7, i % 5}) {
            const auto number = static_cast<float>(value);
            std::string four(reinterpret_cast<const char*>(&number), sizeof number);
            if (big) std::reverse(four.begin(), four.end());
            bytes += four;
        }
        bytes += "abc";
    }
    return bytes;
}

std::string pointBytes(const std::string& format) {
    if (format == "ply_little") return plyBinary(false);
    if (format == "ply_big") return plyBinary(true);
    std::string text = format == "ply"   ? plyHead("ascii", "double") + "2 7 8\n1 9\n"
                       : format == "csv" ? "x;y;z;Red;Green;Blue\n"
                                         : "";
    for (int i = 0; i < Points; ++i) text += textLine(i, format == "csv" ? ';' : ' ');
    return text;
}

void expectSound(const PointSet& points) {
    ASSERT_FALSE(points.positions.empty());
    ASSERT_EQ(points.colours.size(), points.positions.size());
    for (const auto& p : points.positions)
        ASSERT_TRUE(std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z));
    for (const auto& c : points.colours)
        ASSERT_TRUE(std::isfinite(c.r) && std::isfinite(c.g) && std::isfinite(c.b) && std::isfinite(c.a));
}

class PointsCampaign : public FilesTest, public testing::WithParamInterface<Campaign> {
protected:
    std::string outcome(const std::string& bytes) const {
        const std::string& format = GetParam().format;
        const auto path = write("damaged." + format.substr(0, format.find('_')), bytes);
        try {
            expectSound(readPoints(path));
            return "read";
        } catch (const Failure& failure) {
            const std::string line = failure.what();
            EXPECT_EQ(failure.fault(), Fault::Input) << line;
            EXPECT_TRUE(line.find('\n') == std::string::npos && line.size() < 500) << line;
            EXPECT_TRUE(line.starts_with(path.string())) << line;
            return "refused";
        }
    }
};

TEST_P(PointsCampaign, Points_thatAreDamaged_endInPointsOrInOneLine) {
    const auto& [format, amount] = GetParam();
    const std::string good = pointBytes(format);
    ASSERT_EQ(outcome(good), "read");
    constexpr std::size_t Head = 256;
    Outcomes outcomes =
        outcomesOfDamage(good, Head, amount, [this](const std::string& bytes) { return outcome(bytes); });
    const std::string record = recordOf(format, outcomes);
    EXPECT_GT(outcomes["read"], 0) << record;
    EXPECT_GT(outcomes["refused"], 0) << record;
}

std::vector<Campaign> campaigns(DamageAmount amount) {
    std::vector<Campaign> all;
    for (const char* const format : {"xyz", "csv", "ply", "ply_little", "ply_big"})
        all.push_back({format, amount});
    return all;
}

std::string nameOf(const testing::TestParamInfo<Campaign>& info) { return info.param.format; }

INSTANTIATE_TEST_SUITE_P(Short, PointsCampaign, testing::ValuesIn(campaigns(Short)), nameOf);
INSTANTIATE_TEST_SUITE_P(Deep, PointsCampaign, testing::ValuesIn(campaigns(Long)), nameOf);

} // namespace
