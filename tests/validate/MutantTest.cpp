// SPDX-License-Identifier: Apache-2.0
// The validator itself is put to the test: each fault is found by the check that is in charge of it, and by
// no other.
#include "tests/validate/Validation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <ostream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

using Names = std::vector<std::string>;

/// One broken plug-in.
struct Mutant {
    const char* fault;    ///< as in tests/mutants/Fault.h
    int level;            ///< of the check in charge; what is above is not run
    const char* check;    ///< in charge
    const char* kind;     ///< what it says
    Names followers = {}; ///< checks that cannot but fail, too
};

void PrintTo(const Mutant& mutant, std::ostream* stream) { *stream << mutant.fault; }

const std::vector<Mutant> Quick = {
    {"ExtraExport", 1, "exports", "fail"},
    {"NoEntry", 1, "entry", "fail"},
    {"TwoEntries", 1, "entry", "fail"},
    {"OtherDate", 1, "entry", "fail"},
    {"UniqueSymbol", 1, "unique-symbols", "fail", {"exports"}},
    {"ThreadLocal", 1, "thread-locals", "fail"},
    {"ExecutableStack", 1, "segments", "fail"},
    {"LazyBinding", 1, "hardening", "warn"},
    {"LocaleSet", 1, "imports", "warn"},
    {"NoCreator", 2, "load", "fail"},
    {"ThrowsInLoad", 2, "load", "crash"},
    {"WrongKey", 2, "load", "fail"},
    {"EarlyAttach", 2, "attach", "fail"},
    {"NoAttach", 2, "attach", "fail"},
    {"AttachTwice", 2, "attach", "fail"},
    {"WrongHookName", 2, "attach", "fail", {"detach"}},
    {"NormalisedVerdict", 2, "verdict", "fail"},
    {"EntryPrints", 2, "quiet-entry", "fail"},
    {"EntryTraces", 2, "quiet-entry", "fail"},
    {"RefusalLeaks", 2, "refusal", "fail"},
    {"Pinned", 2, "unload", "fail"},
    {"LateDetach", 2, "detach", "fail"},
    {"NoDetach", 2, "detach", "fail"},
    {"InputCreatorStays", 2, "withdrawal", "fail"},
    {"SecondLifeDiffers", 2, "reload", "fail"},
    {"TextLetter", 3, "catalogue", "fail"},
    {"OrderValue", 3, "catalogue", "fail"},
    {"RowsSwapped", 3, "catalogue", "fail"},
    {"OneKeyTwice", 3, "keys", "fail", {"catalogue"}},
    {"KeyWithBlank", 3, "keys", "fail", {"catalogue"}},
    {"ControlCharacter", 3, "texts", "fail", {"catalogue"}},
    {"CrashInCreate", 4, "creation", "crash"},
    {"ExitInCreate", 4, "creation", "fail"},
    {"TooMuchMemory", 4, "creation", "fail"},
    {"SharedClass", 4, "types", "fail", {"catalogue"}},
    {"InputCreatorMissing", 4, "input-creators", "fail"},
    {"NameIgnored", 4, "names", "fail"},
    {"CreationUnreported", 4, "creation-path", "fail"},
    {"LimitMissing", 4, "modules", "fail"},
    {"LimitsCrossed", 4, "parameters", "fail", {"modules"}},
    {"InitialValueSet", 4, "parameters", "fail"},
    {"TypeNotRegistered", 4, "slot-types", "fail"},
    {"SharedProcessor", 4, "outputs", "fail", {"release"}},
    {"ObjectKept", 4, "release", "fail"},
    {"ProcessorKept", 4, "release", "fail"},
    {"MemoryLost", 4, "memory", "fail"},
    {"OrderedDestruction", 4, "destruction-order", "crash"},
    {"LateDetachAtExit", 4, "exit", "fail"},
    {"LocaleSet", 4, "surroundings", "fail"},
    {"OutputClosed", 4, "surroundings", "fail"},
    {"ThreadStarted", 4, "surroundings", "fail"},
    {"SignalHandled", 4, "surroundings", "fail"},
};

const std::vector<Mutant> Slow = {
    {"HangInCreate", 4, "creation", "timeout"},
    {"EndlessOutput", 4, "creation", "timeout"},
    {"ForksAndHangs", 4, "creation", "timeout"},
};

const std::vector<Mutant> Working = {
    {"ThrowsInUpdate", 5, "update", "fail"},
    {"RefusesLeastValue", 5, "update", "fail"},
    {"InfiniteValue", 5, "value-texts", "fail", {"modules", "shader-texts", "programs", "shader-settings"}},
    {"TextChanges", 5, "repeatable", "fail", {"comma-locale", "shader-texts", "shader-settings"}},
    {"CommaInText", 5, "comma-locale", "fail"},
    {"OneWithoutPoint", 5, "shader-texts", "fail", {"shader-settings"}},
    {"SettingOff", 5, "shader-settings", "fail"},
    {"DiesWithoutValue", 5, "fallbacks", "crash"},
    {"DoesNotCompile", 5, "programs", "fail", {"shader-texts", "shader-settings"}},
    {"PictureChanges", 5, "pictures", "fail"},
    {"RedMissing", 5, "expected-pictures", "fail"},
    {"OpenGlErrorLeft", 5, "pictures", "fail"},
    {"TextureBound", 5, "opengl-state", "fail"},
    {"TileChanges", 5, "tiles", "fail"},
    {"AlphaChanged", 5, "tiles", "fail", {"expected-pictures"}},
    {"OnePixelTooFew", 5, "tiles", "fail"},
};

const std::vector<Mutant> Hostile = {
    {"DiesOfHugeNumber", 6, "hostile-values", "crash"},
    {"DiesOfEmptyTile", 6, "foreign-tiles", "crash"},
    {"ReadsPastTile", 6, "guarded-tiles", "crash"},
    {"DiesOfNaN", 6, "halves", "crash"},
    {"RefusalUnsaid", 6, "refused-inputs", "fail"},
    {"DiesOfNothing", 6, "empty-references", "crash"},
    {"DiesOfSamples", 7, "samples", "crash", {"hostile-values"}},
    {"DiesOfLongRow", 7, "sizes", "crash"},
    {"ThrowsOthersError", 7, "pending-errors", "fail"},
    {"DiesOfShaderFile", 7, "shader-files", "crash"},
    {"StumblesOverShaderFile", 7, "shader-files", "fail"},
    {"NeedsNewLanguage", 7, "second-driver", "fail", {"shader-texts", "shader-settings"}},
    {"ErrorHidden", 7, "debug-messages", "fail"},
    {"DiesOfRefusedProgram", 7, "refused-programs", "crash"},
    {"FrameMemoryLost", 7, "frame-memory", "fail"},
    {"TextureLeaked", 7, "opengl-objects", "fail"},
    {"LeaksEachLife", 8, "reload-often", "fail"},
    {"ObjectsStay", 8, "living-objects", "fail", {"copy"}},
    {"OnlyOnce", 8, "copy", "fail"},
    {"TextureEachLife", 8, "reload-drawing", "fail"},
    {"OwnException", 8, "held-exception", "crash"},
    {"DiesInOtherThread", 8, "threads", "crash"},
    {"DiesAfterFork", 8, "fork", "fail"},
    {"DiesWithoutMemoryInLoad", 9, "allocation-in-load", "fail"},
    {"DiesWithoutMemory", 9, "allocation-in-work", "crash"},
    {"SwallowsExceptions", 9, "throwing-host", "fail"},
    {"DiesOfClosedOutput", 9, "closed-output", "crash"},
    {"DiesWithoutFiles", 9, "descriptors", "crash"},
    {"DiesOfHighDescriptor", 9, "descriptors", "crash"},
    {"DiesWithoutMemoryInDrawing", 9, "allocation-in-drawing", "crash"},
    {"SwallowsInBounds", 9, "throwing-host", "fail"},
    {"DiesOfFailedOpenGl", 9, "failing-opengl", "crash", {"lost-context"}},
    {"TextureLeakedOnFailure", 9, "failing-opengl", "fail"},
    {"DiesOfLostContext", 9, "lost-context", "crash"},
    {"DiesOfInterruption", 9, "interruptions", "crash"},
    {"OtherOnSecondDriver", 10, "drivers", "fail"},
    {"DiesInTheLongRun", 10, "soak", "crash"},
};

const std::string Expected = EXPECTATIONS "/mutant.expect.json";

std::string pathOf(const std::string& fault) { return MUTANT_FOLDER "/" + fault + ".so"; }

/// The whole run up to the level of the check in charge.
void expectFoundByOne(const Mutant& mutant, const std::map<std::string, std::string>& environment = {
                                                {"KROD_VALIDATE_SOAK", "20"}}) {
    const Validation found = validation(
        pathOf(mutant.fault), {"--level", std::to_string(mutant.level), "--expect", Expected}, environment);
    ASSERT_TRUE(found.report.is_object()) << found.error;
    EXPECT_EQ(found.kindOf(mutant.check), mutant.kind) << found.findings();
    Names allowed = mutant.followers;
    allowed.emplace_back(mutant.check);
    for (const std::string& name : found.with({"fail", "crash", "timeout"}))
        EXPECT_NE(std::ranges::find(allowed, name), allowed.end()) << name << '\n' << found.findings();
    EXPECT_EQ(found.code, std::string(mutant.kind) == "warn" ? 0 : 1);
}

/// The check in charge alone.
void expectFoundAlone(const Mutant& mutant) {
    const Validation found = validation(
        pathOf(mutant.fault), {"--reproduce", std::string(mutant.check) + ":1", "--expect", Expected});
    ASSERT_TRUE(found.report.is_object()) << found.error;
    EXPECT_EQ(found.kindOf(mutant.check), mutant.kind) << found.findings();
    EXPECT_EQ(found.code, 1);
}

std::string nameOf(const testing::TestParamInfo<Mutant>& info) {
    return std::string(info.param.fault) + "_level_" + std::to_string(info.param.level);
}

class QuickMutant : public testing::TestWithParam<Mutant> {};
TEST_P(QuickMutant, Is_found_by_the_check_in_charge_and_no_other) { expectFoundByOne(GetParam()); }
INSTANTIATE_TEST_SUITE_P(Validate, QuickMutant, testing::ValuesIn(Quick), nameOf);

class LateMutant : public testing::TestWithParam<Mutant> {};
TEST_P(LateMutant, Is_found_by_the_check_in_charge) { expectFoundAlone(GetParam()); }
INSTANTIATE_TEST_SUITE_P(Validate, LateMutant, testing::ValuesIn(Working), nameOf);
INSTANTIATE_TEST_SUITE_P(ValidateHostile, LateMutant, testing::ValuesIn(Hostile), nameOf);

class SlowMutant : public testing::TestWithParam<Mutant> {};
TEST_P(SlowMutant, Is_stopped_when_its_time_is_over) {
    expectFoundByOne(GetParam(), {{"KROD_VALIDATE_SECONDS", "3"}});
}
INSTANTIATE_TEST_SUITE_P(Validate, SlowMutant, testing::ValuesIn(Slow), nameOf);

TEST(ForkingMutant, Is_stopped_with_the_process_that_it_has_forked) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    ::fcntl(pipe[0], F_SETFD,
            FD_CLOEXEC); // every process of the run gets the end to write, and none this one
    const Validation found =
        validation(pathOf("ForksAndHangs"), {"--reproduce", "creation:1"}, {{"KROD_VALIDATE_SECONDS", "3"}});
    ::close(pipe[1]);
    EXPECT_EQ(found.kindOf("creation"), "timeout") << found.findings();
    EXPECT_EQ(found.findings(), "timeout creation: its process had not ended after 3 seconds\n"
                                "    a process was forked\n");
    constexpr int Patience = 60'000; // milliseconds, which only pass when a process is left
    pollfd end{pipe[0], POLLIN, 0};
    EXPECT_EQ(::poll(&end, 1, Patience), 1) << "a process is left";
    EXPECT_EQ(end.revents, POLLHUP);
    ::close(pipe[0]);
}

class WholeMutant : public testing::TestWithParam<Mutant> {};
TEST_P(WholeMutant, Is_found_by_the_check_in_charge_and_no_other) { expectFoundByOne(GetParam()); }
INSTANTIATE_TEST_SUITE_P(DeepValidate, WholeMutant, testing::ValuesIn(Working), nameOf);
INSTANTIATE_TEST_SUITE_P(DeepValidateHostile, WholeMutant, testing::ValuesIn(Hostile), nameOf);

void expectClean(const std::string& level) {
    const Validation found = validation(pathOf("None"), {"--level", level, "--expect", Expected});
    EXPECT_EQ(found.code, 0) << found.error;
    ASSERT_TRUE(found.report.is_object());
    EXPECT_EQ(found.with({"fail", "crash", "timeout", "skip"}), Names()) << found.findings();
}

TEST(CleanMutant, Passes_level_7) { expectClean("7"); }
TEST(DeepCleanMutant, Passes_level_9) { expectClean("9"); }

} // namespace
