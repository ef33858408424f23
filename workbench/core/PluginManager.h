// SPDX-License-Identifier: Apache-2.0
// Loads plug-ins, knows why not, and really unloads them.
#pragma once

#include "host/core/VInitialization.h"
#include "workbench/memory/LibraryScope.h"
#include "workbench/report/Failure.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

/// What is known of a plug-in library that was tried.
struct PluginStatus {
    enum class State {
        Loaded,   ///< its creators are registered
        Refused,  ///< not loaded; `reason` says why
        Unloaded, ///< was loaded, and is gone from memory
        Pinned,   ///< was closed but is still mapped; `reason` says so; it is not loaded again
    };
    LibraryId library = 0; ///< 0 when it was never loaded
    std::string path;      ///< absolute
    std::string name;      ///< from the entry's symbol: "tovar_plime"; empty when there is none
    std::string date;      ///< from the entry's symbol: "2022_Feb_15"
    State state = State::Refused;
    std::optional<Diagnostic> reason; ///< why it is not loaded, or what is odd about it although it is
    std::size_t creators = 0;         ///< registered while loading
};

/// The plug-in manager. One per process; used from one thread.
///
/// load() checks what can be checked before any foreign code runs: absolute path, regular file, an ELF
/// library of this machine, complete, with exactly one entry KROD_API_<date>__<name> of the host's date. Then
/// the library is opened, its entry is asked, and a verdict that is not above 0 closes it again.
class KROD_API PluginManager {
public:
    /// Makes the handshake object for a library; the default one gives the host's own verdict. For tests and
    /// tools.
    using Handshake = std::function<std::unique_ptr<krod::VInitialization>(const std::string& entryDate)>;

    PluginManager();
    PluginManager(const PluginManager&) = delete;
    PluginManager& operator=(const PluginManager&) = delete;
    /// Unloads what can be unloaded, last loaded first; what is still held stays in memory.
    ~PluginManager();

    void setHandshake(Handshake handshake);
    /// Is asked about an absolute path right before any code of that library runs in this process, and throws
    /// Failure(Fault::Plugin) for one that is not to be loaded. Without one, every library is.
    using Trial = std::function<void(const std::string& path)>;
    void setTrial(Trial trial);

    /// Loads a library and returns its number, a new one for each loading. A relative path is taken from the
    /// current folder and never searched for. The same file again is counted, not loaded twice; of two files
    /// with one entry name the first wins. Throws Failure(Fault::Plugin) with the reason, and remembers it.
    LibraryId load(const std::string& path);
    /// Loads every "*.so" of a folder in the order of their names. Nothing is thrown for a library: see
    /// status(). Throws Failure(Fault::Plugin) when the folder itself cannot be read.
    void loadFolder(const std::string& folder);
    /// Takes one count away; the last one unloads. First the living objects of the library are counted: when
    /// somebody holds one that is neither a creator nor a module, or the value of an output that holds one,
    /// throws Failure(Fault::Plugin), and everything stays as it was, loaded and usable. Then outputs are
    /// emptied and the library is closed: its creators delete their modules, held or not, and withdraw. The
    /// state afterwards is Unloaded, or Pinned when the library is still in memory.
    void unload(LibraryId library);

    /// Everything tried, one entry for each file, in order. Valid until the next load.
    [[nodiscard]] const std::vector<PluginStatus>& status() const noexcept;
    /// The status of one library, or null. Valid until the next load.
    [[nodiscard]] const PluginStatus* find(LibraryId library) const noexcept;

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation;
};

} // namespace workbench
