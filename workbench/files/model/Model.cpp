// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/Model.h"

#include "workbench/files/InputKind.h"
#include "workbench/files/Reason.h"
#include "workbench/files/codec/CodecLibrary.h"
#include "workbench/files/codec/ModelCodec.h"
#include "workbench/files/codec/QuietErrors.h"
#include "workbench/files/model/ModelTransfer.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <new>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace workbench {
namespace {

using Clock = std::chrono::steady_clock;

/// A file descriptor that is closed at the end of its scope.
class Descriptor {
public:
    explicit Descriptor(int number) : descriptor(number) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    void close() {
        if (descriptor >= 0) ::close(std::exchange(descriptor, -1));
    }
    [[nodiscard]] int get() const { return descriptor; }

private:
    int descriptor;
};

/// Opened before the fork, so that the child takes no lock of the dynamic linker.
const ModelCodec& modelCodec() {
    static const auto factory = reinterpret_cast<const ModelCodec* (*)()>(
        codecFunction("krod_model_codec.so", "krodModelCodec", "libassimp5"));
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

std::string megabytes(std::uint64_t bytes) { return std::to_string(bytes >> 20) + " MiB"; }

/// The address space that this process uses already counts against the limit of the child, which begins as
/// its copy.
void limitMemory(std::uint64_t memory) {
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t limit = pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE)) + memory;
    const struct rlimit both { limit, limit };
    ::setrlimit(RLIMIT_AS, &both);
    const struct rlimit none { 0, 0 };
    ::setrlimit(RLIMIT_CORE, &none);
}

/// The child: imports, sends and ends without running any destructor of the parent's objects.
[[noreturn]] void importAndExit(const ModelCodec& codec, const std::filesystem::path& path,
                                std::uint64_t memory, int result) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (const int number : {SIGINT, SIGTERM, SIGSEGV, SIGABRT, SIGBUS, SIGFPE}) ::signal(number, SIG_DFL);
    const QuietErrors quiet; // what the importer or the C library prints on the way to a crash
    bool sent = false;
    try {
        limitMemory(memory);
        sent = sendResult(codec.import(path), result);
    } catch (const std::bad_alloc&) {
        sent = sendResult("more than " + megabytes(memory) + " of memory needed", result);
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

ImportResult importInChild(const std::filesystem::path& path, const ModelLimits& limits) {
    const ModelCodec& codec = modelCodec();
    const Descriptor result(::memfd_create("model", MFD_CLOEXEC));
    int ends[2] = {-1, -1};
    if (result.get() < 0 || ::pipe2(ends, O_CLOEXEC) != 0) fail(path, std::strerror(errno), "");
    const Descriptor alive(ends[0]);
    Descriptor childsEnd(ends[1]);
    const pid_t child = ::fork();
    if (child < 0) fail(path, std::strerror(errno), "");
    if (child == 0) importAndExit(codec, path, limits.memory, result.get());
    childsEnd.close();
    const bool inTime = waitForEnd(alive.get(), limits.time);
    if (!inTime) ::kill(child, SIGKILL);
    const int status = statusOf(child);
    if (!inTime)
        fail(path, "no end after " + std::to_string(limits.time.count()) + " ms",
             "The file is probably damaged");
    if (WIFSIGNALED(status))
        fail(path, "a crash of the importer (" + std::string(::strsignal(WTERMSIG(status))) + ")",
             "The file is probably damaged");
    return receiveResult(result.get());
}

} // namespace

Model readModel(const std::filesystem::path& path, const ModelLimits& limits) {
    checkInputFile(path);
    try {
        ImportResult result = importInChild(path, limits);
        if (const auto* message = std::get_if<std::string>(&result))
            fail(path, *message, "Check that the file is complete and has its right extension");
        auto& model = std::get<Model>(result);
        if (model.meshes.empty()) failEmpty(path, model.droppedVertices > 0);
        return std::move(model);
    } catch (const std::runtime_error& reason) {
        if (dynamic_cast<const Failure*>(&reason)) throw;
        fail(path, reason.what(), "The file is probably damaged");
    }
}

} // namespace workbench
