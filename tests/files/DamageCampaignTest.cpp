// SPDX-License-Identifier: Apache-2.0
// Many damaged pictures of each format: damage in the first 2,048 bytes, where the head lies, and in windows that
// slide over the file. This process reads on, and each of them ends in rows or in one line.
#include "Damage.h"
#include "FilesTest.h"

#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfCompression.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfOutputFile.h>
#include <OpenEXR/ImfTileDescription.h>
#include <OpenEXR/ImfTiledOutputFile.h>

using namespace workbench;

namespace {

constexpr int Width = 100, Height = 80;

struct Campaign {
    std::string name;
    DamageAmount amount;
};

constexpr DamageAmount Short{100, 100}, Long{3000, 5000};

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
};

TEST_P(DamageCampaign, Picture_thatIsDamaged_endsInRowsOrInOneLine) {
    const std::string good = goodBytes();
    ASSERT_EQ(outcome(good), "read");
    constexpr std::size_t Head = 2048;
    Outcomes outcomes = outcomesOfDamage(good, Head, GetParam().amount,
                                         [this](const std::string& bytes) { return outcome(bytes); });
    const std::string record = recordOf(GetParam().name, outcomes);
    EXPECT_GT(outcomes["refused"], 0) << record;
    EXPECT_EQ(outcome(good), "read") << "after all of them";
}

std::vector<Campaign> campaigns(DamageAmount amount) {
    std::vector<Campaign> all;
    for (const auto& [name, compression] : compressions()) all.push_back({name, amount});
    for (const char* const name : {"png", "jpg", "tif", "hdr"}) all.push_back({name, amount});
    return all;
}

std::string nameOf(const testing::TestParamInfo<Campaign>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Short, DamageCampaign, testing::ValuesIn(campaigns(Short)), nameOf);
INSTANTIATE_TEST_SUITE_P(Deep, DamageCampaign, testing::ValuesIn(campaigns(Long)), nameOf);

} // namespace
