// SPDX-License-Identifier: Apache-2.0
// Level 1: what the file alone tells.
#include "host/core/VInitialization.h"
#include "workbench/core/PluginEntry.h"
#include "workbench/platform/ElfFile.h"
#include "workbench/platform/SharedLibrary.h"
#include "workbench/report/Failure.h"
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/ElfDetails.h"
#include "workbench/validate/Trial.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace workbench::validate {
namespace {

constexpr std::uintmax_t MostBytes = std::uintmax_t{64} << 20;

/// Functions that concern more than a plug-in.
constexpr std::array<std::string_view, 15> Intrusive = {
    "_exit",  "abort",     "dlclose", "dlopen", "exit",      "fork",  "pthread_create",     "quick_exit",
    "setenv", "setlocale", "signal",  "system", "sigaction", "vfork", "_ZNSt6localeaSERKS_"};

} // namespace

void checkFile(Trial& trial) {
    const ElfFile file = ElfFile::inspect(trial.plugin());
    if (!file.usable()) {
        Diagnostic refusal = file.refusal;
        refusal.who.clear();
        std::string text = refusal.sentence();
        text.pop_back();
        return trial.fail(std::move(text));
    }
    trial.require(ElfDetails::read(trial.plugin()).size <= MostBytes, "is larger than 64 MiB");
}

void checkEntry(Trial& trial) {
    try {
        const PluginEntry entry = PluginEntry::read(trial.plugin());
        const std::string own = krod::VInitialization::hostDate();
        trial.require(entry.date == own,
                      "is built for the interface " + entry.date + ", but this host has " + own);
    } catch (const Failure& failure) {
        Diagnostic message = failure.diagnostic();
        message.who.clear();
        std::string text = message.sentence();
        text.pop_back();
        trial.fail(std::move(text));
    }
}

void checkExports(Trial& trial) {
    const std::string entry = PluginEntry::read(trial.plugin()).symbol;
    for (const std::string& name : ElfFile::inspect(trial.plugin()).exportedNames)
        if (name != entry)
            trial.fail("exports " + demangle(name.c_str()) +
                       ", which other libraries could find instead of theirs");
}

void checkUniqueSymbols(Trial& trial) {
    for (const std::string& name : ElfFile::inspect(trial.plugin()).uniqueNames)
        trial.fail("has the unique symbol " + demangle(name.c_str()) +
                   "; compile with -fno-gnu-unique, or hide it with a version script");
}

void checkThreadLocals(Trial& trial) {
    const ElfDetails details = ElfDetails::read(trial.plugin());
    trial.require(!details.threadLocals, "has variables that are thread_local");
    trial.require(std::ranges::find(details.imports, "__cxa_thread_atexit") == details.imports.end(),
                  "has a thread_local variable with a destructor");
}

void checkSegments(Trial& trial) {
    const ElfDetails details = ElfDetails::read(trial.plugin());
    trial.require(!details.executableStack, "asks for a stack that can be executed");
    trial.require(!details.textRelocations, "changes its own code while it is loaded; compile with -fPIC");
}

void checkHardening(Trial& trial) {
    const ElfDetails details = ElfDetails::read(trial.plugin());
    if (!details.bindsNow) trial.warn("does not bind its symbols at once; link with -Wl,-z,now");
    if (!details.readOnlyRelocations) trial.warn("leaves its tables writable; link with -Wl,-z,relro");
    for (const std::string& folder : details.searchFolders)
        if (folder.starts_with('/'))
            trial.warn("searches its libraries in " + folder + ", which another machine does not have");
}

void checkImports(Trial& trial) {
    for (const std::string& name : ElfDetails::read(trial.plugin()).imports)
        if (std::ranges::find(Intrusive, name) != Intrusive.end())
            trial.warn("uses " + demangle(name.c_str()) + ", which concerns the whole process");
}

} // namespace workbench::validate
