// SPDX-License-Identifier: Apache-2.0
// The modules that can be made, as data.
#pragma once

#include "apps/plime/terminal/Json.h"
#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/PluginManager.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace workbench {

/// One registered creator with its texts. Fields that the creator does not set have no value.
struct CatalogueEntry {
    krod::VCreatorBase* creator = nullptr; ///< lives as long as its plug-in is loaded
    std::string key;                       ///< "Display/CMYK"
    std::optional<std::string> category;   ///< none for creators that are known by their full name only
    std::string name;
    std::optional<std::string> brief; ///< one line
    std::optional<std::string> help;  ///< longer, HTML allowed
    std::optional<std::string> group;
    std::optional<std::string> source;
    int order = 0;
    std::optional<std::string> plugin; ///< name and absolute path of the plug-in; none for the host's own
    std::optional<std::string> path;

    /// The text that means this creator and no other: "Display/Depth@DisplayDepth" where it has a source.
    [[nodiscard]] std::string reference() const { return source ? key + '@' + *source : key; }
};

/// All entries, in the order of their registration.
class Catalogue {
public:
    explicit Catalogue(std::vector<CatalogueEntry> entries) : list(std::move(entries)) {}
    /// Of the creators that are registered now. `status` tells a library by its number, or null.
    [[nodiscard]] static Catalogue registered(const std::function<const PluginStatus*(LibraryId)>& status);

    [[nodiscard]] const std::vector<CatalogueEntry>& entries() const noexcept { return list; }

    /// The entries of "KEY" or "KEY@SOURCE". Throws Failure(Usage), with a suggestion, when there is none.
    [[nodiscard]] std::vector<CatalogueEntry> find(std::string_view keyAndSource) const;
    /// The one entry of "KEY" or "KEY@SOURCE". Throws Failure(Usage) also when several have the key; it
    /// names them all.
    [[nodiscard]] CatalogueEntry one(std::string_view keyAndSource) const;
    /// Whether another entry has the same key.
    [[nodiscard]] bool isAmbiguous(const CatalogueEntry& entry) const;
    /// The shortest text that means the entry: the key, or reference() where the key is ambiguous.
    [[nodiscard]] std::string shortReference(const CatalogueEntry& entry) const;
    /// Every text that can be typed for an entry: keys, and references of ambiguous keys.
    [[nodiscard]] std::vector<std::string> references() const;

private:
    [[nodiscard]] std::string choicesOf(std::string_view key) const;

    std::vector<CatalogueEntry> list;
};

/// Whether a text tells people something: some creators have only the placeholder "todo".
[[nodiscard]] bool saysSomething(const std::optional<std::string>& text);

/// The object that `plime list --json` shows for an entry.
[[nodiscard]] Json toJson(const CatalogueEntry& entry);

} // namespace workbench
