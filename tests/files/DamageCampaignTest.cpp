// SPDX-License-Identifier: Apache-2.0
// Many damaged pictures of each format: damage in the first 2,048 bytes, where the head lies, and in windows that
// slide over the file. This process reads on, and each of them ends in rows or in one line.
#include "FilesTest.h"

#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfCompression.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfOutputFile.h>
#include <OpenEXR/ImfTileDescription.h>
#include <OpenEXR/ImfTiledOutputFile.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <random>

using namespace workbench;

namespace {

constexpr int Width = 100, Height = 80;

/// What came of the damaged files.
using Outcomes = std::map<std::string, int>;

struct Amount {
    int heads, windows;
};

struct Campaign {
    std::string name;
    Amount amount;
};

constexpr Amount Short{100, 100}, Long{3000, 5000};

std::map<std::string, Imf::Compression> compressions() {
    return {{"none", Imf::NO_COMPRESSION},     {"rle", Imf::RLE_COMPRESSION},
            {"zip", Imf::ZIP_COMPRESSION},     {"piz", Imf::PIZ_COMPRESSION},
            {"pxr24", Imf::PXR24_COMPRESSION}, {"b44", Imf::B44A_COMPRESSION},
            {"dwaa", Imf::DWAA_COMPRESSION},   {"tiled", Imf::ZIP_COMPRESSION}};
}

Picture noisyGradient() {
    Picture picture = gradient(Width, Height);
    std::mt19937 random(5);
    for (auto& pixel : picture.pixels) pixel.b = half_float::half(static_cast<float>(random() % 1000) / 1000);
    return picture;
}

void writeExr(const std::filesystem::path& path, const std::string& kind) {
    Picture picture = noisyGradient();
    Imf::Header header(Width, Height);
    header.compression() = compressions().at(kind);
    Imf::FrameBuffer buffer;
    const auto insert = [&](const char* name, half_float::half krod::RGBAHalf::*member) {
        header.channels().insert(name, Imf::Channel(Imf::HALF));
        buffer.insert(name, Imf::Slice(Imf::HALF, reinterpret_cast<char*>(&(picture.pixels[0].*member)),
                                       sizeof(krod::RGBAHalf), sizeof(krod::RGBAHalf) * Width));
    };
    insert("R", &krod::RGBAHalf::r);
    insert("G", &krod::RGBAHalf::g);
    insert("B", &krod::RGBAHalf::b);
    insert("A", &krod::RGBAHalf::a);
    if (kind == "tiled") {
        header.setTileDescription(Imf::TileDescription(32, 32));
        Imf::TiledOutputFile file(path.c_str(), header);
        file.setFrameBuffer(buffer);
        file.writeTiles(0, file.numXTiles() - 1, 0, file.numYTiles() - 1);
    } else {
        Imf::OutputFile file(path.c_str(), header);
        file.setFrameBuffer(buffer);
        file.writePixels(Height);
    }
}

class DamageCampaign : public FilesTest, public testing::WithParamInterface<Campaign> {
protected:
    [[nodiscard]] static std::string extension() {
        return compressions().contains(GetParam().name) ? "exr" : GetParam().name;
    }

    std::string goodBytes() const {
        const auto path = folder / ("good." + extension());
        if (extension() == "exr")
            writeExr(path, GetParam().name);
        else
            writePicture(path, noisyGradient());
        return read(path);
    }

    /// Changes up to a tenth of the bytes between two places.
    std::string damaged(std::string bytes, std::size_t from, std::size_t to) {
        const std::size_t most = std::max<std::size_t>((to - from) / 10, 1);
        for (std::size_t left = 1 + random() % most; left > 0; --left)
            bytes[from + random() % (to - from)] = static_cast<char>(random());
        return bytes;
    }

    /// Reads a damaged picture, and says what came of it.
    std::string outcome(const std::string& bytes) const {
        const auto path = write("damaged." + extension(), bytes);
        try {
            const auto reader = PictureReader::open(path);
            const PictureDescription& about = reader->description();
            std::vector<krod::RGBAHalf> rows(static_cast<std::size_t>(about.width) * 64);
            ExtraRows extra;
            for (int row = 0; row < about.height; row += 64)
                reader->readRows(row, std::min(64, about.height - row), rows.data(), &extra);
            return "read";
        } catch (const Failure& failure) {
            const std::string line = failure.what();
            EXPECT_EQ(failure.fault(), Fault::Input) << line;
            EXPECT_EQ(line.find('\n'), std::string::npos) << line;
            EXPECT_TRUE(line.starts_with(path.string() + ": ")) << line;
            const std::size_t end = line.find("a reading process that ");
            if (end != std::string::npos) return line.substr(end + 23, line.find('.', end) - end - 23);
            return line.find("no answer of the decoder") != std::string::npos ? "hung" : "refused";
        }
    }

    std::mt19937 random{1};
};

TEST_P(DamageCampaign, Picture_thatIsDamaged_endsInRowsOrInOneLine) {
    const std::string good = goodBytes();
    ASSERT_EQ(outcome(good), "read");
    Outcomes outcomes;
    constexpr std::size_t Magic = 4, Head = 2048;
    for (int i = 0; i < GetParam().amount.heads; ++i)
        ++outcomes[outcome(damaged(good, Magic, std::min(Head, good.size())))];
    const std::size_t window = std::max<std::size_t>(good.size() / 50, 16);
    for (int i = 0; i < GetParam().amount.windows; ++i) {
        const std::size_t from = Magic + (good.size() - window - Magic) * static_cast<std::size_t>(i) /
                                             static_cast<std::size_t>(GetParam().amount.windows);
        ++outcomes[outcome(damaged(good, from, from + window))];
    }
    std::string record = GetParam().name + ':';
    for (const auto& [what, count] : outcomes) record += ' ' + std::to_string(count) + ' ' + what + ',';
    std::printf("%s\n", record.c_str());
    EXPECT_GT(outcomes["refused"], 0) << record;
    EXPECT_EQ(outcome(good), "read") << "after all of them";
}

std::vector<Campaign> campaigns(Amount amount) {
    std::vector<Campaign> all;
    for (const auto& [name, compression] : compressions()) all.push_back({name, amount});
    for (const char* const name : {"png", "jpg", "tif", "hdr"}) all.push_back({name, amount});
    return all;
}

std::string nameOf(const testing::TestParamInfo<Campaign>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Short, DamageCampaign, testing::ValuesIn(campaigns(Short)), nameOf);
INSTANTIATE_TEST_SUITE_P(Deep, DamageCampaign, testing::ValuesIn(campaigns(Long)), nameOf);

} // namespace
