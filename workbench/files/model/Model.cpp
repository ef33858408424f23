// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/Model.h"

#include "workbench/files/InputKind.h"
#include "workbench/files/Reason.h"
#include "workbench/files/codec/CodecLibrary.h"
#include "workbench/files/codec/ModelCodec.h"
#include "workbench/files/codec/QuietErrors.h"
#include "workbench/files/model/ModelTransfer.h"
#include "workbench/platform/Descriptor.h"
#include "workbench/platform/ProcessLimits.h"
#include "workbench/platform/SignalPause.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <new>
#include <system_error>
#include <utility>

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace workbench {
namespace {

using Clock = std::chrono::steady_clock;

/// Opened before the fork, so that the child takes no lock of the dynamic linker.
const ModelCodec& modelCodec() {
    constexpr std::uint64_t Addresses = std::uint64_t{64} << 20; // as measured, like that of pictures
    static const auto factory = reinterpret_cast<const ModelCodec* (*)()>(
        codecFunction("krod_model_codec.so", "krodModelCodec", "libassimp5", Addresses));
    return *factory();
}

[[noreturn]] void fail(const std::filesystem::path& path, std::string got, std::string advice) {
    throw Failure(
        Fault::Input,
        {path.string(), "cannot be read as a model", "", reasonText(std::move(got)), std::move(advice), {}});
}

[[noreturn]] void failEmpty(const std::filesystem::path& path, bool onlyBroken) {
    throw Failure(Fault::Input, {path.string(),
                                 "holds no triangles",
                                 "a model with faces",
                                 onlyBroken ? "only faces with vertices that are not finite" : "",
                                 onlyBroken ? "" : "Save points as a PLY, XYZ or CSV file",
                                 {}});
}

/// Files that an importer has open at once, with the standard streams and those to this process.
constexpr std::uint64_t MostFiles = 16;

/// The address space that this process uses already counts against the limit of the child, which begins as
/// its copy. What it does not need of the rest is given up.
void limitChild(const ModelLimits& limits) {
    giveUpRights();
    limitAddresses(mappedBytes() + limits.memory.left());
    limitFileSize(limits.memory.left());
    limitFiles(MostFiles);
    limitProcessorTime(2 * std::chrono::ceil<std::chrono::seconds>(limits.time));
}

/// Signals from a terminal reach the child as well, and end it unless this process ignores them.
void takeSignalsAsTheyAre() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action = {};
        if (::sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
            ::signal(number, SIG_DFL);
    }
    for (const int number : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE}) ::signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// The child: imports, sends and ends without running any destructor of the parent's objects.
[[noreturn]] void importAndExit(const ModelCodec& codec, const std::filesystem::path& path,
                                const ModelLimits& limits, int result, int alive) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    takeSignalsAsTheyAre();
    const int kept[] = {result, alive};
    closeFilesExcept(kept);
    const QuietErrors quiet; // what the importer or the C library prints on the way to a crash
    bool sent = false;
    try {
        limitChild(limits);
        sent = sendResult(codec.import(path, limits.memory.left()), result);
    } catch (const MemoryNeeded& needed) {
        sent = sendResult(needed, result);
    } catch (const std::exception& reason) {
        sent = sendResult(reason.what(), result);
    }
    ::_exit(sent ? 0 : 1);
}

/// True when the other end was closed, by the end of the child, within the time.
bool waitForEnd(int descriptor, std::chrono::milliseconds time) {
    const auto end = Clock::now() + time;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        struct pollfd watched {
            descriptor, POLLIN, 0
        };
        const int ready = ::poll(&watched, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
        if (ready > 0) return true;
        if (ready == 0 || errno != EINTR) return false;
    }
}

/// The child's exit status; 0 where somebody has turned off waiting for children, so that its result decides.
int statusOf(pid_t child) {
    int status = 0;
    while (::waitpid(child, &status, 0) < 0)
        if (errno != EINTR) return 0;
    return status;
}

bool isInterruption(int signal) { return signal == SIGINT || signal == SIGTERM || signal == SIGHUP; }

/// "20 s", "1.5 s".
std::string secondsText(std::chrono::milliseconds time) {
    std::string text = std::to_string(time.count() / 1000);
    if (time.count() % 1000 != 0) text += '.' + std::to_string(time.count() % 1000 / 100);
    return text + " s";
}

/// Seconds that anybody may allow: a day.
constexpr double LongestImport = 86400;

std::chrono::milliseconds usualTime(const std::filesystem::path& path) {
    const char* const text = std::getenv("KROD_MODEL_SECONDS");
    if (const double seconds = text ? std::strtod(text, nullptr) : 0; seconds > 0)
        return std::chrono::milliseconds(static_cast<std::int64_t>(std::min(seconds, LongestImport) * 1000));
    std::error_code ignored;
    return std::chrono::seconds(20 + (std::filesystem::file_size(path, ignored) >> 20U));
}

ImportResult importInChild(const std::filesystem::path& path, const ModelLimits& limits) {
    const ModelCodec& codec = modelCodec();
    limits.memory.require(path, std::filesystem::file_size(path)); // importers hold all of it
    const Descriptor result = memoryFile("model", {});
    Pipe alive;
    const pid_t child = [&] {
        const SignalPause pause;
        const pid_t made = ::fork();
        if (made == 0) importAndExit(codec, path, limits, result.get(), alive.write.get());
        return made;
    }();
    if (child < 0) fail(path, std::strerror(errno), "");
    alive.write.close();
    const bool inTime = waitForEnd(alive.read.get(), limits.time);
    if (!inTime) ::kill(child, SIGKILL);
    const int status = statusOf(child);
    if (!inTime)
        fail(path, "no end after " + secondsText(limits.time),
             "Large models may need more time: set KROD_MODEL_SECONDS to " +
                 std::to_string(2 * std::chrono::ceil<std::chrono::seconds>(limits.time).count()) +
                 ". A damaged file may never end");
    if (WIFSIGNALED(status) && isInterruption(WTERMSIG(status)))
        throw Failure(Fault::Interrupted, {"", "interrupted", "", "", "", {}});
    if (WIFSIGNALED(status))
        fail(path, "a crash of the importer (" + std::string(::strsignal(WTERMSIG(status))) + ")",
             "The file is probably damaged");
    return receiveResult(result.get());
}

} // namespace

std::uint64_t bytesOf(const Mesh& mesh) noexcept {
    return mesh.positions.size() * sizeof(mesh.positions[0]) + mesh.normals.size() * sizeof(mesh.normals[0]) +
           mesh.colours.size() * sizeof(mesh.colours[0]) + mesh.triangles.size() * sizeof(mesh.triangles[0]);
}

std::vector<std::string> modelExtensions() { return modelCodec().extensions(); }

Model readModel(const std::filesystem::path& path, const ModelLimits& given) {
    checkInputFile(path);
    ModelLimits limits = given;
    if (limits.time.count() == 0) limits.time = usualTime(path);
    try {
        ImportResult result = importInChild(path, limits);
        if (const auto* message = std::get_if<std::string>(&result))
            fail(path, *message, "Check that the file is complete and has its right extension");
        if (const auto* needed =
                std::get_if<MemoryNeeded>(&result)) // as much as was not enough does not help
            limits.memory.refuse(path, std::max(needed->bytes, limits.memory.left() / 2 * 3));
        auto& model = std::get<Model>(result);
        if (model.meshes.empty()) failEmpty(path, model.droppedVertices > 0);
        return std::move(model);
    } catch (const std::system_error& reason) { // what this process lacks
        fail(path, reason.code().message(), "Close other programs, or allow more open files and processes");
    } catch (const std::runtime_error& reason) {
        if (dynamic_cast<const Failure*>(&reason)) throw;
        fail(path, reason.what(), "The file is probably damaged");
    }
}

} // namespace workbench
