// SPDX-License-Identifier: Apache-2.0
// The texts of Hollywood/TileProgram.
#include "TileText.h"

namespace {

class TextOfTileProgram : public text::TileText {
protected:
    TextOfTileProgram() : TileText("TileProgram") {}

    /// A text of this length with every byte but NUL, which no text form has.
    static std::string longText(std::size_t length) {
        std::string bytes;
        for (std::size_t i = 0; i < length; ++i) bytes += static_cast<char>(1 + (i * 31 + i / 255) % 255);
        return bytes;
    }
};

TEST_F(TextOfTileProgram, TileProgram_U1_pi_isCutToSixDecimals) {
    text::expectHas(updated(), "\tgl_FragColor = pow(atan(Color)*2.0/3.141592,0.5);\n");
}

TEST_F(TextOfTileProgram, TileProgram_U2_newProcessor_hasTheDefaultProgramInsteadOfThePassThrough) {
    EXPECT_TRUE(matches("beforeUpdate.frag", code()));
    EXPECT_NE(code(), text::PassThrough);
    EXPECT_EQ(code().size(), 147U);
}

TEST_F(TextOfTileProgram, TileProgram_defaults_areTheSameProgram) {
    const std::string before = code();
    EXPECT_TRUE(matches("defaults.frag", updated()));
    EXPECT_EQ(code(), before);
    EXPECT_EQ(support::parameterOf(*module, "code").value().text(), before);
}

TEST_F(TextOfTileProgram, TileProgram_unreadableCode_isTheDefaultProgram) {
    support::setParameter(*module, "code", "void main() {}");
    EXPECT_EQ(updated(), "void main() {}");
    EXPECT_TRUE(matches("defaults.frag", updated(pool.makeUnreadable("code"))));
}

TEST_F(TextOfTileProgram, TileProgram_U3_everyText_isStoredByteForByte) {
    for (const char* typed :
         {"void main() {}", "void main()\r\n{\r\n}\r\n", "\n\n  \t", "// \xC3\xBC \xE2\x82\xAC \xFF\n",
          "\xEF\xBB\xBFvoid main() {}\n", "#version 330\nnonsense", "\"\\n\" \\", " 1.0 "})
        EXPECT_EQ(updated(pool.set("code", typed)), typed);
}

TEST_F(TextOfTileProgram, TileProgram_U3_emptyText_isStoredAsAnEmptyProgram) {
    EXPECT_NE(code(), "");
    EXPECT_EQ(updated(pool.set("code", "")), "");
}

TEST_F(TextOfTileProgram, TileProgram_U3_aMillionBytes_areStored) {
    const std::string typed = longText(1 << 20);
    EXPECT_TRUE(updated(pool.set("code", typed)) == typed);
}

TEST_F(TextOfTileProgram, TileProgram_textOfThePool_winsOverTheParameter) {
    support::setParameter(*module, "code", "own");
    EXPECT_EQ(updated(pool.set("code", "the pool's")), "the pool's");
    EXPECT_EQ(updated(), "own");
}

TEST_F(TextOfTileProgram, TileProgram_twoUpdates_sameBytesInTheSameProcessor) {
    expectEqualUpdates(pool.set("code", "void main() {}\n"));
}

TEST_F(TextOfTileProgram, TileProgram_emptyOutput_updateStillSucceeds) {
    support::setParameter(*module, "code", "void main() {}\n");
    expectSilenceWithoutOutput();
}

} // namespace
