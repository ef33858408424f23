// SPDX-License-Identifier: Apache-2.0
// Check that no output of a command replaces one of its inputs or another output.
#pragma once

#include "apps/plime/modules/ModuleInstance.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace workbench {

class Session;

/// Collects what a command reads and what it writes, and compares the files by their identity on the disk, so that
/// hard and symbolic links count as the file that they lead to. Asked before any work; there is no option against
/// it.
class OutputCheck {
public:
    /// `asked` is what leads to the outputs, "-o {stem}.exr", and `advice` how to choose others; for messages.
    OutputCheck(std::string asked, std::string advice) : asked(std::move(asked)), advice(std::move(advice)) {}

    /// A file that is read. Empty names are passed over.
    void addInput(const std::string& path);
    /// The files of a module: its "file", those that this one names, and those that its texts were read from.
    void addInputs(const ModuleInstance& module);
    /// The plug-ins and shader files of the session.
    void addInputs(Session& session);
    /// A picture, and the folder that keeps its tiles; `purpose` tells it apart from others in messages.
    void addPicture(const std::string& path, const std::string& purpose);
    /// The file of --save-network.
    void addNetwork(const std::string& path);
    /// Throws Failure(Usage) that names an output which is an input or another output, too.
    void require() const;

private:
    /// Device and number of a file; of one that does not exist, those of its folder, and its name.
    using Identity = std::tuple<std::uint64_t, std::uint64_t, std::string>;
    struct File {
        std::string path, purpose, asked;
        Identity identity, folder;
    };
    [[nodiscard]] static Identity identityOf(const std::filesystem::path& path);
    [[nodiscard]] static File fileOf(const std::string& path, std::string purpose, std::string asked);
    [[noreturn]] void refuseInput(const File& output, const File& input) const;
    [[noreturn]] void refuseSecond(const File& output, const File& other) const;
    void requireNotNamed(const File& output) const;
    [[noreturn]] void refusePlace(const File& file, const File& tiles) const;

    std::string asked, advice;
    std::vector<File> inputs, outputs;
    std::vector<File> folders;       ///< of kept tiles
    std::vector<std::string> models; ///< may name further files
};

} // namespace workbench
