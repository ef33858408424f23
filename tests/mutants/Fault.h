// SPDX-License-Identifier: Apache-2.0
// What can be wrong with the small plug-in of this folder.
#pragma once

/// Each fault is a plug-in of its own; `None` is the clean one. Which check finds which stands in the table
/// of tests/validate/MutantTest.cpp.
// clang-format off
enum class Fault {
    None,
    // seen in the file
    ExtraExport, NoEntry, TwoEntries, OtherDate, UniqueSymbol, ThreadLocal, ExecutableStack, LazyBinding,
    // loading and unloading
    NoCreator, ThrowsInLoad, WrongKey, EarlyAttach, NoAttach, AttachTwice, WrongHookName, NormalisedVerdict,
    EntryPrints, EntryTraces, RefusalLeaks, Pinned, LateDetach, NoDetach, InputCreatorStays, SecondLifeDiffers,
    LateDetachAtExit,
    // the catalogue
    TextLetter, OrderValue, RowsSwapped, OneKeyTwice, KeyWithBlank, ControlCharacter,
    // objects
    CrashInCreate, ExitInCreate, HangInCreate, EndlessOutput, TooMuchMemory, SharedClass, InputCreatorMissing,
    NameIgnored, CreationUnreported, LimitMissing, LimitsCrossed, InitialValueSet, TypeNotRegistered,
    SharedProcessor, ObjectKept, ProcessorKept, MemoryLost, OrderedDestruction, LocaleSet, OutputClosed,
    ThreadStarted, SignalHandled, ForksAndHangs,
    // work
    ThrowsInUpdate, RefusesLeastValue, InfiniteValue, TextChanges, CommaInText, OneWithoutPoint, DiesWithoutValue,
    DoesNotCompile, PictureChanges, OpenGlErrorLeft, TextureBound, TileChanges, AlphaChanged, OnePixelTooFew,
    RedMissing, SettingOff,
    // hostile values and tiles
    DiesOfHugeNumber, DiesOfEmptyTile, ReadsPastTile, DiesOfNaN, RefusalUnsaid, DiesOfNothing,
    // OpenGL under stress
    DiesOfSamples, DiesOfLongRow, ThrowsOthersError, DiesOfShaderFile, TextureLeaked,
    StumblesOverShaderFile, NeedsNewLanguage, ErrorHidden, DiesOfRefusedProgram, FrameMemoryLost,
    // life
    LeaksEachLife, ObjectsStay, OnlyOnce, TextureEachLife, OwnException, DiesInOtherThread, DiesAfterFork,
    // faults around it
    DiesWithoutMemoryInLoad, DiesWithoutMemory, SwallowsExceptions, DiesOfClosedOutput, DiesWithoutFiles,
    DiesWithoutMemoryInDrawing, SwallowsInBounds, DiesOfFailedOpenGl, TextureLeakedOnFailure,
    DiesOfLostContext, DiesOfInterruption, DiesOfHighDescriptor,
    // in the long run
    OtherOnSecondDriver, DiesInTheLongRun,
};
// clang-format on

/// The fault of this plug-in, known before anything of it is built.
extern const Fault fault;

/// Whether the plug-in is to be wrong in this way.
inline bool has(Fault one) { return fault == one; }

/// Ends the process by a signal.
[[noreturn]] void die();
/// Does to the process what a guest should not do; empty where that is not the fault.
void misbehave();
/// Never returns, and leaves a process that waits for ever; empty where that is not the fault.
void forkAndHang();
