// SPDX-License-Identifier: Apache-2.0
#include "workbench/core/PluginManager.h"

#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/HeldObjects.h"
#include "workbench/core/InputCreatorRegistry.h"
#include "workbench/core/ObjectRegistry.h"
#include "workbench/core/PluginEntry.h"
#include "workbench/platform/SharedLibrary.h"

#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <system_error>
#include <utility>

namespace workbench {
namespace {

/// Numbers are never used again: something of an unloaded library may still be asked for by its number.
std::atomic<LibraryId> lastLibrary{0};

/// What makes two paths one file.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

std::optional<FileIdentity> identify(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino};
}

[[noreturn]] void refuse(const std::string& who, std::string what, std::string advice = {},
                         std::vector<std::string> details = {}) {
    throw Failure(Fault::Plugin, {who, std::move(what), "", "", std::move(advice), std::move(details)});
}

/// Path names are made absolute here, so that nobody searches for them. ".." stays: it may follow a link.
std::string absolutePath(const std::string& path) {
    if (path.empty()) refuse("plug-in", "cannot be loaded without the path of a file");
    const std::filesystem::path whole = std::filesystem::absolute(path);
    const bool climbs = std::find(whole.begin(), whole.end(), "..") != whole.end();
    return (climbs ? whole : whole.lexically_normal()).string();
}

void requireHostDate(const std::string& path, const PluginEntry& entry) {
    const std::string own = krod::VInitialization::hostDate();
    if (entry.date == own) return;
    refuse(path, "has the interface " + entry.date + ", but this host expects " + own,
           "Build the plug-in again with the headers of this host");
}

std::vector<CreatorEntry> creatorsOf(LibraryId library) {
    std::vector<CreatorEntry> entries = CreatorRegistry::entries();
    std::erase_if(entries, [library](const CreatorEntry& entry) { return entry.library != library; });
    return entries;
}

/// The living objects that the creators of a library delete when they go.
std::vector<krod::StrongPtr<krod::VObject>> modulesOf(LibraryId library) {
    const std::vector<CreatorEntry> creators = creatorsOf(library);
    std::vector<krod::StrongPtr<krod::VObject>> modules;
    for (const auto& known : ObjectRegistry::objects()) {
        auto module = known.lock();
        if (!module) continue;
        const auto maker = module->creator();
        if (std::any_of(creators.begin(), creators.end(),
                        [&maker](const CreatorEntry& entry) { return entry.creator == maker.get(); }))
            modules.push_back(std::move(module));
    }
    return modules;
}

void requireNothingHeld(const SharedLibrary& library,
                        const std::vector<krod::StrongPtr<krod::VObject>>& modules) {
    const auto held =
        heldObjects([&library](const void* virtualTable) { return library.contains(virtualTable); }, modules);
    if (held.empty()) return;
    std::size_t count = 0;
    std::string names;
    std::vector<std::string> details;
    for (const auto& [typeName, number] : held) {
        count += number;
        names += (names.empty() ? "" : ", ") + typeName;
        details.push_back(std::to_string(number) + " of " + typeName);
    }
    const bool one = count == 1;
    refuse(library.path().string(),
           "cannot be unloaded — " + std::to_string(count) + (one ? " object" : " objects") + " of it " +
               (one ? "is" : "are") + " still held (" + names + ')',
           one ? "Let go of it first" : "Let go of them first", std::move(details));
}

Diagnostic note(const PluginStatus& status, std::string what) {
    return {status.path, std::move(what), "", "", "", {}};
}

/// A library that leaves a creator behind would leave a pointer to nowhere. Says how many were left.
std::size_t purgeCreators(LibraryId library) {
    const std::vector<CreatorEntry> left = creatorsOf(library);
    for (const CreatorEntry& entry : left) CreatorRegistry::remove(*entry.creator);
    return left.size();
}

} // namespace

struct PluginManager::Implementation {
    /// A library that was loaded and is still in memory.
    struct Resident {
        LibraryId id;
        FileIdentity file;
        SharedLibrary library;
        std::size_t inputCreators; ///< registered while loading
        int count = 1;             ///< 0: pinned
    };

    LibraryId load(PluginStatus& status);
    void unload(Resident& resident);

    Resident* residentFile(const FileIdentity& file);
    PluginStatus* find(LibraryId library);
    void requireFreeName(const PluginStatus& status);
    SharedLibrary open(const PluginStatus& status, const PluginEntry& entry);
    void remember(PluginStatus status);

    Handshake handshake;
    Trial trial;
    std::vector<PluginStatus> statuses;
    std::vector<Resident> residents; // in the order of loading
};

PluginManager::Implementation::Resident*
PluginManager::Implementation::residentFile(const FileIdentity& file) {
    const auto found = std::find_if(residents.begin(), residents.end(),
                                    [&file](const Resident& resident) { return resident.file == file; });
    return found == residents.end() ? nullptr : &*found;
}

PluginStatus* PluginManager::Implementation::find(LibraryId library) {
    const auto found = std::find_if(statuses.begin(), statuses.end(), [library](const PluginStatus& status) {
        return status.library == library && library != 0;
    });
    return found == statuses.end() ? nullptr : &*found;
}

/// One entry for each file: a new try takes the place of an earlier one that has left nothing in memory.
void PluginManager::Implementation::remember(PluginStatus status) {
    const auto earlier = std::find_if(statuses.begin(), statuses.end(), [&status](const PluginStatus& other) {
        return other.path == status.path &&
               (other.state == PluginStatus::State::Refused || other.state == PluginStatus::State::Unloaded);
    });
    if (earlier == statuses.end())
        statuses.push_back(std::move(status));
    else
        *earlier = std::move(status);
}

void PluginManager::Implementation::requireFreeName(const PluginStatus& status) {
    for (const Resident& resident : residents) {
        const PluginStatus& first = *find(resident.id);
        if (first.name != status.name) continue;
        if (first.path == status.path)
            refuse(status.path, "is another file than the one that is loaded from this path",
                   "Unload the plug-in first");
        refuse(status.path,
               "is not loaded, because the plug-in \"" + status.name + "\" is already loaded from " +
                   first.path,
               "Unload that one first");
    }
}

/// Foreign code runs from here on: static initialisers, the load hook, the entry.
SharedLibrary PluginManager::Implementation::open(const PluginStatus& status, const PluginEntry& entry) {
    SharedLibrary library(status.path);
    const auto ask = library.function<int(krod::VInitialization*)>(entry.symbol);
    if (ask == nullptr) refuse(status.path, "has lost its entry " + entry.symbol + " while it was loaded");
    const auto host = handshake ? handshake(entry.date) : std::make_unique<krod::VInitialization>(entry.date);
    const int verdict = ask(host.get());
    if (verdict > 0) return library;
    const Unloading unloading = library.close();
    std::vector<std::string> details;
    if (!unloading.unmapped) details.push_back("It cannot be removed from memory: " + unloading.reason + '.');
    refuse(status.path,
           "has an entry that answers " + std::to_string(verdict) +
               ", but this host expects a number above 0",
           "Build the plug-in again with the headers of this host", std::move(details));
}

LibraryId PluginManager::Implementation::load(PluginStatus& status) {
    const std::optional<FileIdentity> file = identify(status.path);
    if (Resident* resident = file ? residentFile(*file) : nullptr) {
        if (resident->count == 0)
            refuse(status.path, "cannot be loaded again: it was unloaded, but is still in memory",
                   "Start the program again");
        ++resident->count;
        return resident->id;
    }
    const PluginEntry entry = PluginEntry::read(status.path);
    status.name = entry.name;
    status.date = entry.date;
    requireHostDate(status.path, entry);
    requireFreeName(status);
    if (trial) trial(status.path);

    const LibraryId id = ++lastLibrary;
    const std::size_t inputCreators = InputCreatorRegistry::count();
    const LibraryScope scope(id);
    SharedLibrary library = open(status, entry);
    residents.push_back({id, file.value_or(FileIdentity{}), std::move(library),
                         InputCreatorRegistry::count() - inputCreators});
    status.library = id;
    status.state = PluginStatus::State::Loaded;
    status.creators = creatorsOf(id).size();
    if (status.creators == 0) status.reason = note(status, "is loaded, but registers no creator");
    remember(status);
    return id;
}

void PluginManager::Implementation::unload(Resident& resident) {
    auto modules = modulesOf(resident.id);
    requireNothingHeld(resident.library, modules);
    for (const auto& module : modules) module->slots().clearOutputs();
    modules.clear();

    const LibraryId id = resident.id;
    const std::size_t inputCreators = InputCreatorRegistry::count();
    const LibraryScope scope(id);
    const Unloading unloading = resident.library.close();
    PluginStatus& status = *find(id);
    if (!unloading.unmapped) {
        status.state = PluginStatus::State::Pinned;
        status.reason = note(status, "was unloaded, but is still in memory: " + unloading.reason);
        resident.count = 0;
        return;
    }
    status.state = PluginStatus::State::Unloaded;
    status.reason.reset();
    const std::size_t withdrawn = inputCreators - InputCreatorRegistry::count();
    const std::size_t left =
        purgeCreators(id) + (resident.inputCreators - std::min(resident.inputCreators, withdrawn));
    if (left != 0)
        status.reason = note(status, "was unloaded, but " + std::to_string(left) +
                                         " of its creators had not been withdrawn");
    std::erase_if(residents, [id](const Resident& other) { return other.id == id; });
}

PluginManager::PluginManager() : implementation(std::make_unique<Implementation>()) {}

PluginManager::~PluginManager() {
    auto& residents = implementation->residents;
    for (std::size_t left = residents.size(); left-- > 0;) {
        try {
            if (residents[left].count > 0) implementation->unload(residents[left]);
        } catch (const Failure&) {
            continue; // somebody still holds objects of it, so that its code has to stay
        }
    }
    static auto* const kept = new std::vector<SharedLibrary>; // never destroyed, so that it closes nothing
    for (auto& resident : residents) kept->push_back(std::move(resident.library));
}

void PluginManager::setHandshake(Handshake handshake) { implementation->handshake = std::move(handshake); }
void PluginManager::setTrial(Trial trial) { implementation->trial = std::move(trial); }

LibraryId PluginManager::load(const std::string& path) {
    PluginStatus status;
    try {
        status.path = absolutePath(path);
        return implementation->load(status);
    } catch (const Failure& failure) {
        status.reason = failure.diagnostic();
        implementation->remember(std::move(status));
        throw;
    }
}

void PluginManager::loadFolder(const std::string& folder) {
    std::vector<std::string> files;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(absolutePath(folder), error), end; !error && entry != end;
         entry.increment(error))
        if (entry->path().extension() == ".so") files.push_back(entry->path().string());
    if (error) refuse(folder, "cannot be read: " + error.message());
    std::sort(files.begin(), files.end());
    for (const std::string& file : files) {
        try {
            load(file);
        } catch (const Failure&) {
            continue; // status() tells
        }
    }
}

void PluginManager::unload(LibraryId library) {
    auto& residents = implementation->residents;
    const auto found = std::find_if(residents.begin(), residents.end(), [library](const auto& resident) {
        return resident.id == library && resident.count > 0;
    });
    if (found == residents.end()) refuse("plug-in number " + std::to_string(library), "is not loaded");
    if (found->count > 1)
        --found->count;
    else
        implementation->unload(*found);
}

const std::vector<PluginStatus>& PluginManager::status() const noexcept { return implementation->statuses; }

const PluginStatus* PluginManager::find(LibraryId library) const noexcept {
    return implementation->find(library);
}

} // namespace workbench
