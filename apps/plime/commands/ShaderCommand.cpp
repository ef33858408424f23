// SPDX-License-Identifier: Apache-2.0
// plime shader: which text does a module hand to the driver?
#include "apps/plime/commandline/Session.h"
#include "apps/plime/commands/Commands.h"
#include "apps/plime/modules/ModuleInstance.h"
#include "apps/plime/modules/TileChain.h"
#include "workbench/gl/ShaderCapture.h"
#include "workbench/gl/ShaderFiles.h"
#include "workbench/gl/dialect/Shims.h"

#include "host/gl/GLImageTileProcessor.h"
#include "host/gl/MSDeferredObjectDisplay.h"

#include <algorithm>

namespace workbench {
namespace {

constexpr std::string_view Help = R"(Usage: plime shader KEY[@SOURCE] [-p NAME=VALUE]… [--unset NAME]…
                    [--unchecked] [--body|--as-compiled]

Writes the fragment shader text that a module hands to the host, byte for byte,
with nothing added: of a display in one draw, of a tile processor after one
update. No OpenGL is needed.

  -p NAME=VALUE   sets a parameter; code=@FILE reads the value from a file
  --unset NAME    makes a parameter unreadable: the module falls back
  --unchecked     accepts values outside of their limits
  --body          writes the part alone that a file of your own can replace; -v
                  tells the file's name, see "plime help shaders"
  --as-compiled   shows the text as this host gives it to the driver, with the
                  shims that some drivers need

Examples:
  plime shader Display/CMYK
  plime shader Hollywood/ColorGammaCorrection -p red=-1
  plime shader Hollywood/TileProgram --as-compiled
  plime shader Display/CMYK --body > mine/CMYK.frag
)";

std::string textOfDisplay(const ModuleInstance& module, krod::MSDeferredObjectDisplay& display,
                          const krod::VValuePool& pool) {
    std::vector<ProgramTexts> programs;
    inTheNameOf(module, [&] { programs = captureShader(display, pool); });
    if (programs.empty())
        throw Failure(Fault::Partial,
                      {module.entry().key, "made no shader program in its draw", "", "", "", {}});
    return programs.front().fragmentText;
}

std::string textOfTile(const ModuleInstance& module, const krod::VValuePool& pool) {
    if (!TileStep::fits(module))
        throw Failure(Fault::Partial, {module.entry().key,
                                       "has no shader: it is neither a display nor a tile processor",
                                       "",
                                       "",
                                       "",
                                       {}});
    const TileStep step(module);
    step.update(pool);
    const auto processor = step.processor();
    if (const auto* shader = dynamic_cast<const krod::GLImageTileProcessor*>(processor.get()))
        return shader->shaderCode();
    throw Failure(Fault::Partial,
                  {module.entry().key, "has no shader: it works on the pixels directly", "", "", "", {}});
}

class ShaderCommand : public Command {
public:
    [[nodiscard]] std::string_view name() const noexcept override { return "shader"; }
    [[nodiscard]] std::string_view purpose() const noexcept override {
        return "show the shader text that a module composes";
    }
    [[nodiscard]] std::string_view help() const noexcept override { return Help; }
    [[nodiscard]] Syntax syntax() override {
        return {{{"--as-compiled", &asCompiled}, {"--body", &body}},
                {{"KEY[@SOURCE]", &key}},
                &modules,
                {.own = true}};
    }

    int run(Session& session) override {
        const Limits limits = modules.unchecked ? Limits::Unchecked : Limits::Checked;
        const ModuleInstance module(session.catalogue().one(key), modules.own, limits);
        krod::VValuePool pool;
        module.hideUnset(pool);
        std::string text;
        if (auto* display = dynamic_cast<krod::MSDeferredObjectDisplay*>(&module.object()))
            text = textOfDisplay(module, *display, pool);
        else
            text = textOfTile(module, pool);
        session.noteShaderFiles();
        if (body) text = bodyOf(session, module, text);
        if (asCompiled) text = adaptText(text, ShaderStage::Fragment, session.options().strictGlsl).joined();
        session.streams().write(text);
        return 0;
    }

private:
    /// The end of the text, which comes from a file where there is one.
    static std::string bodyOf(const Session& session, const ModuleInstance& module, const std::string& text) {
        const std::optional<ReplaceablePart> part = findReplaceablePart(text);
        if (!part)
            throw Failure(Fault::Usage, {module.entry().key,
                                         "has no part that a file could replace",
                                         "a display that has one",
                                         "",
                                         "See \"plime help shaders\"",
                                         {}});
        const auto before =
            std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(part->offset), '\n');
        session.report().detail("Line " + std::to_string(before + 1) +
                                " of the text and those below it can be replaced by a file " + part->name +
                                " in a folder of --shader-dir.");
        return text.substr(part->offset);
    }

    std::string key;
    ModuleChain modules;
    bool asCompiled = false, body = false;
};

} // namespace

std::unique_ptr<Command> makeShaderCommand() { return std::make_unique<ShaderCommand>(); }

} // namespace workbench
