// SPDX-License-Identifier: Apache-2.0
#include "workbench/validate/Check.h"
#include "workbench/validate/CheckFunctions.h"

#include <algorithm>
#include <array>

namespace workbench::validate {
namespace {

constexpr bool Drawn = true, Fixed = false;                          // random or not
constexpr bool Compared = true, Alone = false;                       // with an expectation file or without
constexpr int Usual = 30, Drawing = 120, Long = 300, Soaking = 1500; // seconds

constexpr auto Table = std::to_array<Check>({
    // 1: the file, none of its code runs
    {"file", 1, "", Fixed, Alone, Usual, "is a whole library for this machine, of 64 MiB at most", checkFile},
    {"entry", 1, "file", Fixed, Alone, Usual,
     "has exactly one entry KROD_API_<date>__<name>, with the host's date", checkEntry},
    {"exports", 1, "entry", Fixed, Alone, Usual, "exports nothing but its entry", checkExports},
    {"unique-symbols", 1, "file", Fixed, Alone, Usual, "has no unique symbols, which would keep it in memory",
     checkUniqueSymbols},
    {"thread-locals", 1, "file", Fixed, Alone, Usual,
     "has no variables of threads, which would keep it in memory", checkThreadLocals},
    {"segments", 1, "file", Fixed, Alone, Usual, "needs no executable stack and no changes of its code",
     checkSegments},
    {"hardening", 1, "file", Fixed, Alone, Usual,
     "binds its symbols at once, protects them, and searches no fixed folders", checkHardening},
    {"imports", 1, "file", Fixed, Alone, Usual, "calls nothing that changes or ends the whole process",
     checkImports},
    // 2: loading and unloading
    {"load", 2, "entry", Fixed, Alone, Usual, "loads within 2 seconds of work and registers a creator",
     checkLoad},
    {"attach", 2, "load", Fixed, Alone, Usual, "reports its loading once, after all of its creators",
     checkAttach},
    {"verdict", 2, "load", Fixed, Alone, Usual, "returns the host's verdict as it is", checkVerdict},
    {"quiet-entry", 2, "load", Fixed, Alone, Usual, "does nothing else when its entry is called",
     checkQuietEntry},
    {"unload", 2, "load", Fixed, Alone, Usual, "leaves memory when it is unloaded", checkUnload},
    {"detach", 2, "unload", Fixed, Alone, Usual, "reports its unloading once, before its creators go",
     checkDetach},
    {"withdrawal", 2, "unload", Fixed, Alone, Usual, "leaves nothing registered behind", checkWithdrawal},
    {"refusal", 2, "withdrawal", Fixed, Alone, Usual, "leaves no trace when the host refuses it",
     checkRefusal},
    {"reload", 2, "withdrawal", Fixed, Alone, Usual, "loads a second time exactly as the first time",
     checkReload},
    // 3: the catalogue
    {"keys", 3, "load", Fixed, Alone, Usual, "has keys that can be told apart", checkKeys},
    {"texts", 3, "load", Fixed, Alone, Usual, "has readable texts", checkTexts},
    {"catalogue", 3, "load", Fixed, Compared, Usual, "has the expected creators, in order, with their texts",
     checkCatalogue},
    // 4: objects
    {"creation", 4, "load", Fixed, Alone, Usual, "makes an object with each creator", checkCreation},
    {"types", 4, "creation", Fixed, Alone, Usual, "has a class of its own for each creator", checkTypes},
    {"input-creators", 4, "creation", Fixed, Alone, Usual,
     "offers each module with a tile processor as an input creator, and no other", checkInputCreators},
    {"names", 4, "creation", Fixed, Alone, Usual, "gives objects the names that are asked for", checkNames},
    {"creation-path", 4, "creation", Fixed, Alone, Usual, "makes objects in the host's steps",
     checkCreationPath},
    {"parameters", 4, "creation", Fixed, Alone, Usual, "declares parameters that can be used",
     checkParameters},
    {"slot-types", 4, "creation", Fixed, Alone, Usual, "registers the types of its parameters",
     checkSlotTypes},
    {"outputs", 4, "creation", Fixed, Alone, Usual, "has one processor for each object, in its output",
     checkOutputs},
    {"modules", 4, "creation", Fixed, Compared, Usual, "has the expected parameters, inputs and outputs",
     checkModules},
    {"release", 4, "creation", Fixed, Alone, Usual, "lets go of an object with its last reference",
     checkRelease},
    {"memory", 4, "release", Fixed, Alone, Usual, "gives back the memory of 100 objects", checkMemory},
    {"destruction-order", 4, "release", Drawn, Alone, Usual, "lets objects go in any order",
     checkDestructionOrder},
    {"exit", 4, "creation", Fixed, Alone, Usual, "ends in order with a process that exits", checkExit},
    {"surroundings", 4, "creation", Fixed, Alone, Usual, "leaves the process around it as it is",
     checkSurroundings},
    // 5: normal work
    {"update", 5, "creation", Drawn, Alone, Usual, "updates with values within the limits", checkUpdate},
    {"value-texts", 5, "creation", Fixed, Alone, Usual, "has values that survive being written and read",
     checkValueTexts},
    {"repeatable", 5, "update", Drawn, Alone, Usual, "gives the same shader text for the same values",
     checkRepeatable},
    {"comma-locale", 5, "update", Drawn, Alone, Usual,
     "gives the same shader text where decimals have a comma", checkCommaLocale},
    {"shader-texts", 5, "update", Fixed, Compared, Usual, "has the expected shader texts", checkShaderTexts},
    {"shader-settings", 5, "update", Fixed, Compared, Usual,
     "has the expected shader texts at 20 drawn settings", checkShaderSettings},
    {"fallbacks", 5, "update", Fixed, Alone, Usual, "works while parameters cannot be read", checkFallbacks},
    {"programs", 5, "update", Fixed, Alone, Drawing, "has shader texts that this driver compiles",
     checkPrograms},
    {"pictures", 5, "programs", Drawn, Alone, Drawing, "draws the same small picture twice, without an error",
     checkPictures},
    {"expected-pictures", 5, "pictures", Fixed, Compared, Drawing, "draws the expected pictures",
     checkExpectedPictures},
    {"tiles", 5, "programs", Drawn, Alone, Drawing, "processes the same tile twice in the same way",
     checkTiles},
    {"opengl-state", 5, "pictures", Fixed, Alone, Drawing, "leaves OpenGL's state as it was",
     checkOpenGlState},
    // 6: hostile values
    {"hostile-values", 6, "update", Fixed, Alone, Usual, "survives values that nobody should give",
     checkHostileValues},
    {"foreign-tiles", 6, "tiles", Fixed, Alone, Usual, "leaves tiles alone that it does not handle",
     checkForeignTiles},
    {"guarded-tiles", 6, "tiles", Drawn, Alone, Usual, "stays within the pixels of a tile",
     checkGuardedTiles},
    {"halves", 6, "tiles", Fixed, Alone, Drawing, "processes every value that a half can have", checkHalves},
    {"refused-inputs", 6, "input-creators", Fixed, Alone, Usual,
     "says once that an input creator was refused, and goes on", checkRefusedInputs},
    {"empty-references", 6, "pictures", Fixed, Alone, Usual,
     "works on when it is given nothing instead of an object", checkEmptyReferences},
    // 7: OpenGL under stress
    {"samples", 7, "pictures", Fixed, Alone, Drawing, "draws with any number of samples", checkSamples},
    {"sizes", 7, "pictures", Fixed, Alone, Drawing, "draws pictures of any shape", checkSizes},
    {"second-driver", 7, "pictures", Drawn, Alone, Drawing, "works on a driver with one sample and GLSL 3.30",
     checkSecondDriver},
    {"pending-errors", 7, "pictures", Fixed, Alone, Drawing, "does not stumble over errors of others",
     checkPendingErrors},
    {"debug-messages", 7, "pictures", Fixed, Alone, Drawing, "gives OpenGL no reason to complain",
     checkDebugMessages},
    {"shader-files", 7, "pictures", Fixed, Alone, Drawing,
     "works with shader files of users, good ones and others", checkShaderFiles},
    {"refused-programs", 7, "pictures", Fixed, Alone, Drawing, "survives a driver that refuses its programs",
     checkRefusedPrograms},
    {"opengl-objects", 7, "pictures", Fixed, Alone, Long, "gives back the OpenGL objects of 100 frames",
     checkOpenGlObjects},
    {"frame-memory", 7, "pictures", Fixed, Alone, Long, "takes at most 8 MiB in 1,000 frames",
     checkFrameMemory},
    // 8: life cycle
    {"reload-often", 8, "reload", Fixed, Alone, Long, "can be loaded and unloaded 1,000 times",
     checkReloadOften},
    {"reload-drawing", 8, "pictures", Fixed, Alone, Long, "can be loaded, draw and be unloaded 200 times",
     checkReloadDrawing},
    {"living-objects", 8, "withdrawal", Fixed, Alone, Usual,
     "takes its living objects along when it is unloaded", checkLivingObjects},
    {"held-processor", 8, "withdrawal", Fixed, Alone, Usual, "stays as long as a processor of it is held",
     checkHeldProcessor},
    {"held-exception", 8, "withdrawal", Fixed, Alone, Usual, "throws what can be read when it is gone",
     checkHeldException},
    {"copy", 8, "withdrawal", Fixed, Alone, Usual, "works beside a copy of itself", checkCopy},
    {"threads", 8, "withdrawal", Fixed, Alone, Drawing, "can be loaded, used and unloaded by four threads",
     checkThreads},
    {"fork", 8, "withdrawal", Fixed, Alone, Usual, "works on in a process that is forked", checkFork},
    // 9: faults around the plug-in
    {"allocation-in-load", 9, "load", Fixed, Alone, Long,
     "ends in order when memory runs out while it is loaded", checkAllocationInLoad},
    {"allocation-in-work", 9, "update", Fixed, Alone, Long, "survives running out of memory at work",
     checkAllocationInWork},
    {"allocation-in-drawing", 9, "pictures", Fixed, Alone, Long,
     "survives running out of memory while it draws", checkAllocationInDrawing},
    {"throwing-host", 9, "release", Fixed, Alone, Drawing, "lets exceptions of its surroundings pass",
     checkThrowingHost},
    {"failing-opengl", 9, "pictures", Drawn, Alone, Long,
     "says so when OpenGL runs out of memory, and recovers", checkFailingOpenGl},
    {"lost-context", 9, "pictures", Drawn, Alone, Long,
     "says so when its context is lost, and works in another", checkLostContext},
    {"closed-output", 9, "withdrawal", Fixed, Alone, Usual, "does not mind a standard output that is gone",
     checkClosedOutput},
    {"interruptions", 9, "pictures", Fixed, Alone, Drawing, "works while signals interrupt it",
     checkInterruptions},
    {"descriptors", 9, "update", Fixed, Alone, Usual,
     "works while 256 files are open, and while none can be opened", checkDescriptors},
    // 10
    {"drivers", 10, "pictures", Drawn, Compared, Long, "draws 500 drawn networks alike on two drivers",
     checkDrivers},
    {"soak", 10, "update", Drawn, Alone, Soaking, "survives ten minutes of drawn operations", checkSoak},
});

} // namespace

std::span<const Check> checks() noexcept { return Table; }

const Check* findCheck(std::string_view name) noexcept {
    const auto* const found = std::ranges::find(Table, name, &Check::name);
    return found == Table.end() ? nullptr : found;
}

} // namespace workbench::validate
