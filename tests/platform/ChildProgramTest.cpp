// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/ChildProgram.h"
#include "tests/platform/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <memory>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace workbench;
using Way = ChildEnding::Way;

/// What a shell script has said, and how it has ended.
struct Told {
    std::string text;
    ChildEnding ending;
};

constexpr std::size_t Most = 100000;

Told run(const std::string& script, const ChildLimits& limits = {}) {
    Pipe answers;
    ChildProgram child("/bin/sh", {"-c", script}, {-1, answers.write.get()}, limits);
    answers.write.close();
    std::string text = child.read(answers.read.get(), Most).value_or("(too late)");
    return {std::move(text), child.wait()};
}

/// Whether that process goes: it is on its way, and a dead one may stay as a name until somebody asks for it.
bool isGone(pid_t process) {
    for (int i = 0; i < 1000000 && ::kill(process, 0) == 0; ++i) {
        const std::vector<char> stat = contentOf("/proc/" + std::to_string(process) + "/stat");
        if (std::string(stat.begin(), stat.end()).find(") Z ") != std::string::npos) return true;
    }
    return ::kill(process, 0) != 0;
}

TEST(ChildProgram, answerAndExitCode_comeBack) {
    const Told told = run("printf hello; exit 3");
    EXPECT_EQ(told.text, "hello");
    EXPECT_EQ(told.ending.way, Way::Exited);
    EXPECT_EQ(told.ending.number, 3);
    EXPECT_EQ(told.ending.text(), "exited with code 3");
}

TEST(ChildProgram, signal_isNamed) {
    const ChildEnding ending = run("kill -SEGV $$").ending;
    EXPECT_EQ(ending.way, Way::Signal);
    EXPECT_EQ(ending.number, SIGSEGV);
    EXPECT_EQ(ending.text(), "was ended by signal 11 (SIGSEGV)");
}

TEST(ChildProgram, processorTime_isLimitedAndNamed) {
    const ChildEnding ending = run("while :; do :; done", {.processorTime = std::chrono::seconds(1)}).ending;
    EXPECT_EQ(ending.way, Way::TooLong);
    EXPECT_EQ(ending.text(), "took longer than 1 s of processor time");
}

TEST(ChildProgram, time_isLimitedAndNamed) {
    const Told told = run("sleep 1000", {.time = std::chrono::milliseconds(50)});
    EXPECT_EQ(told.text, "(too late)");
    EXPECT_EQ(told.ending.text(), "took longer than 50 ms");
}

TEST(ChildProgram, missingProgram_isNotStarted) {
    ChildProgram child("/nowhere/program", {}, {}, {});
    const ChildEnding ending = child.wait();
    EXPECT_EQ(ending.way, Way::NotStarted);
    EXPECT_EQ(ending.text(), "cannot be started: /nowhere/program: No such file or directory");
}

/// The numbers of closed streams are the first that new files get.
TEST(ChildProgram, closedStandardStreams_doNotHideTheReason) {
    std::array<int, 3> kept{};
    for (int stream = 0; stream < 3; ++stream) {
        kept[static_cast<std::size_t>(stream)] = ::fcntl(stream, F_DUPFD_CLOEXEC, 10);
        ::close(stream);
    }
    const ChildEnding ending = ChildProgram("/nowhere/program", {}, {}, {}).wait();
    for (int stream = 0; stream < 3; ++stream) {
        ::dup2(kept[static_cast<std::size_t>(stream)], stream);
        ::close(kept[static_cast<std::size_t>(stream)]);
    }
    EXPECT_EQ(ending.text(), "cannot be started: /nowhere/program: No such file or directory");
}

TEST(ChildProgram, rights_areNotGained) {
    EXPECT_EQ(run("grep NoNewPrivs /proc/self/status").text, "NoNewPrivs:\t1\n");
}

TEST(ChildProgram, files_areLimited) { EXPECT_EQ(run("ulimit -n", {.files = 20}).text, "20\n"); }

TEST(ChildProgram, endOfItsThread_isItsOwnOrNot) {
    for (const bool ends : {true, false}) {
        Pipe answers, question;
        std::unique_ptr<ChildProgram> child;
        std::thread([&] {
            child = std::make_unique<ChildProgram>("/bin/sh",
                                                   std::vector<std::string>{"-c", "read line; echo $line"},
                                                   std::vector<int>{question.read.get(), answers.write.get()},
                                                   ChildLimits{.endsWithThread = ends});
        }).join();
        answers.write.close();
        if (ends) EXPECT_EQ(child->read(answers.read.get(), Most), "") << "it is gone before it is asked";
        question.read.close();
        if (!ends) EXPECT_EQ(::write(question.write.get(), "hello\n", 6), 6);
        if (!ends) EXPECT_EQ(child->read(answers.read.get(), Most), "hello\n");
    }
}

TEST(ChildProgram, limits_areThoseAskedFor) {
    // The shell counts file sizes in blocks of 512 bytes and memory in KiB.
    EXPECT_EQ(run("ulimit -c; ulimit -f; ulimit -t",
                  {.processorTime = std::chrono::seconds(7), .fileSize = std::uint64_t{1} << 20})
                  .text,
              "0\n2048\n7\n");
}

#ifdef MEMORY_IS_LIMITED
TEST(ChildProgram, memory_isLimited) {
    EXPECT_EQ(run("ulimit -v", {.memory = std::uint64_t{1} << 30}).text, "1048576\n");
}
#endif

TEST(ChildProgram, files_areThoseGivenInTheirOrder) {
    const TemporaryFolder folder;
    const Descriptor mine(::fcntl(0, F_DUPFD, 50));
    const Descriptor first = memoryFile("first", std::string("one\n"));
    const Descriptor second = memoryFile("second", std::string("two\n"));
    Pipe answers;
    ChildProgram child("/bin/sh", {"-c", "cat; cat <&3; cat <&4; ls /proc/$$/fd"},
                       {first.get(), answers.write.get(), -1, second.get(), -1}, {});
    answers.write.close();
    EXPECT_EQ(child.read(answers.read.get(), Most), "one\ntwo\n0\n1\n2\n3\n4\n");
    EXPECT_EQ(child.wait().text(), "exited with code 0");
}

/// Numbers that are given as others are wanted: 0 becomes 1 while 1 becomes 0.
TEST(ChildProgram, filesInEachOthersPlaces_areNotMixedUp) {
    const int oldInput = ::fcntl(0, F_DUPFD_CLOEXEC, 10);
    const int oldOutput = ::fcntl(1, F_DUPFD_CLOEXEC, 10);
    {
        const Descriptor question = memoryFile("question", std::string("?"));
        Pipe answers;
        ::dup2(answers.write.get(), 0);
        ::dup2(question.get(), 1);
        answers.write.close();
        ChildProgram child("/bin/cat", {}, {1, 0}, {});
        ::dup2(oldInput, 0);
        ::dup2(oldOutput, 1);
        EXPECT_EQ(child.read(answers.read.get(), Most), "?");
    }
    ::close(oldInput);
    ::close(oldOutput);
}

TEST(ChildProgram, answerWithoutEnd_isCutOff) {
    Pipe answers;
    ChildProgram child("/bin/sh", {"-c", "while :; do echo yes; done"}, {-1, answers.write.get()}, {});
    answers.write.close();
    EXPECT_EQ(child.read(answers.read.get(), 1000).value_or("").size(), 1000U);
}

TEST(ChildProgram, group_isItsOwn) {
    EXPECT_EQ(run("set -- $(cat /proc/$$/stat); [ $5 = $$ ] && printf own").text, "own");
}

TEST(ChildProgram, grandchildren_goWithIt) {
    const Told late = run("sleep 1000 & echo $!; wait", {.time = std::chrono::milliseconds(300)});
    EXPECT_EQ(late.ending.way, Way::TooLong);
    const Told left = run("sleep 1000 >/dev/null & echo $!");
    EXPECT_EQ(left.ending.text(), "exited with code 0");
    EXPECT_TRUE(isGone(std::stoi(left.text))) << left.text;
}

TEST(ChildProgram, objectThatGoes_takesItsProcessAlong) {
    Pipe answers;
    std::optional<ChildProgram> child(std::in_place, "/bin/sh",
                                      std::vector<std::string>{"-c", "echo $$; exec sleep 1000"},
                                      std::vector<int>{-1, answers.write.get()}, ChildLimits{});
    answers.write.close();
    std::array<char, 32> number{};
    ASSERT_GT(::read(answers.read.get(), number.data(), number.size() - 1), 0);
    child.reset();
    EXPECT_TRUE(isGone(std::stoi(number.data())));
    EXPECT_LT(::waitpid(-1, nullptr, WNOHANG), 0) << "somebody is still to be waited for";
}

/// A process that starts a child and dies at once.
TEST(ChildProgram, deathOfTheParent_endsIt) {
    Pipe number;
    const pid_t parent = ::fork();
    ASSERT_GE(parent, 0);
    if (parent == 0) {
        const ChildProgram child("/bin/sh", {"-c", "echo $$; exec sleep 1000"}, {-1, number.write.get()}, {});
        ::pause();
        ::_exit(0);
    }
    std::array<char, 32> text{};
    ASSERT_GT(::read(number.read.get(), text.data(), text.size() - 1), 0);
    ::kill(parent, SIGKILL);
    ::waitpid(parent, nullptr, 0);
    EXPECT_TRUE(isGone(std::stoi(text.data())));
}

TEST(ChildProgram, ignoredSignals_areNotInherited) {
    auto* const before = std::signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(run("kill -PIPE $$").ending.text(), "was ended by signal 13 (SIGPIPE)");
    std::signal(SIGPIPE, before);
}

TEST(ChildProgram, childrenThatNobodyWaitsFor_endWithoutAWord) {
    auto* const before = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(run("exit 0").ending.text(), "ended without a word");
    std::signal(SIGCHLD, before);
}

TEST(HelperProgram, place_isBesideThisProgram) {
    const auto here = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_EQ(helperProgram(here.filename().string()), here);
    EXPECT_EQ(helperProgram("nothing-of-that-name"), here.parent_path() / "nothing-of-that-name");
}

} // namespace
