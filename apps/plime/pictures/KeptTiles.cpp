// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/KeptTiles.h"

#include "apps/plime/commandline/Help.h"
#include "apps/plime/pictures/FileStamp.h"
#include "workbench/gl/RenderTarget.h"

namespace workbench {
namespace {

/// What a failure adds when finished tiles are left.
Diagnostic withHint(Diagnostic message, const KeptWork& kept) {
    const auto& side = kept.attempt.side;
    message.details.push_back("Finished tiles are kept in " + kept.journal.folder().string() +
                              "; continue with the same command" +
                              (side ? ", --tile " + std::to_string(*side) : "") + " and --resume");
    return message;
}

} // namespace

std::string jobText(const Session& session, const RenderSession& rendering, const std::string& network,
                    const std::vector<const ModuleInstance*>& modules, const std::filesystem::path& file) {
    std::string text = versionText() + network + '\n' + rendering.driver() +
                       (session.options().strictGlsl ? " strict\n" : "\n") +
                       shaderFileStamps(session.shaderFolders());
    if (!file.empty()) text += fileStamp(file);
    for (const ModuleInstance* module : modules) {
        const CatalogueEntry& entry = module->entry();
        text += entry.plugin.value_or("") + '\n' + (entry.path ? fileStamp(*entry.path) : "");
    }
    return text;
}

void keepTilesDuring(Report& report, const KeptWork& kept, const std::function<void()>& work) {
    TileJournal& journal = kept.journal;
    const std::string parts = journal.folder().string();
    if (journal.foundAnotherJob())
        report.warning({parts,
                        "its tiles are of other work: input, parameters, view, tiles, driver or program have "
                        "changed; all tiles are made anew",
                        "",
                        "",
                        "",
                        {}});
    try {
        work();
    } catch (const GraphicsMemoryFailure& failure) { // stays one, so that smaller tiles are tried
        if (!journal.holdsTiles()) throw;
        throw GraphicsMemoryFailure(withHint(failure.diagnostic(), kept));
    } catch (const Failure& failure) {
        if (!journal.holdsTiles()) throw;
        throw Failure(failure.fault(), withHint(failure.diagnostic(), kept));
    }
    journal.remove();
    if (kept.resume)
        report.detail(std::to_string(journal.takenCount()) + " of " + std::to_string(kept.tiles) +
                    " tiles taken from " + parts + '.');
}

} // namespace workbench
