// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/modules/TileChain.h"

#include "apps/plime/modules/ModulePages.h"
#include "apps/plime/modules/ShaderFacts.h"
#include "workbench/core/InputCreatorRegistry.h"
#include "workbench/gl/DrawingWatch.h"

#include "host/core/VActionNotifier.h"
#include "host/gl/GLImageTileProcessor.h"

#include <algorithm>

namespace workbench {
namespace {

using Processor = krod::StrongPtr<krod::ImageTileProcessor>;

/// The output of a tile processor, or nothing.
krod::StrongPtr<krod::VParameter> processorOutput(const krod::VObject& object) {
    for (const auto& output : object.slots().outputs())
        if (output.parameter->value().type() == typeid(Processor)) return output.parameter;
    return {};
}

Failure notATileProcessor(const std::string& key) {
    std::string known;
    for (const krod::VInputCreatorBase* offered : InputCreatorRegistry::find(typeid(Processor)))
        known += (known.empty() ? "" : ", ") + offered->creator().keyname();
    return Failure(Fault::Usage,
                   {key,
                    "is no tile processor",
                    known.empty() ? "one" : "one of " + known,
                    "",
                    key.starts_with("Display/") ? "Displays go behind --display of \"plime render\""
                    : key.starts_with("Scene/") ? "Scenes are the INPUT of \"plime render\""
                                                : "",
                    {}});
}

/// The program of a processor that draws with OpenGL; null for others.
const krod::GLImageTileProcessor* shaderOf(const Processor& processor) {
    return dynamic_cast<const krod::GLImageTileProcessor*>(processor.get());
}

bool isOffered(const krod::VCreatorBase* creator) {
    const auto offered = InputCreatorRegistry::find(typeid(Processor));
    return std::ranges::any_of(offered, [&](const auto* input) { return &input->creator() == creator; });
}

} // namespace

bool TileStep::fits(const ModuleInstance& module) {
    return static_cast<bool>(processorOutput(module.object()));
}

TileStep::TileStep(const ModuleInstance& module) : module(module), output(processorOutput(module.object())) {
    if (!output) throw notATileProcessor(module.entry().key);
}

void TileStep::update(const krod::VValuePool& pool) const {
    krod::VRequest request(pool);
    bool done = false;
    inTheNameOf(module, [&] { done = module.object().update(request, 1.0); });
    if (!done)
        throw Failure(Fault::Partial,
                      {module.entry().key, "could not be brought up to date", "", "", "", {}});
}

Processor TileStep::processor() const {
    const auto* value = dynamic_cast<const krod::TypedValue<Processor>*>(&output->value());
    if (!value || !value->value())
        throw Failure(Fault::Partial, {module.entry().key,
                                       "gives no tile processor on its output \"" + output->name() + '"',
                                       "",
                                       "",
                                       "",
                                       {}});
    return value->value();
}

TileChain::TileChain(const Catalogue& catalogue, const std::vector<ModuleRequest>& requests, Limits limits) {
    for (const ModuleRequest& request : requests) {
        const CatalogueEntry entry = catalogue.one(request.key);
        if (!isOffered(entry.creator)) throw notATileProcessor(entry.key);
        modules.push_back(std::make_shared<ModuleInstance>(entry, request, limits));
        modules.back()->hideUnset(pool);
    }
}

TileChain::TileChain(Modules made) : modules(std::move(made)) {
    for (const auto& module : modules) {
        if (!isOffered(module->entry().creator)) throw notATileProcessor(module->entry().key);
        module->hideUnset(pool);
    }
}

void TileChain::prepare() {
    processors.clear();
    warned.clear();
    for (const auto& module : modules) {
        const TileStep step(*module);
        step.update(pool);
        processors.push_back(step.processor());
    }
}

/// Once for each program that draws: such a program compiles, and the picture is what the driver's registers hold.
void TileChain::warnOfProgram(std::size_t index) const {
    const auto* const shader = shaderOf(processors[index]);
    if (!shader || !warned.insert(index).second) return;
    const std::string text = shader->shaderCode();
    if (!namesAnOutput(text))
        krod::VActionNotifier::Warning(authorOf(index) +
                                       ": its program never writes gl_FragColor, so its pixels have no "
                                       "certain values");
    std::string unfed;
    for (const std::string& name : unfedNames(text)) unfed += (unfed.empty() ? "" : ", ") + name;
    if (!unfed.empty())
        krod::VActionNotifier::Warning(authorOf(index) + ": nobody gives a value to " + unfed +
                                       "; see \"plime help shaders\"");
}

bool TileChain::drawsWithOpenGL() const { return std::ranges::any_of(processors, shaderOf); }

const ModuleInstance* TileChain::dependentOnTile() const {
    for (std::size_t i = 0; i < processors.size(); ++i)
        if (const auto* const shader = shaderOf(processors[i]); shader && asksForPlace(shader->shaderCode()))
            return modules[i].get();
    return nullptr;
}

bool TileChain::makesNaN() const {
    return std::ranges::any_of(modules,
                               [](const auto& module) { return workbench::makesNaN(module->entry()); });
}

void TileChain::compile() const {
    const krod::StrongPtr<krod::Chunk<krod::RGBAHalf>> store(new krod::Chunk<krod::RGBAHalf>(1));
    krod::ImageTile tile(1, 1, store);
    for (std::size_t i = 0; i < processors.size(); ++i)
        if (shaderOf(processors[i])) process(i, tile);
}

void TileChain::process(krod::ImageTile& tile) const {
    for (std::size_t i = 0; i < processors.size(); ++i) process(i, tile);
}

void TileChain::process(std::size_t index, krod::ImageTile& tile) const {
    const ModuleInstance& module = *modules[index];
    const std::string author = authorOf(index);
    const auto pixels = static_cast<std::uint64_t>(tile.width()) * static_cast<std::uint64_t>(tile.height());
    const DrawingWatch watch(pixels, author);
    try {
        inTheNameOf(module, [&] { processors[index]->process(krod::VRenderContext(pool), tile); });
        warnOfProgram(index);
    } catch (const Failure& failure) {
        if (failure.fault() != Fault::Shader || author == module.entry().key) throw;
        Diagnostic message = failure.diagnostic();
        message.who = author;
        throw Failure(failure.fault(), message);
    }
}

/// The module, with the parameter that its program comes from where it is one of a user.
std::string TileChain::authorOf(std::size_t index) const {
    const ModuleInstance& module = *modules[index];
    const auto* const shader = shaderOf(processors[index]);
    const std::string origin = shader ? module.originOf(shader->shaderCode()) : "";
    return module.entry().key + (origin.empty() ? "" : ", " + origin);
}

} // namespace workbench
