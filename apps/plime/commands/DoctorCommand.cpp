// SPDX-License-Identifier: Apache-2.0
// plime doctor: does everything work here, and if not, why?
#include "apps/plime/commandline/Session.h"
#include "apps/plime/commands/Commands.h"
#include "apps/plime/commands/Doctor.h"
#include "apps/plime/terminal/Text.h"

#include <filesystem>
#include <system_error>

namespace workbench {
namespace {

constexpr std::string_view Help = R"(Usage: plime doctor [--json]

Examines what this program needs: the plug-ins, every path that was tried and
why one of them is not loaded; the OpenGL devices and the driver that would be
used; the libraries; the folders that are searched for shader files. Ends with
exit code 0 when everything needed works, and 1 with the list of what does not.

  --json   one object, for scripts and for reports of faults

Examples:
  plime doctor
  plime doctor --gpu software
  plime doctor --plugin build/plugins/my_plugin.so --json
)";

constexpr std::size_t LabelColumns = 16;

const char* originText(PluginOrigin origin) {
    switch (origin) {
    case PluginOrigin::CommandLine:
        return "--plugin";
    case PluginOrigin::Environment:
        return "KROD_PLUGIN_PATH";
    case PluginOrigin::Default:
        return "default";
    }
    return "";
}

const char* outcomeText(PluginAttempt::Outcome outcome) {
    switch (outcome) {
    case PluginAttempt::Outcome::Loaded:
        return "loaded";
    case PluginAttempt::Outcome::PassedOver:
        return "passed over";
    case PluginAttempt::Outcome::Empty:
        return "empty folder";
    case PluginAttempt::Outcome::Failed:
        return "failed";
    }
    return "";
}

bool isThere(const std::filesystem::path& folder) {
    std::error_code error;
    return std::filesystem::is_directory(folder, error);
}

Json contextJson(const ContextProperties& gl) {
    return {{"vendor", gl.vendor},    {"renderer", gl.renderer},  {"version", gl.version},
            {"glsl", gl.glslVersion}, {"samples", gl.maxSamples}, {"texture_size", gl.maxTextureSize},
            {"software", gl.software}};
}

Json toJson(const Findings& findings) {
    Json json{{"version", PLIME_VERSION},
              {"host_interface", findings.hostDate},
              {"compiler", findings.compiler},
              {"plugins", Json::array()},
              {"devices", Json::array()},
              {"opengl", findings.opengl ? contextJson(*findings.opengl) : Json(nullptr)},
              {"libraries", {{"half_rounds_to_nearest", findings.halvesRoundToNearest}}},
              {"shader_folders", Json::array()},
              {"problems", Json::array()}};
    for (const PluginAttempt& attempt : findings.plugins)
        json["plugins"].push_back({{"path", attempt.path},
                                   {"origin", originText(attempt.origin)},
                                   {"outcome", outcomeText(attempt.outcome)},
                                   {"name", attempt.name.empty() ? Json(nullptr) : Json(attempt.name)},
                                   {"problem", attempt.reason ? Json(attempt.reason->sentence()) : Json()}});
    for (const GpuDevice& device : findings.devices)
        json["devices"].push_back({{"index", device.index},
                                   {"vendor", device.vendor},
                                   {"renderer", device.renderer},
                                   {"software", device.software},
                                   {"problem", device.problem.empty() ? Json() : Json(device.problem)}});
    for (const std::filesystem::path& folder : findings.shaderFolders)
        json["shader_folders"].push_back({{"path", folder.string()}, {"exists", isThere(folder)}});
    for (const Diagnostic& problem : findings.problems) json["problems"].push_back(problem.sentence());
    return json;
}

std::string line(const std::string& label, const std::string& text) {
    return "  " + padded(label, LabelColumns) + "  " + printable(text) + '\n';
}

std::string openGlText(const Findings& findings) {
    std::string text = "\nOpenGL\n";
    for (const GpuDevice& device : findings.devices)
        text += line("device " + std::to_string(device.index),
                     device.renderer + (device.software ? ", software" : "") +
                         (device.problem.empty() ? "" : " — not usable: " + device.problem));
    if (!findings.opengl) return text + line("used", "none");
    const ContextProperties& gl = *findings.opengl;
    return text + line("used", gl.renderer) + line("driver", gl.vendor + ", " + gl.version) +
           line("shading language", gl.glslVersion) +
           line("samples", "up to " + std::to_string(gl.maxSamples)) +
           line("pictures", "up to " + std::to_string(gl.maxTextureSize) + " pixels on a side");
}

std::string toText(const Findings& findings) {
    std::string text = "plime " PLIME_VERSION "\n";
    text += line("host interface", findings.hostDate) + line("compiler", findings.compiler) + "\nPlug-ins\n";
    for (const PluginAttempt& attempt : findings.plugins) {
        text += line(outcomeText(attempt.outcome), attempt.path + " (" + originText(attempt.origin) + ")");
        if (attempt.reason) text += line("", attempt.reason->sentence());
    }
    if (findings.plugins.empty()) text += line("none", "no path was given, and no folder is there");
    text += openGlText(findings) + "\nLibraries\n";
    text += line("half precision", findings.halvesRoundToNearest ? "rounds to nearest" : "rounds wrongly");
    text += "\nShader files\n";
    for (const std::filesystem::path& folder : findings.shaderFolders)
        text += line(isThere(folder) ? "searched" : "not there", folder.string());
    if (findings.problems.empty()) return text + "\nEverything needed works.\n";
    text += "\nNot working\n";
    for (const Diagnostic& problem : findings.problems) {
        text += "  " + printable(problem.sentence()) + '\n';
        for (const std::string& detail : problem.details) text += "    " + printable(detail) + '\n';
    }
    return text;
}

class DoctorCommand : public Command {
public:
    [[nodiscard]] std::string_view name() const noexcept override { return "doctor"; }
    [[nodiscard]] std::string_view purpose() const noexcept override {
        return "examine plug-ins, OpenGL and libraries of this machine";
    }
    [[nodiscard]] std::string_view help() const noexcept override { return Help; }
    [[nodiscard]] Syntax syntax() override { return {{{"--json", &asJson}}, {}, nullptr, {}}; }

    int run(Session& session) override {
        const GlobalOptions& options = session.options();
        const Findings findings = examine(session.plugins(), options.gpu, session.shaderFolders());
        session.streams().write(asJson ? document(toJson(findings)) : toText(findings));
        return findings.problems.empty() ? 0 : static_cast<int>(Fault::Partial);
    }

private:
    bool asJson = false;
};

} // namespace

std::unique_ptr<Command> makeDoctorCommand() { return std::make_unique<DoctorCommand>(); }

} // namespace workbench
