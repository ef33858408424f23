// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/TileJournal.h"

#include "apps/plime/pictures/FileStamp.h"
#include "tests/files/FilesTest.h"

#include <algorithm>

namespace workbench {
namespace {

namespace fs = std::filesystem;
using Pixels = std::vector<krod::RGBAHalf>;

const Pixels First = {pixel(0.25F, 0.5F, 2), pixel(1, 0, 0, 0)};
const Pixels Second = {pixel(3, 0.5F, 0.125F)};

class TileJournals : public FilesTest {
protected:
    /// Leaves two tiles behind.
    void leaveTiles() const {
        TileJournal journal(output, "job", false);
        journal.keep(0, First);
        journal.keep(7, Second);
    }
    /// Which of the two an other run of the job takes: "first second".
    [[nodiscard]] std::string takenAgain() const {
        TileJournal journal(output, "job", true);
        std::string names;
        if (const auto tile = journal.take(0, First.size())) {
            expectSameBits(*tile, First);
            names += "first ";
        }
        if (const auto tile = journal.take(7, Second.size())) {
            expectSameBits(*tile, Second);
            names += "second";
        }
        EXPECT_FALSE(journal.foundAnotherJob());
        return names;
    }

    fs::path output = folder / "a.exr", parts = folder / "a.exr.parts";
};

TEST_F(TileJournals, tilesOfTheSameJob_areTaken) {
    leaveTiles();
    EXPECT_EQ(takenAgain(), "first second");
    EXPECT_EQ(takenAgain(), "first second") << "taking them must not lose them";
}

TEST_F(TileJournals, journal_hasALinePerTile) {
    leaveTiles();
    const std::string text = read(parts / "journal");
    EXPECT_TRUE(text.starts_with("plime tiles 1 ")) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3);
    expectHas(text, "\n0 16 ");
    expectHas(text, "\n7 8 ");
}

TEST_F(TileJournals, checksum_isFnv1a) {
    TileJournal journal(output, "", false);
    journal.keep(0, {});
    EXPECT_EQ(read(parts / "journal"), "plime tiles 1 cbf29ce484222325\n0 0 cbf29ce484222325\n");
    TileJournal other(folder / "b.exr", "foobar", false);
    other.keep(0, {});
    expectHas(read(folder / "b.exr.parts" / "journal"), "plime tiles 1 85944171f73967e8\n");
}

TEST_F(TileJournals, withoutResume_everythingStartsAnew) {
    leaveTiles();
    TileJournal journal(output, "job", false);
    EXPECT_FALSE(journal.take(0, First.size()));
    EXPECT_FALSE(journal.foundAnotherJob());
    EXPECT_FALSE(journal.holdsTiles());
    journal.keep(7, Second);
    EXPECT_FALSE(fs::exists(parts / "tile-0"));
    EXPECT_TRUE(journal.take(7, Second.size()));
}

TEST_F(TileJournals, runThatKeepsNothing_deletesNothing) {
    leaveTiles();
    { const TileJournal refused(output, "job", false); }
    { const TileJournal other(output, "another job", true); }
    EXPECT_EQ(takenAgain(), "first second");
}

TEST_F(TileJournals, anotherJob_isSaid_andStartsAnew) {
    leaveTiles();
    {
        TileJournal journal(output, "another job", true);
        EXPECT_TRUE(journal.foundAnotherJob());
        EXPECT_FALSE(journal.take(0, First.size()));
        journal.keep(0, Second);
    }
    TileJournal journal(output, "another job", true);
    EXPECT_FALSE(journal.foundAnotherJob());
    EXPECT_TRUE(journal.take(0, Second.size()));
}

TEST_F(TileJournals, damagedTile_isNotTaken) {
    leaveTiles();
    std::string bytes = read(parts / "tile-0");
    bytes[3] = static_cast<char>(bytes[3] ^ 1);
    write("a.exr.parts/tile-0", bytes);
    EXPECT_EQ(takenAgain(), "second");
}

TEST_F(TileJournals, tileOfAnotherSize_isNotTaken) {
    leaveTiles();
    write("a.exr.parts/tile-0", read(parts / "tile-0") + ' ');
    write("a.exr.parts/tile-7", read(parts / "tile-7").substr(1));
    EXPECT_EQ(takenAgain(), "");
    leaveTiles();
    TileJournal journal(output, "job", true);
    EXPECT_FALSE(journal.take(0, First.size() + 1));
    EXPECT_FALSE(journal.take(7, 0));
}

TEST_F(TileJournals, missingTile_isNotTaken) {
    leaveTiles();
    fs::remove(parts / "tile-7");
    EXPECT_EQ(takenAgain(), "first ");
}

TEST_F(TileJournals, journalCutAnywhere_losesOnlyWhatIsCutOff) {
    leaveTiles();
    const std::string text = read(parts / "journal");
    const std::size_t head = text.find('\n') + 1, line = text.find('\n', head) + 1;
    for (std::size_t length = head; length <= text.size(); ++length) {
        leaveTiles();
        write("a.exr.parts/journal", text.substr(0, length));
        const bool first = length + 1 >= line, second = length + 1 >= text.size();
        EXPECT_EQ(takenAgain(), std::string(first ? "first " : "") + (second ? "second" : "")) << length;
    }
}

TEST_F(TileJournals, journalCutInItsHead_isThatOfAnotherJob) {
    leaveTiles();
    write("a.exr.parts/journal", read(parts / "journal").substr(0, 20));
    EXPECT_TRUE(TileJournal(output, "job", true).foundAnotherJob());
}

TEST_F(TileJournals, emptyJournalAlone_isOfARunThatWasKilledAtItsBeginning) {
    fs::create_directory(parts);
    write("a.exr.parts/journal", "");
    TileJournal journal(output, "job", true);
    EXPECT_FALSE(journal.foundAnotherJob());
    EXPECT_FALSE(journal.holdsTiles());
}

TEST_F(TileJournals, afterACutLine_newLinesCount) {
    leaveTiles();
    const std::string text = read(parts / "journal");
    write("a.exr.parts/journal", text.substr(0, text.size() - 5));
    {
        TileJournal journal(output, "job", true);
        journal.keep(7, Second);
    }
    EXPECT_EQ(takenAgain(), "first second");
}

TEST_F(TileJournals, senselessLines_arePassedOver) {
    leaveTiles();
    const std::string text = read(parts / "journal");
    write("a.exr.parts/journal", text + "\n\n7\n7 \n7 8\n7 8 \n7 8 xyz\n-1 8 0000000000000000\n7 8 "
                                        "000000000000000g\n99999999999999999999999 8 0000000000000000\n"
                                        "7 8 00000000000000001\n");
    EXPECT_EQ(takenAgain(), "first second");
    write("a.exr.parts/journal", text + "7 8 0000000000000000\n");
    EXPECT_EQ(takenAgain(), "first ") << "the later line of a tile holds";
}

TEST_F(TileJournals, remove_leavesNothing) {
    leaveTiles();
    TileJournal journal(output, "job", true);
    journal.remove();
    EXPECT_EQ(filesInFolder(), 0);
}

TEST_F(TileJournals, withoutATile_theFolderGoes) {
    { const TileJournal journal(output, "job", false); }
    EXPECT_EQ(filesInFolder(), 0);
}

TEST_F(TileJournals, foreignFolderOrFile_isLeftAlone) {
    fs::create_directory(parts);
    write("a.exr.parts/precious", "text");
    const std::string sentence = parts.string() +
                                 ": is in the way: finished tiles are kept under this name — "
                                 "expected a folder that plime has made, or nothing. Move "
                                 "it away, or choose another name for the picture.";
    const auto begin = [&] { return TileJournal(output, "job", false).holdsTiles(); };
    EXPECT_EQ(sentenceOf(Fault::Output, begin), sentence);
    EXPECT_EQ(read(parts / "precious"), "text");
    for (const std::string diary : {"", "my diary\n", " plime tiles 1 0"}) {
        write("a.exr.parts/journal", diary);
        EXPECT_EQ(sentenceOf(Fault::Output, begin), sentence) << diary;
        EXPECT_EQ(read(parts / "journal"), diary);
    }
    fs::remove_all(parts);
    write("a.exr.parts", "text");
    EXPECT_EQ(sentenceOf(Fault::Output, begin), sentence);
    EXPECT_EQ(read(parts), "text");
    fs::remove(parts);
    fs::create_directory(folder / "elsewhere");
    fs::create_directory_symlink(folder / "elsewhere", parts);
    EXPECT_EQ(sentenceOf(Fault::Output, begin), sentence);
}

TEST_F(TileJournals, folderInUse_isRefused) {
    leaveTiles();
    const TileJournal journal(output, "job", true);
    EXPECT_EQ(sentenceOf(Fault::Output, [&] { return TileJournal(output, "job", true).holdsTiles(); }),
              parts.string() + ": is in use: another plime draws the same picture. Wait for its end, or "
                               "choose another name for the picture.");
    EXPECT_TRUE(fs::exists(parts / "tile-0"));
}

TEST_F(TileJournals, stamp_tellsAChangedFile) {
    const fs::path file = write("a.obj", "one");
    const std::string before = fileStamp(file);
    EXPECT_EQ(fileStamp(file), before);
    write("a.obj", "four");
    EXPECT_NE(fileStamp(file), before);
    fs::remove(file);
    EXPECT_EQ(fileStamp(file), file.string() + '\n');
}

TEST_F(TileJournals, stampsOfShaderFiles_areThoseOfFragFiles) {
    write("b.frag", "b");
    write("a.frag", "a");
    write("c.txt", "c");
    EXPECT_EQ(shaderFileStamps({folder / "none", folder}),
              fileStamp(folder / "a.frag") + fileStamp(folder / "b.frag"));
}

} // namespace
} // namespace workbench
