// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/dialect/Shims.h"

#include <array>
#include <utility>

namespace workbench {
namespace {

constexpr int VersionlessBecomes = 120;

/// Vertex texts stay as they are: they need nothing of 1.20, and they link with fragment texts of every
/// version.
bool needsVersion(const TextScan& text, ShaderStage stage) {
    return text.version == 0 && stage == ShaderStage::Fragment;
}

/// A text with a `pow` of its own means that one.
bool needsVectorPower(const TextScan& text, ShaderStage) {
    return text.version == 0 && text.identifiers.contains("pow") && !text.declarations.contains("pow");
}

bool usesReservedFilter(const TextScan& text, ShaderStage) {
    return text.version >= 130 && text.identifiers.contains("filter");
}

/// An overload of `pow` itself would hide all built-in ones, hence the other name and the full set.
constexpr std::string_view VectorPower = "float krod_pow(float a, float b) { return pow(a, b); }\n"
                                         "vec2 krod_pow(vec2 a, vec2 b) { return pow(a, b); }\n"
                                         "vec3 krod_pow(vec3 a, vec3 b) { return pow(a, b); }\n"
                                         "vec4 krod_pow(vec4 a, vec4 b) { return pow(a, b); }\n"
                                         "vec2 krod_pow(vec2 a, float b) { return pow(a, vec2(b)); }\n"
                                         "vec3 krod_pow(vec3 a, float b) { return pow(a, vec3(b)); }\n"
                                         "vec4 krod_pow(vec4 a, float b) { return pow(a, vec4(b)); }\n"
                                         "#define pow krod_pow\n";

constexpr std::array Table{
    Shim{"version", "GLSL 1.10, which a text without #version gets, turns no int into a float by itself",
         needsVersion, Shim::Position::First, "#version 120\n", "", ""},
    Shim{"vector-power", "pow of a vector with a float is taken by some drivers only", needsVectorPower,
         Shim::Position::BehindHead, VectorPower, "pow", "krod_pow"},
    Shim{"reserved-filter", "some drivers refuse the reserved word filter as a name", usesReservedFilter,
         Shim::Position::BehindHead, "#define filter krod_filter\n", "filter", "krod_filter"},
};

/// Numbers the line after the directive. Before GLSL 3.30 the directive names its own line instead.
std::string lineDirective(int version, int next) {
    return "#line " + std::to_string(version < 330 ? next - 1 : next) + '\n';
}

int lineCountOf(std::string_view text) {
    int count = 0;
    for (const char c : text) count += c == '\n' ? 1 : 0;
    return count;
}

} // namespace

std::span<const Shim> shims() noexcept { return Table; }

std::string AdaptedText::joined() const {
    std::string all;
    for (const std::string& part : strings) all += part;
    return all;
}

AdaptedText adaptText(std::string_view text, ShaderStage stage, bool strict,
                      std::vector<TextRegion> regions) {
    const TextScan scan = scanText(text);
    AdaptedText adapted;
    std::vector<RenamedWord> renamed;
    std::string first, behindHead;
    for (const Shim& shim : Table) {
        if (strict || !shim.applies(scan, stage)) continue;
        adapted.shimNames.emplace_back(shim.name);
        (shim.position == Shim::Position::First ? first : behindHead) += shim.prologue;
        if (!shim.renamedWord.empty())
            renamed.push_back({std::string(shim.renamedWord), std::string(shim.renamedTo)});
    }
    adapted.lines = LineTable(text, std::move(regions), std::move(renamed));

    const int version = first.empty() ? scan.version : VersionlessBecomes;
    const std::string_view head = behindHead.empty() ? "" : text.substr(0, scan.headEnd);
    const std::string_view body = text.substr(head.size());
    std::string front = first;
    if (!head.empty()) {
        if (!front.empty()) adapted.strings.push_back(front + lineDirective(version, 1));
        adapted.strings.emplace_back(head);
        front.clear();
        if (!head.ends_with('\n')) front += '\n';
    }
    if (!behindHead.empty()) front += lineDirective(version, LineTable::FirstAddedLine) + behindHead;
    if (!front.empty()) {
        adapted.strings.push_back(front + lineDirective(version, 1 + lineCountOf(head)));
        adapted.lines.setPreprocessorLag(version < 330 ? 1 : 0);
    }
    adapted.strings.emplace_back(body);
    return adapted;
}

} // namespace workbench
