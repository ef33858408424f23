// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/commands/Doctor.h"

#include "host/core/VInitialization.h"
#include "host/rendering/RGBAHalf.h"

#include <algorithm>
#include <limits>

namespace workbench {
namespace {

std::string compilerName() {
#ifdef __clang__
    return "clang " __clang_version__;
#else
    return "g++ " __VERSION__;
#endif
}

/// The half library can be built to cut off instead. Its own claim is checked with a value that lies nearer
/// to the upper of its two neighbours.
bool halvesRoundToNearest() {
    constexpr float Step = 0x1p-10F;
    const half_float::half nearer(1.0F + 0.75F * Step);
    return std::numeric_limits<half_float::half>::round_style == std::round_to_nearest &&
           static_cast<float>(nearer) == 1.0F + Step;
}

void examinePlugins(Findings& findings) {
    for (const PluginAttempt& attempt : findings.plugins)
        if (attempt.reason) findings.problems.push_back(*attempt.reason);
    if (std::ranges::none_of(findings.plugins, [](const PluginAttempt& attempt) {
            return attempt.outcome == PluginAttempt::Outcome::Loaded;
        }))
        findings.problems.push_back(
            {"plug-ins", "none is loaded", "", "", "Name one with --plugin or in KROD_PLUGIN_PATH", {}});
}

void examineOpenGl(Findings& findings, const GpuChoice& gpu) {
    try {
        findings.devices = listDevices();
        findings.opengl = EglContext::create(gpu).properties();
    } catch (const Failure& failure) {
        findings.problems.push_back(failure.diagnostic());
    }
}

} // namespace

Findings examine(const std::vector<PluginAttempt>& plugins, const GpuChoice& gpu,
                 std::vector<std::filesystem::path> shaderFolders) {
    Findings findings;
    findings.hostDate = krod::VInitialization::hostDate();
    findings.compiler = compilerName();
    findings.plugins = plugins;
    findings.shaderFolders = std::move(shaderFolders);
    findings.halvesRoundToNearest = halvesRoundToNearest();
    examinePlugins(findings);
    examineOpenGl(findings, gpu);
    if (!findings.halvesRoundToNearest)
        findings.problems.push_back({"half-precision library",
                                     "does not round to the nearest half",
                                     "",
                                     "",
                                     "Build with HALF_ROUND_STYLE=1",
                                     {}});
    return findings;
}

} // namespace workbench
