// SPDX-License-Identifier: Apache-2.0
#include "Scene.h"

#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/Trace.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace scene {

TraceRecord::TraceRecord() {
    workbench::setTraceLevel(100);
    workbench::setTraceSink([this](int, std::string_view text) { lines.emplace_back(text); });
}

TraceRecord::~TraceRecord() {
    workbench::setTraceLevel(0);
    workbench::setTraceSink({});
}

OutputRecord::OutputRecord() : original(-1), file(-1) {
    std::string name = "/tmp/load-test-XXXXXX";
    std::fflush(stdout);
    original = ::dup(1);
    file = ::mkstemp(name.data());
    if (original < 0 || file < 0) throw std::runtime_error("standard output cannot be recorded");
    ::unlink(name.c_str());
    ::dup2(file, 1);
}

std::string OutputRecord::text() {
    std::string content;
    if (original < 0) return content;
    std::fflush(stdout);
    ::dup2(original, 1);
    ::close(std::exchange(original, -1));
    ::lseek(file, 0, SEEK_SET);
    std::array<char, 4096> part{};
    for (ssize_t got = 0; (got = ::read(file, part.data(), part.size())) > 0;)
        content.append(part.data(), static_cast<std::size_t>(got));
    ::close(file);
    return content;
}

OutputRecord::~OutputRecord() { text(); }

Witness::Witness(std::string key, Listener listener)
    : VParameter(krod::makeValue(0), "witness", {}), key(std::move(key)), listener(std::move(listener)) {}

Witness::~Witness() { listener(key, workbench::CreatorRegistry::entries().size()); }

krod::StrongPtr<krod::VObject> make(std::string_view key, const std::string& name) {
    const auto found = workbench::CreatorRegistry::find(key);
    if (found.size() != 1) throw std::runtime_error("not one creator: " + std::string(key));
    krod::VCreationContext context;
    return found.front().creator->create(name, context);
}

std::vector<krod::StrongPtr<krod::VObject>> makeCatalogue() {
    std::vector<krod::StrongPtr<krod::VObject>> objects;
    for (const std::string_view key : Catalogue) objects.push_back(make(key));
    return objects;
}

void watch(const std::vector<krod::StrongPtr<krod::VObject>>& objects, const Witness::Listener& listener) {
    for (std::size_t row = 0; row < objects.size(); ++row) {
        const krod::StrongPtr<krod::VParameter> witness(
            new Witness(std::string(Catalogue.at(row)), listener));
        objects[row]->slots().addInput("witness", 0, witness);
    }
}

krod::StrongPtr<krod::VParameter> outputOf(const krod::StrongPtr<krod::VObject>& object) {
    return object->slots().output("ImageProcessor");
}

krod::StrongPtr<krod::VValueBase> valueOf(const krod::StrongPtr<krod::VObject>& object) {
    return outputOf(object)->getLocalValue(krod::VValuePool()).value;
}

Processor processorOf(const krod::StrongPtr<krod::VObject>& object) {
    const auto* typed = dynamic_cast<const krod::TypedValue<Processor>*>(&outputOf(object)->value());
    return typed ? typed->value() : Processor();
}

std::size_t creatorCount(workbench::LibraryId library) {
    const auto entries = workbench::CreatorRegistry::entries();
    return static_cast<std::size_t>(std::count_if(
        entries.begin(), entries.end(), [library](const auto& entry) { return entry.library == library; }));
}

workbench::Diagnostic refusal(const std::function<void()>& function) {
    try {
        function();
    } catch (const workbench::Failure& failure) {
        if (failure.fault() != workbench::Fault::Plugin) throw;
        return failure.diagnostic();
    }
    throw std::runtime_error("nothing was refused");
}

bool isInMemory(const std::string& path) {
    if (void* handle = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD)) {
        ::dlclose(handle);
        return true;
    }
    std::ifstream mappings("/proc/self/maps");
    for (std::string line; std::getline(mappings, line);)
        if (line.find(path) != std::string::npos) return true;
    return false;
}

} // namespace scene
