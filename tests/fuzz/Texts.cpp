// SPDX-License-Identifier: Apache-2.0
// The shader texts of modules. The first line names a module, each further one a parameter and its text.
// TileProgram is left out: its text is its user's own.
#include "Target.h"

#include "tests/support/LoadedPlugin.h"
#include "workbench/gl/ShaderCapture.h"
#include "workbench/report/Failure.h"

#include "host/gl/GLImageTileProcessor.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string>
#include <vector>

namespace {

using namespace krod;

/// Loaded once and never unloaded: a fuzzer knows the addresses of its code.
const support::LoadedPlugin& plugin() {
    static const auto* const loaded = new support::LoadedPlugin;
    return *loaded;
}

std::string_view nextLine(std::string_view& rest) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    return line;
}

/// A number's text as a number; texts of other types as 0, which lies within every limit that there is.
double numberOf(const VValueBase& value) {
    const std::string text = value.text();
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

bool isWithinLimits(const VParameter& parameter) {
    const auto minimum = parameter.property("min"), maximum = parameter.property("max");
    const double value = numberOf(parameter.value());
    return (!minimum || value >= numberOf(*minimum)) && (!maximum || value <= numberOf(*maximum));
}

void setParameters(const VObject& object, std::string_view lines) {
    while (!lines.empty()) {
        const std::string_view line = nextLine(lines);
        const std::size_t blank = line.find(' ');
        if (blank == std::string_view::npos) continue;
        const auto parameter = object.slots().input(line.substr(0, blank));
        if (parameter) parameter->setValueFromText(line.substr(blank + 1));
    }
}

bool isWord(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

bool hasWord(std::string_view text, std::string_view word) {
    for (auto at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1)) {
        const std::size_t end = at + word.size();
        if ((at == 0 || !isWord(text[at - 1])) && (end == text.size() || !isWord(text[end]))) return true;
    }
    return false;
}

/// A line "const float name = number;" holds one number, with a point or an exponent and never a comma.
void checkConstant(std::string_view line) {
    if (!line.starts_with("const float ") || line.find('[') != std::string_view::npos) return;
    const std::size_t equals = line.find("= ");
    fuzz::require(equals != std::string_view::npos && line.ends_with(';'), "a constant has a value");
    const std::string_view number = line.substr(equals + 2, line.size() - equals - 3);
    fuzz::require(number.find_first_not_of("0123456789.+-e") == std::string_view::npos, "it is a number");
    fuzz::require(number.find_first_of(".e") != std::string_view::npos, "it is not an integer");
}

void checkText(std::string_view text, bool isWithinAllLimits) {
    fuzz::require(!text.empty(), "there is a text");
    fuzz::require(text.find('\0') == std::string_view::npos, "it has no zero byte");
    if (!isWithinAllLimits) return;
    fuzz::require(!hasWord(text, "nan") && !hasWord(text, "inf"), "its numbers are finite");
    while (!text.empty()) checkConstant(nextLine(text));
}

std::vector<std::string> textsOf(VObject& object) {
    const VValuePool pool;
    std::vector<std::string> texts;
    if (auto* display = dynamic_cast<MSDeferredObjectDisplay*>(&object)) {
        try {
            for (const auto& program : workbench::captureShader(*display, pool))
                texts.push_back(program.fragmentText);
        } catch (const workbench::Failure& failure) {
            const std::string sentence = failure.what();
            fuzz::require(sentence.find("arrays of more than 2048") != std::string::npos,
                          "only size is refused");
        }
        return texts;
    }
    fuzz::require(support::update(object), "an update succeeds");
    if (const auto shader = castStrong<GLImageTileProcessor>(support::processorOf(object)))
        texts.push_back(shader->shaderCode());
    return texts;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::vector<std::string> keys{"Display/Blurred",
                                               "Display/CMYK",
                                               "Display/CurveAdjust",
                                               "Display/Depth@DisplayDepth",
                                               "Display/Depth@HDRObjectDisplay",
                                               "Display/HSVAdjust",
                                               "Display/PixelContours",
                                               "Display/ProximityHDR",
                                               "Hollywood/ArcTangens",
                                               "Hollywood/ColorGammaCorrection",
                                               "Hollywood/GammaCorrection",
                                               "Hollywood/HDRColoredToneMapping",
                                               "Hollywood/HDRToneMapping",
                                               "Hollywood/PixelBlur"};
    std::string_view rest = fuzz::textOf(data, size);
    const std::string_view key = nextLine(rest);
    if (std::find(keys.begin(), keys.end(), key) == keys.end()) return 0;
    const auto object = plugin().make(std::string(key));
    setParameters(*object, rest);
    bool isWithinAllLimits = true;
    for (const auto& input : object->slots().inputs())
        isWithinAllLimits = isWithinAllLimits && isWithinLimits(*input.parameter);
    for (const std::string& text : textsOf(*object)) checkText(text, isWithinAllLimits);
    return 0;
}
