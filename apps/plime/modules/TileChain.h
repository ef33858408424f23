// SPDX-License-Identifier: Apache-2.0
// Tile processors in the order of their work.
#pragma once

#include "apps/plime/modules/Catalogue.h"
#include "apps/plime/modules/ModuleInstance.h"

#include "host/rendering/ImageTileProcessor.h"

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace workbench {

/// One module as a source of a tile processor.
class TileStep {
public:
    /// Whether the module has an output of a tile processor.
    [[nodiscard]] static bool fits(const ModuleInstance& module);
    /// The module is borrowed. Throws Failure(Usage) when it has no output of a tile processor.
    explicit TileStep(const ModuleInstance& module);

    /// Sends the module a request, its parameters read in the pool. Works as inTheNameOf the
    /// module; Failure(Partial), too, when it reports no success.
    void update(const krod::VValuePool& pool) const;
    /// What the module's output holds at the moment. Throws Failure(Partial) when it is empty.
    [[nodiscard]] krod::StrongPtr<krod::ImageTileProcessor> processor() const;

private:
    const ModuleInstance& module;
    krod::StrongPtr<krod::VParameter> output;
};

/// The modules of `--with`, made by the input creators that plug-ins offer for tile processors.
class TileChain {
public:
    using Modules = std::vector<std::shared_ptr<ModuleInstance>>;

    /// Makes the modules. Throws Failure(Usage) for a module that is no source of tile processors.
    TileChain(const Catalogue& catalogue, const std::vector<ModuleRequest>& requests, Limits limits);
    /// Takes modules that are made; one may work several times. Throws Failure(Usage) as above.
    explicit TileChain(Modules modules);

    [[nodiscard]] bool empty() const noexcept { return modules.empty(); }
    /// The modules, in the order of their work.
    [[nodiscard]] const Modules& instances() const noexcept { return modules; }

    /// Updates every module and takes its processor. Before the first tile.
    void prepare();
    /// Whether one of the processors draws with OpenGL. After prepare().
    [[nodiscard]] bool drawsWithOpenGL() const;
    /// The first module whose shader works with the place in the tile beyond looking up its own pixel, so that
    /// a picture that is cut comes out differently; null when there is none. After prepare().
    [[nodiscard]] const ModuleInstance* dependentOnTile() const;
    /// Whether the formula of one of the modules makes values that are no numbers.
    [[nodiscard]] bool makesNaN() const;
    /// Has every processor that draws with OpenGL draw one pixel, so that programs are compiled. Throws as
    /// process().
    void compile() const;
    /// Runs every processor over the tile, each as inTheNameOf its module. A shader that does not compile is
    /// named by the parameter and the file that it comes from; one that writes no colour, or takes what nobody gives
    /// it, is warned of, once.
    void process(krod::ImageTile& tile) const;

private:
    void process(std::size_t index, krod::ImageTile& tile) const;
    [[nodiscard]] std::string authorOf(std::size_t index) const;
    void warnOfProgram(std::size_t index) const;

    Modules modules;
    std::vector<krod::StrongPtr<krod::ImageTileProcessor>> processors;
    krod::VValuePool pool;
    mutable std::set<std::size_t> warned; ///< processors whose programs were looked at
};

} // namespace workbench
