// SPDX-License-Identifier: Apache-2.0
#include "workbench/validate/Guest.h"

#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/Trace.h"
#include "workbench/memory/LivingObjects.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

#include <sys/mman.h>
#include <unistd.h>

namespace workbench::validate {

krod::StrongPtr<krod::VObject> Maker::make(const std::string& name) const {
    krod::VCreationContext context;
    auto object = creator->create(name, context);
    if (!object) throw std::runtime_error(label + " makes no object");
    return object;
}

Guest::Guest(const std::string& path) : plugins(new PluginManager), id(plugins->load(path)) {}

std::vector<Maker> makersOf(LibraryId library) {
    std::vector<Maker> makers;
    for (const CreatorEntry& entry : CreatorRegistry::entries())
        if (entry.library == library) {
            const auto& source = entry.creator->properties().source;
            makers.push_back({entry.creator, entry.creator->keyname() + (source ? '@' + *source : "")});
        }
    return makers;
}

std::vector<Maker> Guest::makers() const { return makersOf(id); }

std::size_t Guest::livingObjects() const {
    const auto ranges = mappingsOf(plugins->find(id)->path);
    const auto living =
        workbench::livingObjects([&](const void* virtualTable) { return isInside(ranges, virtualTable); });
    return static_cast<std::size_t>(std::ranges::count(living, false, &LivingObject::inStaticStorage));
}

const PluginStatus& Guest::unload() {
    plugins->unload(id);
    return *plugins->find(id);
}

std::vector<AddressRange> mappingsOf(const std::string& path) {
    const std::string file = std::filesystem::canonical(path).string();
    std::vector<AddressRange> ranges;
    std::ifstream mappings("/proc/self/maps");
    for (std::string line; std::getline(mappings, line);)
        if (line.ends_with(file))
            ranges.push_back(
                {std::stoull(line, nullptr, 16), std::stoull(line.substr(line.find('-') + 1), nullptr, 16)});
    return ranges;
}

bool isInside(const std::vector<AddressRange>& ranges, const void* address) {
    return std::ranges::any_of(ranges, [=](const AddressRange& range) { return range.contains(address); });
}

TraceRecord::TraceRecord(Listener listener) {
    setTraceLevel(100);
    setTraceSink([this, heard = std::move(listener)](int, std::string_view text) {
        lines.emplace_back(text);
        if (heard) heard(text);
    });
}

TraceRecord::~TraceRecord() {
    setTraceLevel(0);
    setTraceSink({});
}

OutputRecord::OutputRecord() : original(::dup(1)), file(::memfd_create("output", MFD_CLOEXEC)) {
    std::fflush(stdout);
    if (file < 0 || ::dup2(file, 1) < 0) throw std::runtime_error("standard output cannot be recorded");
}

std::string OutputRecord::text() {
    std::string content;
    if (file < 0) return content;
    std::fflush(stdout);
    if (original >= 0) {
        ::dup2(original, 1);
        ::close(std::exchange(original, -1));
    }
    ::lseek(file, 0, SEEK_SET);
    std::array<char, 4096> part{};
    for (ssize_t got = 0; (got = ::read(file, part.data(), part.size())) > 0;)
        content.append(part.data(), static_cast<std::size_t>(got));
    ::close(std::exchange(file, -1));
    return content;
}

OutputRecord::~OutputRecord() { text(); }

} // namespace workbench::validate
