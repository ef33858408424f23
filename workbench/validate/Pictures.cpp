// SPDX-License-Identifier: Apache-2.0
#include "workbench/validate/Pictures.h"

#include "workbench/validate/Drawing.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <stdexcept>

namespace workbench::validate {
namespace {

constexpr double Allowed = 2.0 / 255, AllowedShare = 1.0 / 512;
constexpr double Jump = 0.05; // between neighbours
constexpr int Grid = 8;       // a probe in the middle of each square of this many pixels on a side
constexpr std::size_t MostProbes = 16;
constexpr std::uint32_t Seed = 4711;

using Colour = std::array<double, 4>;

Colour colourAt(const Pixels& picture, int column, int row) {
    const krod::RGBAHalf& pixel = picture.at(static_cast<std::size_t>(row * PictureSide + column));
    return {double{pixel.r}, double{pixel.g}, double{pixel.b}, double{pixel.a}};
}

bool isNear(double value, double expected, double allowed, double share) {
    if (!std::isfinite(expected) || !std::isfinite(value))
        return std::isfinite(expected) == std::isfinite(value);
    return std::abs(value - expected) <= std::max(allowed, share * std::abs(expected));
}

bool isSmooth(const Pixels& picture, int column, int row) {
    const Colour middle = colourAt(picture, column, row);
    for (int y = row - 1; y <= row + 1; ++y)
        for (int x = column - 1; x <= column + 1; ++x)
            for (std::size_t i = 0; i < 4; ++i)
                if (!isNear(colourAt(picture, x, y)[i], middle[i], Jump, Jump)) return false;
    return true;
}

std::string numberText(double value) {
    std::array<char, 32> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, 5);
    return {text.data(), end.ptr};
}

/// The numbers of a probe.
std::array<double, 6> parse(const std::string& probe) {
    std::array<double, 6> numbers{};
    const char* at = probe.data();
    const char* const end = at + probe.size();
    for (double& number : numbers) {
        while (at < end && *at == ' ') ++at;
        const auto read = std::from_chars(at, end, number);
        if (read.ec != std::errc()) throw std::runtime_error("expects \"" + probe + "\", which is no probe");
        at = read.ptr;
    }
    const auto isPlace = [](double number) { return number >= 0 && number < PictureSide; };
    if (at != end || !isPlace(numbers[0]) || !isPlace(numbers[1]))
        throw std::runtime_error("expects \"" + probe + "\", which is no probe");
    return numbers;
}

/// A sum by which texts are told apart, as eight digits of base 16.
std::string sumOf(const std::vector<std::string>& texts) {
    std::uint32_t sum = 2166136261U; // FNV-1a
    for (const std::string& text : texts)
        for (const char letter : text + '\n') sum = (sum ^ static_cast<unsigned char>(letter)) * 16777619U;
    std::array<char, 8> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), sum, 16);
    const std::string number(digits.data(), end.ptr);
    return std::string(digits.size() - number.size(), '0') + number;
}

} // namespace

std::vector<std::string> probesOf(const Pixels& picture) {
    std::vector<std::string> probes;
    for (int row = Grid / 2; row < PictureSide; row += Grid)
        for (int column = Grid / 2; column < PictureSide; column += Grid) {
            if (!isSmooth(picture, column, row)) continue;
            std::string probe = std::to_string(column) + ' ' + std::to_string(row);
            for (const double value : colourAt(picture, column, row)) probe += ' ' + numberText(value);
            probes.push_back(std::move(probe));
        }
    std::vector<std::string> spread; // over the whole picture
    const std::size_t count = std::min(MostProbes, probes.size());
    for (std::size_t i = 0; i < count; ++i) spread.push_back(probes[i * probes.size() / count]);
    return spread;
}

std::string deviation(const Pixels& picture, const std::string& probe) {
    const std::array<double, 6> expected = parse(probe);
    const Colour actual = colourAt(picture, static_cast<int>(expected[0]), static_cast<int>(expected[1]));
    std::string got, wanted;
    bool isRight = true;
    for (std::size_t i = 0; i < actual.size(); ++i) {
        isRight = isRight && isNear(actual[i], expected[i + 2], Allowed, AllowedShare);
        got += ' ' + numberText(actual[i]);
        wanted += ' ' + numberText(expected[i + 2]);
    }
    if (isRight) return {};
    return "has the colour" + got + " in column " + numberText(expected[0]) + " of row " +
           numberText(expected[1]) + ", not" + wanted;
}

std::vector<SettingText> settingTexts(krod::VObject& object) {
    Trial dice({}, Seed);
    std::vector<SettingText> all;
    if (waitsForText(object)) return all;
    for (int i = 0; i < SettingCount; ++i) {
        std::string setting;
        const krod::VValuePool pool = drawnSetting(object, dice, setting);
        const auto texts = shaderTexts(object, pool);
        all.push_back({std::move(setting), texts.empty() ? "" : sumOf(texts)});
    }
    return all;
}

} // namespace workbench::validate
