// SPDX-License-Identifier: Apache-2.0
#include "host/values/VValueTrait.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

namespace krod {

namespace {

constexpr std::string_view Blanks = " \t\n\r\f\v";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(Blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

/// Reads a number that takes up the whole text but for blanks around it; false, and nothing changed,
/// otherwise.
template <class Number>
bool readNumber(Number& value, std::string_view text) {
    text = trimmed(text);
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    const char* const end = text.data() + text.size();
    Number read{};
    const auto [stop, error] = std::from_chars(text.data(), end, read);
    if (error != std::errc() || stop != end) return false;
    value = read;
    return true;
}

bool readFinite(double& value, std::string_view text) {
    double read = 0;
    if (!readNumber(read, text) || !std::isfinite(read)) return false;
    value = read;
    return true;
}

} // namespace

std::string VValueTrait<int>::Text(int value) {
    std::array<char, 16> digits;
    return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr};
}

TextResult VValueTrait<int>::setValueFromText(int& value, std::string_view text) {
    if (readNumber(value, text)) return {};
    return {"a whole number from -2147483648 to 2147483647"};
}

std::string VValueTrait<double>::Text(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    std::array<char, 32> digits;
    std::string text(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr);
    if (text.find_first_of(".e") == std::string::npos) text += ".0";
    return text;
}

TextResult VValueTrait<double>::setValueFromText(double& value, std::string_view text) {
    if (readFinite(value, text)) return {};
    return {"a finite number like 0.5"};
}

std::string VValueTrait<bool>::Text(bool value) { return value ? "true" : "false"; }

TextResult VValueTrait<bool>::setValueFromText(bool& value, std::string_view text) {
    text = trimmed(text);
    const auto isOneOf = [&](std::initializer_list<std::string_view> words) {
        return std::ranges::find(words, text) != words.end();
    };
    if (isOneOf({"true", "1", "on", "yes"}))
        value = true;
    else if (isOneOf({"false", "0", "off", "no"}))
        value = false;
    else
        return {"true or false"};
    return {};
}

std::string VValueTrait<std::string>::Text(const std::string& value) { return value; }

TextResult VValueTrait<std::string>::setValueFromText(std::string& value, std::string_view text) {
    if (text.find('\0') != std::string_view::npos) return {"a text without a NUL character"};
    value = text;
    return {};
}

std::string VValueTrait<FlagList>::Text(const FlagList& value) {
    std::string text;
    for (const FlagList::Flag& flag : value.flags()) {
        if (!text.empty()) text += ' ';
        text += (flag.on ? '+' : '-') + flag.name;
    }
    return text;
}

TextResult VValueTrait<FlagList>::setValueFromText(FlagList& value, std::string_view text) {
    std::string tokens(text);
    std::ranges::replace_if(
        tokens, [](char c) { return Blanks.find(c) != std::string_view::npos; }, ' ');

    // The list leaves out what is not a flag and unites flags of one name: then it has fewer flags than
    // tokens.
    FlagList read(tokens, ' ');
    std::size_t written = 0;
    for (std::size_t i = 0; i < tokens.size(); ++i)
        if (tokens[i] != ' ' && (i == 0 || tokens[i - 1] == ' ')) ++written;
    if (read.flags().size() != written)
        return {"flags like +name -name with a blank between them, each name once"};
    value = std::move(read);
    return {};
}

std::string VValueTrait<FixedArray<double, 2>>::Text(const FixedArray<double, 2>& value) {
    return VValueTrait<double>::Text(value[0]) + ' ' + VValueTrait<double>::Text(value[1]);
}

TextResult VValueTrait<FixedArray<double, 2>>::setValueFromText(FixedArray<double, 2>& value,
                                                                std::string_view text) {
    text = trimmed(text);
    const std::size_t comma = text.find(',');
    const std::size_t between = comma == std::string_view::npos ? text.find_first_of(Blanks) : comma;
    FixedArray<double, 2> read;
    if (between == std::string_view::npos || !readFinite(read[0], text.substr(0, between)) ||
        !readFinite(read[1], text.substr(between + 1)))
        return {"two finite numbers like \"0.5 0.5\""};
    value = read;
    return {};
}

std::string VValueTrait<StrongPtr<ImageTileProcessor>>::Text(const StrongPtr<ImageTileProcessor>& /*value*/) {
    return {};
}

TextResult
VValueTrait<StrongPtr<ImageTileProcessor>>::setValueFromText(StrongPtr<ImageTileProcessor>& /*value*/,
                                                             std::string_view /*text*/) {
    return {"no text at all, since tile processors are made by modules"};
}

} // namespace krod
