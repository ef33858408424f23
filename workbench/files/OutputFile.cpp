// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/OutputFile.h"

#include "workbench/report/Failure.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <stdio.h> // renameat2 and RENAME_NOREPLACE
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace workbench {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t BufferSize = std::size_t{1} << 20;

/// One temporary for the signal handler. The path lies in the slot itself, so that no memory is freed under
/// it.
struct TemporarySlot {
    std::atomic<bool> taken{false}, filled{false};
    char path[PATH_MAX]{};
};
std::array<TemporarySlot, 64> temporaries;

/// Beyond the list's length a file is merely not known to the signal handler; the destructor still removes
/// it.
int enterTemporary(const fs::path& path) {
    if (path.native().size() >= PATH_MAX) return -1;
    for (std::size_t i = 0; i < temporaries.size(); ++i) {
        if (temporaries[i].taken.exchange(true)) continue;
        std::memcpy(temporaries[i].path, path.c_str(), path.native().size() + 1);
        temporaries[i].filled = true;
        return static_cast<int>(i);
    }
    return -1;
}

void leaveTemporary(int slot) noexcept {
    if (slot < 0) return;
    temporaries[static_cast<std::size_t>(slot)].filled = false;
    temporaries[static_cast<std::size_t>(slot)].taken = false;
}

bool isOpenHere(const fs::path& temporary) {
    for (const auto& slot : temporaries)
        if (slot.filled && temporary.native() == slot.path) return true;
    return false;
}

bool isFull(int error) { return error == ENOSPC || error == EDQUOT || error == EFBIG; }

std::string adviceFor(int error) {
    if (isFull(error)) return "Make room on the disk, or choose another place";
    if (error == EACCES || error == EPERM || error == EROFS) return "Choose a place where you may write";
    return {};
}

[[noreturn]] void fail(const fs::path& name, std::string what, int error, std::string expected = {}) {
    throw Failure(Fault::Output, {name.string(),
                                  std::move(what),
                                  std::move(expected),
                                  error ? std::strerror(error) : "",
                                  adviceFor(error),
                                  {}});
}

/// The name is cut so that the temporary of a target with a very long name stays below the file system's
/// limit.
fs::path temporaryPrefix(const fs::path& target) {
    return target.parent_path() / ("." + target.filename().string().substr(0, 200) + ".tmp.");
}

enum class Lock { Free, Held, Unknown };

/// Who writes a temporary holds a lock on it, which the system lets go of with the process. Not every file
/// system has locks.
Lock lockOf(const fs::path& temporary) {
    const int file = ::open(temporary.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (file < 0) return Lock::Unknown;
    const int problem = ::flock(file, LOCK_EX | LOCK_NB) == 0 ? 0 : errno;
    ::close(file);
    return problem == 0 ? Lock::Free : problem == EWOULDBLOCK ? Lock::Held : Lock::Unknown;
}

/// A temporary whose process is gone is a remainder of a killed run. Processes of other machines, and those
/// of other containers, cannot be seen here: their locks can. Without locks an hour must have passed.
bool isRemainder(const fs::directory_entry& entry, pid_t process) {
    if (::kill(process, 0) != -1 || errno != ESRCH) return false;
    const Lock lock = lockOf(entry.path());
    if (lock != Lock::Unknown) return lock == Lock::Free;
    std::error_code problem;
    const auto written = entry.last_write_time(problem);
    return !problem && fs::file_time_type::clock::now() - written >= std::chrono::hours(1);
}

void removeRemainders(const fs::path& target) {
    const std::string prefix = temporaryPrefix(target).filename().string();
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(target.parent_path(), ignored)) {
        const std::string found = entry.path().filename().string();
        if (!found.starts_with(prefix)) continue;
        pid_t process = 0;
        const auto [end, parsed] =
            std::from_chars(found.data() + prefix.size(), found.data() + found.size(), process);
        if (parsed != std::errc{} || end != found.data() + found.size() || process <= 0) continue;
        if (isRemainder(entry, process)) ::unlink(entry.path().c_str());
    }
}

/// In a folder with the sticky bit, only the owner of a file or of the folder may replace the file.
bool isKeptByItsFolder(const fs::path& folder, const fs::path& file) {
    struct stat place {
    }, old{};
    if (::stat(folder.c_str(), &place) != 0 || ::stat(file.c_str(), &old) != 0) return false;
    const uid_t user = ::geteuid();
    return (place.st_mode & S_ISVTX) != 0 && user != 0 && user != old.st_uid && user != place.st_uid;
}

} // namespace

fs::path linkTarget(const fs::path& path) {
    constexpr int MostLinks = 40; // as many as Linux follows
    fs::path file = path;
    std::error_code problem;
    for (int i = 0; fs::is_symlink(fs::symlink_status(file, problem)); ++i) {
        if (i == MostLinks) fail(path, "cannot be written, because its links lead in a circle", 0);
        file = file.parent_path() / fs::read_symlink(file, problem);
    }
    return file;
}

OutputFile::OutputFile(const fs::path& target, bool noClobberAsked)
    : name(linkTarget(target)), noClobber(noClobberAsked) {
    checkTarget(target);
    if (name.is_relative()) name = fs::current_path() / name; // a later change of folder must not matter
    createTemporary();
    buffer.reserve(BufferSize);
}

OutputFile::~OutputFile() { discard(); }

void OutputFile::checkTarget(const fs::path& typed) const {
    const std::string who = typed.string();
    if (name.filename().empty() || name.filename() == "." || name.filename() == "..")
        throw Failure(Fault::Output, {who, "cannot be written", "the name of a file", "a folder", "", {}});
    std::error_code problem;
    const fs::path folder = name.has_parent_path() ? name.parent_path() : fs::path(".");
    const auto folderStatus = fs::status(folder, problem);
    if (folderStatus.type() == fs::file_type::not_found)
        throw Failure(Fault::Output,
                      {who,
                       "cannot be written, because the folder " + folder.string() + " does not exist",
                       "",
                       "",
                       "Create it first, or correct the path",
                       {}});
    const auto status = fs::status(name, problem);
    if (!fs::exists(status)) return;
    if (fs::is_directory(status))
        throw Failure(Fault::Output, {who, "cannot be written", "the name of a file", "a folder", "", {}});
    if (!fs::is_regular_file(status))
        throw Failure(
            Fault::Output,
            {who, "cannot be written", "the name of a regular file", "a device, pipe or socket", "", {}});
    if (noClobber)
        throw Failure(Fault::Output, {who,
                                      "exists already and is not replaced",
                                      "",
                                      "",
                                      "Choose another name, or allow replacing",
                                      {}});
    if (::access(name.c_str(), W_OK) != 0) fail(typed, "cannot be written", errno);
    if (isKeptByItsFolder(folder, name))
        fail(typed, "cannot be replaced, because only its owner may do that in the folder " + folder.string(),
             EPERM);
}

void OutputFile::refuseSecondWriter(const char* what) const {
    throw Failure(Fault::Output, {name.string(), what, "", "", "Give each output a name of its own", {}});
}

void OutputFile::createTemporary() {
    removeRemainders(name);
    temporaryName = temporaryPrefix(name).string() + std::to_string(::getpid());
    if (isOpenHere(temporaryName)) refuseSecondWriter("is already being written by this program");
    constexpr int Flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
    descriptor = ::open(temporaryName.c_str(), Flags, 0666);
    if (descriptor < 0 && errno == EEXIST) { // of a process of the same number, gone or in another container
        if (lockOf(temporaryName) == Lock::Held)
            refuseSecondWriter("is already being written by another program");
        ::unlink(temporaryName.c_str());
        descriptor = ::open(temporaryName.c_str(), Flags, 0666);
    }
    if (descriptor < 0) fail(name, "cannot be written", errno);
    slot = enterTemporary(temporaryName);
    ::flock(descriptor, LOCK_EX | LOCK_NB); // for removeRemainders of others
    if (!takeRightsOfTarget()) {
        const int reason = errno;
        discard();
        fail(name, "cannot be given the mode of the file that it replaces", reason);
    }
}

bool OutputFile::takeRightsOfTarget() const {
    struct stat old {};
    if (::stat(name.c_str(), &old) != 0) return true;
    constexpr auto Same = static_cast<uid_t>(-1);
    mode_t mode = old.st_mode & 0777U;
    if (::fchown(descriptor, Same, old.st_gid) != 0) mode = (mode & 0707U) | (mode & 0007U) << 3U;
    if (::fchown(descriptor, old.st_uid, Same) != 0) errno = 0; // only the superuser gives files away
    return ::fchmod(descriptor, mode) == 0;
}

void OutputFile::write(const void* data, std::size_t size) {
    if (failed()) throwFailure();
    const auto* bytes = static_cast<const std::byte*>(data);
    while (size > 0) {
        if (buffer.size() == BufferSize) flush();
        const std::size_t part = std::min(size, BufferSize - buffer.size());
        buffer.insert(buffer.end(), bytes, bytes + part);
        bytes += part;
        size -= part;
    }
}

void OutputFile::flush() {
    if (failed()) throwFailure();
    std::size_t done = 0;
    while (done < buffer.size()) {
        const ssize_t written = ::write(descriptor, buffer.data() + done, buffer.size() - done);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            error = written < 0 ? errno : ENOSPC;
            throwFailure();
        }
        done += static_cast<std::size_t>(written);
    }
    start += buffer.size();
    buffer.clear();
}

void OutputFile::throwFailure() const {
    const bool isKnown =
        isFull(error) && position() > 0; // a library may write into the temporary by its name
    fail(name, "cannot be written completely", error,
         isKnown ? "room for at least " + std::to_string(position()) + " bytes" : "");
}

void OutputFile::seek(std::uint64_t position) {
    if (position == this->position()) return;
    flush();
    if (::lseek(descriptor, static_cast<off_t>(position), SEEK_SET) < 0) {
        error = errno;
        throwFailure();
    }
    start = position;
}

void OutputFile::finish() {
    try {
        flush();
        closeToDisk();
    } catch (...) {
        discard();
        throw;
    }
    moveIntoPlace();
}

void OutputFile::closeToDisk() {
    // Some file systems cannot flush a file (EINVAL); there is nothing more to be done on them.
    int flushed = 0;
    while ((flushed = ::fsync(descriptor)) != 0 && errno == EINTR) continue;
    if (flushed != 0 && errno != EINVAL && errno != EROFS) error = errno;
    if (::close(std::exchange(descriptor, -1)) != 0 && errno != EINTR && error == 0) error = errno;
    if (failed()) throwFailure();
}

void OutputFile::moveIntoPlace() {
    const unsigned flags = noClobber ? RENAME_NOREPLACE : 0;
    int result = ::renameat2(AT_FDCWD, temporaryName.c_str(), AT_FDCWD, name.c_str(), flags);
    if (result != 0 && (errno == EINVAL || errno == ENOSYS)) { // not every file system knows the flag
        if (noClobber && fs::exists(name))
            errno = EEXIST;
        else
            result = ::rename(temporaryName.c_str(), name.c_str());
    }
    if (result != 0) {
        const int reason = errno;
        fail(name,
             std::string(reason == EEXIST ? "has appeared meanwhile and is not replaced"
                                          : "cannot be replaced") +
                 "; the finished file is kept as " + keepBeside().string(),
             reason);
    }
    leaveTemporary(std::exchange(slot, -1));
    temporaryName.clear();
    const int folder = ::open(name.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return; // the file itself is safe; only its entry may be younger than a power failure
    ::fsync(folder);
    ::close(folder);
}

/// Under a name that is free. Where it cannot have one, it cannot be removed either, and stays as it is called.
fs::path OutputFile::keepBeside() {
    constexpr int MostNames = 1000;
    leaveTemporary(std::exchange(slot, -1));
    const fs::path temporary = std::exchange(temporaryName, {});
    for (int number = 1; number <= MostNames; ++number) {
        const std::string mark = ".new" + (number > 1 ? std::to_string(number) : "");
        const fs::path kept = name.parent_path() / (name.stem().string() + mark + name.extension().string());
        if (::renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, kept.c_str(), RENAME_NOREPLACE) == 0)
            return kept;
        if (errno != EEXIST) break;
    }
    return temporary;
}

void OutputFile::discard() noexcept {
    if (descriptor >= 0) ::close(std::exchange(descriptor, -1));
    if (!temporaryName.empty()) ::unlink(temporaryName.c_str());
    temporaryName.clear();
    leaveTemporary(std::exchange(slot, -1));
}

void removeTemporaries() noexcept {
    for (auto& slot : temporaries)
        if (slot.filled) ::unlink(slot.path);
}

} // namespace workbench
