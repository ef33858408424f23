// SPDX-License-Identifier: Apache-2.0
// Documentation pages of the modules, docs/modules, as part of the program.
#pragma once

#include "apps/plime/modules/Catalogue.h"

#include <string>
#include <utility>
#include <vector>

namespace workbench {

/// What this host says about a module, beside the module's own texts.
struct ModulePage {
    std::string key;     ///< "Display/CMYK", or with the source where several have the key
    std::string file;    ///< "docs/modules/CMYK.md"
    std::string summary; ///< the first paragraph, in one line
    std::vector<std::pair<std::string, std::string>> meanings; ///< of the parameters, by name, in their order

    bool tellsOfNaN = false; ///< the module's formula makes values that are no numbers, and the page says so

    /// The first sentence of the summary, without its full stop.
    [[nodiscard]] std::string sentence() const;
    /// A line or more for each parameter, wrapped at so many columns.
    [[nodiscard]] std::string meaningsText(std::size_t columns) const;
};

/// Reads the heading, the first paragraph and the table of parameters out of Markdown.
[[nodiscard]] ModulePage readModulePage(std::string file, std::string_view markdown);

/// The page of a module; null for a module without one.
[[nodiscard]] const ModulePage* pageOf(const CatalogueEntry& entry);

/// Whether the page of a module says that its formula makes values that are no numbers.
[[nodiscard]] bool makesNaN(const CatalogueEntry& entry);

} // namespace workbench
