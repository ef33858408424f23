// SPDX-License-Identifier: Apache-2.0
#include "workbench/core/PluginEntry.h"

#include "workbench/platform/ElfFile.h"
#include "workbench/platform/SharedLibrary.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <cctype>
#include <utility>
#include <vector>

namespace workbench {
namespace {

constexpr std::string_view Prefix = "KROD_API_";
constexpr std::string_view Expected = "exactly one symbol KROD_API_<date>__<name>";

std::string quoted(const std::string& text) { return '"' + text + '"'; }

/// Whether somebody meant this symbol to be an entry: the right word in any case, or within a mangled name.
bool looksLikeEntry(const std::string& symbol) {
    std::string upper = symbol;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return upper.find("KROD_API") != std::string::npos;
}

Diagnostic noEntry(const std::vector<std::string>& symbols) {
    Diagnostic message;
    message.what = "is not a plug-in";
    message.expected = Expected;
    message.got = "none";
    const auto near = std::find_if(symbols.begin(), symbols.end(), looksLikeEntry);
    if (near == symbols.end()) return message;
    const std::string readable = demangle(near->c_str());
    message.got = quoted(readable);
    message.advice =
        readable == *near ? "Correct the entry's name" : "Declare the entry with C linkage (extern \"C\")";
    return message;
}

Diagnostic severalEntries(const std::vector<PluginEntry>& entries) {
    Diagnostic message;
    message.what = "is not one plug-in";
    message.expected = Expected;
    for (const PluginEntry& entry : entries)
        message.got += (message.got.empty() ? "" : " and ") + quoted(entry.symbol);
    message.advice = "Build one library for each entry";
    return message;
}

} // namespace

std::optional<PluginEntry> PluginEntry::parse(std::string_view symbol) {
    if (!symbol.starts_with(Prefix)) return std::nullopt;
    const std::string_view rest = symbol.substr(Prefix.size());
    const std::size_t bar = rest.find("__");
    if (bar == std::string_view::npos || bar == 0 || bar + 2 == rest.size()) return std::nullopt;
    return PluginEntry{std::string(symbol), std::string(rest.substr(0, bar)),
                       std::string(rest.substr(bar + 2))};
}

PluginEntry PluginEntry::read(const std::filesystem::path& path) {
    const ElfFile file = ElfFile::inspect(path);
    if (!file.usable()) throw Failure(Fault::Plugin, file.refusal);

    std::vector<PluginEntry> entries;
    for (const std::string& symbol : file.exportedNames)
        if (auto entry = parse(symbol)) entries.push_back(std::move(*entry));
    if (entries.size() == 1) return entries.front();

    Diagnostic message = entries.empty() ? noEntry(file.exportedNames) : severalEntries(entries);
    message.who = path.string();
    throw Failure(Fault::Plugin, std::move(message));
}

} // namespace workbench
