// SPDX-License-Identifier: Apache-2.0
// The functions behind the table of checks, by level. What each demands stands in the table.
#pragma once

namespace workbench::validate {

class Trial;

// 1: the file, none of its code runs
void checkFile(Trial& trial);
void checkEntry(Trial& trial);
void checkExports(Trial& trial);
void checkUniqueSymbols(Trial& trial);
void checkThreadLocals(Trial& trial);
void checkSegments(Trial& trial);
void checkHardening(Trial& trial);
void checkImports(Trial& trial);
// 2: loading and unloading
void checkLoad(Trial& trial);
void checkAttach(Trial& trial);
void checkVerdict(Trial& trial);
void checkQuietEntry(Trial& trial);
void checkRefusal(Trial& trial);
void checkDetach(Trial& trial);
void checkWithdrawal(Trial& trial);
void checkUnload(Trial& trial);
void checkReload(Trial& trial);
// 3: the catalogue
void checkKeys(Trial& trial);
void checkTexts(Trial& trial);
void checkCatalogue(Trial& trial);
void checkTypes(Trial& trial);
void checkInputCreators(Trial& trial);
// 4: objects
void checkCreation(Trial& trial);
void checkNames(Trial& trial);
void checkCreationPath(Trial& trial);
void checkParameters(Trial& trial);
void checkSlotTypes(Trial& trial);
void checkOutputs(Trial& trial);
void checkRelease(Trial& trial);
void checkMemory(Trial& trial);
void checkDestructionOrder(Trial& trial);
void checkModules(Trial& trial);
void checkExit(Trial& trial);
void checkSurroundings(Trial& trial);
// 5: normal work
void checkUpdate(Trial& trial);
void checkValueTexts(Trial& trial);
void checkRepeatable(Trial& trial);
void checkCommaLocale(Trial& trial);
void checkShaderTexts(Trial& trial);
void checkShaderSettings(Trial& trial);
void checkFallbacks(Trial& trial);
void checkPrograms(Trial& trial);
void checkPictures(Trial& trial);
void checkExpectedPictures(Trial& trial);
void checkTiles(Trial& trial);
void checkOpenGlState(Trial& trial);
// 6: hostile values
void checkHostileValues(Trial& trial);
void checkForeignTiles(Trial& trial);
void checkGuardedTiles(Trial& trial);
void checkHalves(Trial& trial);
void checkRefusedInputs(Trial& trial);
void checkEmptyReferences(Trial& trial);
// 7: OpenGL under stress
void checkSamples(Trial& trial);
void checkSizes(Trial& trial);
void checkSecondDriver(Trial& trial);
void checkPendingErrors(Trial& trial);
void checkDebugMessages(Trial& trial);
void checkShaderFiles(Trial& trial);
void checkRefusedPrograms(Trial& trial);
void checkOpenGlObjects(Trial& trial);
void checkFrameMemory(Trial& trial);
// 8: life cycle
void checkReloadOften(Trial& trial);
void checkReloadDrawing(Trial& trial);
void checkLivingObjects(Trial& trial);
void checkHeldProcessor(Trial& trial);
void checkHeldException(Trial& trial);
void checkCopy(Trial& trial);
void checkThreads(Trial& trial);
void checkFork(Trial& trial);
// 9: faults around the plug-in
void checkAllocationInLoad(Trial& trial);
void checkAllocationInWork(Trial& trial);
void checkAllocationInDrawing(Trial& trial);
void checkThrowingHost(Trial& trial);
void checkFailingOpenGl(Trial& trial);
void checkLostContext(Trial& trial);
void checkClosedOutput(Trial& trial);
void checkInterruptions(Trial& trial);
void checkDescriptors(Trial& trial);
// 10
void checkSoak(Trial& trial);
void checkDrivers(Trial& trial);

} // namespace workbench::validate
