// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/modules/Catalogue.h"

#include "apps/plime/terminal/Suggest.h"

#include <algorithm>

namespace workbench {
namespace {

CatalogueEntry entryOf(krod::VCreatorBase& creator, const PluginStatus* plugin) {
    const krod::VCreatorProperties& texts = creator.properties();
    CatalogueEntry entry;
    entry.creator = &creator;
    entry.key = creator.keyname();
    entry.category = texts.category;
    entry.name = creator.name();
    entry.brief = texts.description;
    entry.help = texts.help;
    entry.group = texts.group;
    entry.source = texts.source;
    entry.order = creator.order();
    if (plugin) {
        entry.plugin = plugin->name;
        entry.path = plugin->path;
    }
    return entry;
}

} // namespace

Catalogue Catalogue::registered(const std::function<const PluginStatus*(LibraryId)>& status) {
    std::vector<CatalogueEntry> entries;
    for (const CreatorEntry& registered : CreatorRegistry::entries())
        entries.push_back(entryOf(*registered.creator, status(registered.library)));
    return Catalogue(std::move(entries));
}

std::vector<CatalogueEntry> Catalogue::find(std::string_view keyAndSource) const {
    std::vector<CatalogueEntry> found;
    std::ranges::copy_if(list, std::back_inserter(found), [&](const CatalogueEntry& entry) {
        return keyAndSource == entry.key || (entry.source && keyAndSource == entry.reference());
    });
    if (!found.empty()) return found;
    const std::string choices = choicesOf(keyAndSource.substr(0, keyAndSource.find('@')));
    if (!choices.empty())
        throw Failure(Fault::Usage,
                      {std::string(keyAndSource), "is not the source of a module", choices, "", "", {}});
    const std::string otherwise =
        list.empty() ? "No plug-in is loaded; see \"plime doctor\"" : "See \"plime list\"";
    throw Failure(Fault::Usage, {std::string(keyAndSource),
                                 "is not the key of a module",
                                 "",
                                 "",
                                 didYouMean(keyAndSource, references(), otherwise),
                                 {}});
}

CatalogueEntry Catalogue::one(std::string_view keyAndSource) const {
    const std::vector<CatalogueEntry> found = find(keyAndSource);
    if (found.size() == 1) return found.front();
    throw Failure(Fault::Usage, {std::string(keyAndSource),
                                 "is the key of several modules",
                                 choicesOf(keyAndSource),
                                 "the bare key",
                                 "",
                                 {}});
}

std::string Catalogue::choicesOf(std::string_view key) const {
    std::string choices;
    for (const CatalogueEntry& entry : list)
        if (entry.key == key) choices += (choices.empty() ? "" : " or ") + entry.reference();
    return choices;
}

bool Catalogue::isAmbiguous(const CatalogueEntry& entry) const {
    return std::ranges::count(list, entry.key, &CatalogueEntry::key) > 1;
}

std::string Catalogue::shortReference(const CatalogueEntry& entry) const {
    return isAmbiguous(entry) ? entry.reference() : entry.key;
}

std::vector<std::string> Catalogue::references() const {
    std::vector<std::string> texts;
    for (const CatalogueEntry& entry : list) {
        if (std::ranges::find(texts, entry.key) == texts.end()) texts.push_back(entry.key);
        if (isAmbiguous(entry)) texts.push_back(entry.reference());
    }
    return texts;
}

bool saysSomething(const std::optional<std::string>& text) {
    return text && !text->empty() && *text != "todo";
}

Json toJson(const CatalogueEntry& entry) {
    return Json{{"key", entry.key},
                {"category", jsonText(entry.category)},
                {"name", entry.name},
                {"short", jsonText(entry.brief)},
                {"help", jsonText(entry.help)},
                {"group", jsonText(entry.group)},
                {"source", jsonText(entry.source)},
                {"order", entry.order},
                {"plugin", jsonText(entry.plugin)},
                {"path", jsonText(entry.path)}};
}

} // namespace workbench
