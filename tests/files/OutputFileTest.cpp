// SPDX-License-Identifier: Apache-2.0
#include "FilesTest.h"

#include "workbench/files/OutputFile.h"

#include <csignal>
#include <optional>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace workbench;

namespace {

class OutputFileTest : public FilesTest {
protected:
    [[nodiscard]] std::string at(const std::string& name) const { return (folder / name).string(); }
};

/// Lets no file of this process grow beyond `bytes` while it lives: a disk that is full.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : oldHandler(::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &old);
        const struct rlimit small { bytes, old.rlim_max };
        ::setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &old);
        ::signal(SIGXFSZ, oldHandler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    struct rlimit old {};
    void (*oldHandler)(int);
};

/// Whom the host takes itself for; the system's own answer when it is unset.
std::optional<uid_t> pretendedUser;

struct stat statusOf(const std::filesystem::path& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status;
}

} // namespace

/// Takes the C library's place in all libraries of this test.
extern "C" [[gnu::visibility("default")]] uid_t geteuid() noexcept {
    return pretendedUser ? *pretendedUser : static_cast<uid_t>(::syscall(SYS_geteuid));
}

TEST_F(OutputFileTest, OutputFile_finished_holdsWhatWasWritten) {
    OutputFile file(folder / "a.txt");
    file.write("one ");
    file.write("two");
    EXPECT_FALSE(std::filesystem::exists(folder / "a.txt"));
    file.finish();
    EXPECT_EQ(read(folder / "a.txt"), "one two");
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(OutputFileTest, OutputFile_largerThanItsBuffer_isWrittenWhole) {
    std::string text;
    for (int i = 0; i < 400000; ++i) text += std::to_string(i);
    OutputFile file(folder / "a");
    file.write("head");
    file.write(text);
    file.finish();
    EXPECT_EQ(read(folder / "a"), "head" + text);
}

TEST_F(OutputFileTest, OutputFile_seek_replacesBytesInTheMiddle) {
    OutputFile file(folder / "a");
    file.write("0123456789");
    file.seek(3);
    file.write("xyz");
    EXPECT_EQ(file.position(), 6U);
    file.seek(10);
    file.write("!");
    file.finish();
    EXPECT_EQ(read(folder / "a"), "012xyz6789!");
}

TEST_F(OutputFileTest, OutputFile_destroyedUnfinished_leavesTheOldFileAndNothingElse) {
    write("a", "old");
    {
        OutputFile file(folder / "a");
        file.write("new");
        EXPECT_EQ(file.temporary().filename(), ".a.tmp." + std::to_string(::getpid()));
        EXPECT_EQ(filesInFolder(), 2);
    }
    EXPECT_EQ(read(folder / "a"), "old");
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(OutputFileTest, OutputFile_fullDisk_failsAndLeavesTheOldFile) {
    write("a", "old");
    const FullDisk disk(4096);
    const std::string text = sentenceOf(Fault::Output, [&] {
        OutputFile file(folder / "a");
        file.write(std::string(5000, 'x'));
        file.finish();
    });
    expectHas(
        text,
        "a: cannot be written completely — expected room for at least 5000 bytes, got File too large. Make "
        "room on the disk");
    EXPECT_EQ(read(folder / "a"), "old");
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(OutputFileTest, OutputFile_writeAfterAFailedOne_failsAlike) {
    const FullDisk disk(4096);
    OutputFile file(folder / "a");
    EXPECT_THROW(file.write(std::string(3 << 20, 'x')), Failure);
    EXPECT_TRUE(file.failed());
    EXPECT_THROW(file.write("y"), Failure);
    EXPECT_THROW(file.finish(), Failure);
    EXPECT_EQ(filesInFolder(), 0);
}

TEST_F(OutputFileTest, OutputFile_device_isRefused) {
    const std::string text = sentenceOf(Fault::Output, [] { OutputFile file("/dev/full"); });
    EXPECT_EQ(
        text,
        "/dev/full: cannot be written — expected the name of a regular file, got a device, pipe or socket.");
}

TEST_F(OutputFileTest, OutputFile_folderAsTarget_isRefused) {
    EXPECT_EQ(sentenceOf(Fault::Output, [&] { OutputFile file{folder}; }),
              folder.string() + ": cannot be written — expected the name of a file, got a folder.");
    EXPECT_EQ(filesInFolder(), 0);
}

TEST_F(OutputFileTest, OutputFile_missingFolder_isRefused) {
    const auto missing = folder / "no" / "a.txt";
    EXPECT_EQ(sentenceOf(Fault::Output, [&] { OutputFile file{missing}; }),
              missing.string() + ": cannot be written, because the folder " + missing.parent_path().string() +
                  " does not exist. Create it first, or correct the path.");
}

TEST_F(OutputFileTest, OutputFile_fileInPlaceOfAFolder_isRefused) {
    write("a", "");
    expectHas(sentenceOf(Fault::Output, [&] { OutputFile file{folder / "a" / "b"}; }), "cannot be written");
}

TEST_F(OutputFileTest, OutputFile_noClobber_refusesAnExistingTarget) {
    write("a", "old");
    expectHas(sentenceOf(Fault::Output, [&] { OutputFile file(folder / "a", true); }),
              "exists already and is not replaced");
    EXPECT_EQ(read(folder / "a"), "old");
}

TEST_F(OutputFileTest, OutputFile_noClobber_refusesATargetThatAppearsMeanwhile) {
    OutputFile file(folder / "a", true);
    file.write("new");
    write("a", "other");
    EXPECT_EQ(sentenceOf(Fault::Output, [&] { file.finish(); }),
              at("a") + ": has appeared meanwhile and is not replaced; the finished file is kept as " +
                  at("a.new") + " — got File exists.");
    EXPECT_EQ(read(folder / "a"), "other");
    EXPECT_EQ(read(folder / "a.new"), "new");
    EXPECT_EQ(filesInFolder(), 2);
}

TEST_F(OutputFileTest, OutputFile_thatCannotTakeItsPlace_isKeptUnderAFreeName) {
    write("a.new.txt", "kept before");
    OutputFile file(folder / "a.txt");
    file.write("new");
    std::filesystem::create_directory(folder / "a.txt");
    expectHas(sentenceOf(Fault::Output, [&] { file.finish(); }),
              "a.txt: cannot be replaced; the finished file is kept as " + at("a.new2.txt") + " — got ");
    EXPECT_EQ(read(folder / "a.new.txt"), "kept before");
    EXPECT_EQ(read(folder / "a.new2.txt"), "new");
    EXPECT_EQ(filesInFolder(), 3);
    OutputFile again(folder / "a.new2.txt");
    EXPECT_EQ(read(folder / "a.new2.txt"), "new");
}

TEST_F(OutputFileTest, OutputFile_ofAnotherInAStickyFolder_isRefusedBeforeTheWork) {
    ::chmod(folder.c_str(), 01777);
    write("a", "old");
    pretendedUser = statusOf(folder / "a").st_uid + 1000;
    const std::string said = sentenceOf(Fault::Output, [&] { OutputFile file(folder / "a"); });
    const OutputFile fresh(folder / "b");
    pretendedUser.reset();
    EXPECT_EQ(said, at("a") + ": cannot be replaced, because only its owner may do that in the folder " +
                        folder.string() +
                        " — got Operation not permitted. Choose a place where you may write.");
    EXPECT_EQ(filesInFolder(), 2);
    ::chmod(folder.c_str(), 0755);
    const OutputFile here(folder / "a");
}

TEST_F(OutputFileTest, OutputFile_replacedFile_keepsItsMode) {
    ::chmod(write("a", "old").c_str(), 0640);
    OutputFile file(folder / "a");
    file.finish();
    struct stat status {};
    ::stat((folder / "a").c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST_F(OutputFileTest, OutputFile_replacedFile_doesNotPassOnItsMarks) {
    write("a", "old");
    ASSERT_EQ(::chmod((folder / "a").c_str(), 06755), 0);
    OutputFile file(folder / "a");
    file.finish();
    EXPECT_EQ(statusOf(folder / "a").st_mode & 07777U, 0755U);
}

// The superuser may give files to anybody, others to the groups that they belong to.
TEST_F(OutputFileTest, OutputFile_replacedFile_keepsItsGroupAndOwnerWhereItMay) {
    write("a", "old");
    gid_t groups[64];
    const int count = ::getgroups(64, groups);
    const gid_t other = ::geteuid() == 0 ? 12345 : count > 0 ? groups[count - 1] : ::getegid();
    const uid_t owner = ::geteuid() == 0 ? 54321 : ::geteuid();
    ASSERT_EQ(::chown((folder / "a").c_str(), owner, other), 0);
    ::chmod((folder / "a").c_str(), 0664);
    OutputFile file(folder / "a");
    file.finish();
    EXPECT_EQ(statusOf(folder / "a").st_gid, other);
    EXPECT_EQ(statusOf(folder / "a").st_uid, owner);
    EXPECT_EQ(statusOf(folder / "a").st_mode & 07777U, 0664U);
}

TEST_F(OutputFileTest, OutputFile_linkToAFileThatDoesNotExistYet_isFollowed) {
    std::filesystem::create_directory(folder / "real");
    std::filesystem::create_symlink("real/new.exr", folder / "first");
    std::filesystem::create_symlink(folder / "first", folder / "link.exr");
    OutputFile file(folder / "link.exr");
    file.write("new");
    file.finish();
    EXPECT_EQ(read(folder / "real" / "new.exr"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.exr"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "first"));
}

TEST_F(OutputFileTest, OutputFile_linksInACircle_areRefusedBeforeTheWork) {
    std::filesystem::create_symlink("two", folder / "one");
    std::filesystem::create_symlink("one", folder / "two");
    EXPECT_EQ(sentenceOf(Fault::Output, [&] { OutputFile file(folder / "one"); }),
              at("one") + ": cannot be written, because its links lead in a circle.");
    EXPECT_EQ(filesInFolder(), 2);
}

TEST_F(OutputFileTest, OutputFile_linkIntoAMissingFolder_isRefusedBeforeTheWork) {
    std::filesystem::create_symlink("none/new.exr", folder / "link.exr");
    EXPECT_EQ(sentenceOf(Fault::Output, [&] { OutputFile file(folder / "link.exr"); }),
              at("link.exr") + ": cannot be written, because the folder " + at("none") +
                  " does not exist. Create it first, or correct the path.");
}

TEST_F(OutputFileTest, OutputFile_symbolicLink_isFollowed) {
    write("a", "old");
    std::filesystem::create_symlink("a", folder / "link");
    OutputFile file(folder / "link");
    file.write("new");
    file.finish();
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
    EXPECT_EQ(read(folder / "a"), "new");
}

TEST_F(OutputFileTest, OutputFile_sameTargetTwice_isRefused) {
    const OutputFile first(folder / "a");
    expectHas(sentenceOf(Fault::Output, [&] { OutputFile second(folder / "a"); }), "already being written");
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(OutputFileTest, OutputFile_remainderOfTheSameProcessNumber_isReplaced) {
    write(".a.tmp." + std::to_string(::getpid()), "left behind");
    OutputFile file(folder / "a");
    file.write("new");
    file.finish();
    EXPECT_EQ(read(folder / "a"), "new");
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(OutputFileTest, OutputFile_oldRemainderOfADeadProcess_isRemoved) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(0);
    ::waitpid(child, nullptr, 0);
    const auto dead = write(".a.tmp." + std::to_string(child), "left behind");
    const auto fresh = write(".a.tmp." + std::to_string(child) + "x", "of somebody else");
    std::filesystem::last_write_time(dead,
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(2));
    const OutputFile file(folder / "a");
    EXPECT_FALSE(std::filesystem::exists(dead));
    EXPECT_TRUE(std::filesystem::exists(fresh));
}

TEST_F(OutputFileTest, OutputFile_remainderOfAProcessThatWasJustKilled_isRemovedAtOnce) {
    const pid_t child = ::fork();
    if (child == 0) {
        OutputFile file(folder / "a");
        file.write(std::string(3 << 20, 'x'));
        ::raise(SIGKILL);
    }
    ::waitpid(child, nullptr, 0);
    EXPECT_TRUE(std::filesystem::exists(folder / (".a.tmp." + std::to_string(child))));
    const OutputFile file(folder / "a");
    EXPECT_FALSE(std::filesystem::exists(folder / (".a.tmp." + std::to_string(child))));
}

/// As it looks from another container, where its process has another number.
TEST_F(OutputFileTest, OutputFile_temporaryOfAProcessThatCannotBeSeen_isLeftAloneWhileItIsLocked) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(0);
    ::waitpid(child, nullptr, 0);
    const auto foreign = write(".a.tmp." + std::to_string(child), "in work");
    std::filesystem::last_write_time(foreign,
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(2));
    const int holder = ::open(foreign.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(holder, LOCK_EX), 0);
    { const OutputFile file(folder / "a"); }
    EXPECT_TRUE(std::filesystem::exists(foreign));
    ::close(holder);
    { const OutputFile file(folder / "a"); }
    EXPECT_FALSE(std::filesystem::exists(foreign));
}

TEST_F(OutputFileTest, OutputFile_temporaryOfTheSameNameInWorkElsewhere_isRefused) {
    const auto foreign = write(".a.tmp." + std::to_string(::getpid()), "in work");
    const int holder = ::open(foreign.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(holder, LOCK_EX), 0);
    expectHas(sentenceOf(Fault::Output, [&] { OutputFile second(folder / "a"); }),
              "is already being written by another program");
    ::close(holder);
    EXPECT_EQ(read(foreign), "in work");
}

TEST_F(OutputFileTest, OutputFile_veryLongName_isWritten) {
    const std::string name(250, 'n');
    OutputFile file(folder / name);
    file.write("x");
    file.finish();
    EXPECT_EQ(read(folder / name), "x");
}

TEST_F(OutputFileTest, OutputFile_relativeName_survivesAChangeOfFolder) {
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder);
    OutputFile file("a");
    std::filesystem::current_path(before);
    file.write("x");
    file.finish();
    EXPECT_EQ(read(folder / "a"), "x");
}

TEST_F(OutputFileTest, RemoveTemporaries_inASignalHandler_leavesNothing) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::signal(SIGTERM, [](int) {
            removeTemporaries();
            ::_exit(7);
        });
        OutputFile one(folder / "one");
        OutputFile two(folder / "two");
        ::raise(SIGTERM);
        ::_exit(1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 7);
    EXPECT_EQ(filesInFolder(), 0);
}
