// SPDX-License-Identifier: Apache-2.0
// plime: image post-processing modules on the command line.
#include "apps/plime/commandline/Help.h"
#include "apps/plime/commandline/Session.h"
#include "apps/plime/commands/Commands.h"
#include "apps/plime/modules/PluginSetup.h"
#include "apps/plime/pictures/MemoryUse.h"
#include "apps/plime/terminal/Interruption.h"
#include "workbench/core/ActionListener.h"
#include "workbench/core/Trace.h"
#include "workbench/files/InputMemory.h"
#include "workbench/files/OutputFile.h"
#include "workbench/gl/ShaderFiles.h"
#include "workbench/gl/ShaderGuard.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <new>

#include <unistd.h>

namespace {

using namespace workbench;

/// Hands the warnings of plug-ins to the report while it lives.
class WarningListener : public ActionListener {
public:
    explicit WarningListener(Report& report) : report(report), before(setActionListener(this)) {}
    WarningListener(const WarningListener&) = delete;
    WarningListener& operator=(const WarningListener&) = delete;
    ~WarningListener() override { setActionListener(before); }

    void warning(const std::string& text) override {
        const std::size_t end = text.find_last_not_of(".\n ");
        report.warning({"", end == std::string::npos ? text : text.substr(0, end + 1), "", "", "", {}});
    }

private:
    Report& report;
    ActionListener* before;
};

/// The thread that draws does not come back, so nothing of it is waited for. Finished tiles stay.
void endStuckDrawing(const Diagnostic& message) {
    Report().error(message);
    removeTemporaries();
    ::_exit(static_cast<int>(Fault::Shader));
}

int perform(const Invocation& invocation, const Commands& commands, Streams& streams, Report& report) {
    report.setColour(invocation.global.colour);
    report.setQuiet(invocation.global.quiet);
    report.setVerbose(invocation.global.verbose);
    if (invocation.global.verbose) streams.showModuleOutput();
    setTraceLevel(invocation.global.traceLevel);
    setInputMemory(invocation.global.memory - std::min(invocation.global.memory, ProgramBytes), ProgramBytes);

    int code = 0;
    if (invocation.version) {
        streams.write(versionText());
    } else if (invocation.help) {
        streams.write(invocation.command ? std::string(invocation.command->help()) : programHelp(commands));
    } else {
        const WarningListener listener(report);
        Session session(invocation.global, commands, streams, report);
        for (const std::string& folder : invocation.global.shaderFolders)
            if (std::error_code error; !std::filesystem::is_directory(folder, error))
                report.warning({folder, "is no folder, so no shader file is taken from it", "", "", "", {}});
        setShaderFolders(session.shaderFolders());
        setShaderGuard(
            {.worker = executableFolder() / "plime-shader-worker", .stuck = endStuckDrawing});
        code = invocation.command->run(session);
        throwIfInterrupted();
        report.finish();
    }
    streams.finish();
    return code;
}

int fail(Report& report, Fault fault, const Diagnostic& message) {
    report.error(message);
    return static_cast<int>(fault);
}

} // namespace

int main(int argc, char** argv) {
    Streams streams;
    Report report;
    try {
        giveLargeBlocksBack();
        watchForInterruption(removeTemporaries);
        const Commands commands = makeCommands();
        const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
        return perform(parseArguments(arguments, commands), commands, streams, report);
    } catch (const Failure& failure) {
        return fail(report, failure.fault(), failure.diagnostic());
    } catch (const std::bad_alloc&) {
        return fail(report, Fault::Output,
                    {"", "not enough memory", "", "", "Work on a smaller picture", {}});
    } catch (const std::exception& error) {
        return fail(report, Fault::Partial, {"", error.what(), "", "", "", {}});
    } catch (...) {
        return fail(report, Fault::Partial, {"", "something failed without a word", "", "", "", {}});
    }
}
