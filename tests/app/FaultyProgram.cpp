// SPDX-License-Identifier: Apache-2.0
#include "tests/app/FaultyProgram.h"

#include <fstream>
#include <utility>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace {

Environment withLibrary(Environment environment) {
    environment["LD_PRELOAD"] = APP_FAULTS;
    return environment;
}

std::string faultText(const std::string& call, int number, const std::string& what) {
    return call + ':' + std::to_string(number) + ':' + what;
}

/// Mounts of its own; who may not have them outright may as the first user of a name space of its own.
bool haveOwnMounts() {
    const std::string user = "0 " + std::to_string(::getuid()) + " 1";
    if (::unshare(CLONE_NEWNS) != 0) {
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
        std::ofstream("/proc/self/uid_map") << user;
    }
    return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

} // namespace

Environment failing(const std::string& call, int number, int error) {
    return withLibrary({{"KROD_FAULT", faultText(call, number, std::to_string(error))}});
}

Environment signalled(const std::string& call, int number, int signal, int times) {
    const std::string what = std::string(static_cast<std::size_t>(times), 's') + std::to_string(signal);
    return withLibrary({{"KROD_FAULT", faultText(call, number, what)}});
}

Environment withTexturesUpTo(int samples) {
    return withLibrary({{"KROD_TEXTURE_LIMIT", std::to_string(samples)}});
}

Environment inAStorm() { return withLibrary({{"KROD_STORM", "1"}}); }

int callsOf(const Words& words, const std::string& call, const std::filesystem::path& scratch) {
    Environment environment = withLibrary({{"KROD_FAULT", faultText(call, -1, "0")}});
    environment["KROD_CALLS"] = scratch.string();
    const Result result = run(Call{words, environment});
    EXPECT_EQ(result.code, 0) << result.error;
    int count = 0;
    std::ifstream(scratch) >> count;
    std::filesystem::remove(scratch);
    return count;
}

SmallDisk::SmallDisk(std::filesystem::path place, std::size_t bytes) : folder(std::move(place)) {
    const std::string size = "size=" + std::to_string(bytes);
    mounted = haveOwnMounts() && ::mount("tmpfs", folder.c_str(), "tmpfs", 0, size.c_str()) == 0;
}

SmallDisk::~SmallDisk() {
    if (mounted) ::umount(folder.c_str());
}
