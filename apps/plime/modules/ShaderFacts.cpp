// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/modules/ShaderFacts.h"

#include <algorithm>
#include <initializer_list>
#include <regex>
#include <span>

namespace workbench {
namespace {

/// Comments become blanks.
std::string withoutComments(const std::string& text) {
    std::string code;
    for (std::size_t at = 0; at < text.size();) {
        const bool isLine = text.compare(at, 2, "//") == 0, isBlock = text.compare(at, 2, "/*") == 0;
        if (!isLine && !isBlock) {
            code += text[at++];
            continue;
        }
        const std::size_t end = isLine ? text.find('\n', at) : text.find("*/", at + 2);
        at = end == std::string::npos ? text.size() : isLine ? end : end + 2;
        code += ' ';
    }
    return code;
}

bool isWordPart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

using Tokens = std::vector<std::string_view>;

/// Words, and single characters for all else; without blanks and preprocessor lines.
Tokens tokensOf(std::string_view code) {
    Tokens tokens;
    for (std::size_t at = 0; at < code.size();) {
        std::size_t end = at + 1;
        if (code[at] == '#')
            end = std::min(code.find('\n', at), code.size());
        else if (isWordPart(code[at]))
            while (end < code.size() && isWordPart(code[end])) ++end;
        if (code[at] > ' ' && code[at] != '#') tokens.push_back(code.substr(at, end - at));
        at = end;
    }
    return tokens;
}

bool isOneOf(std::string_view token, std::initializer_list<std::string_view> words) {
    return std::ranges::find(words, token) != words.end();
}

/// The names that "TYPE a, b[2], c = 1" declares without giving them a value.
std::vector<std::string> declaredNames(std::span<const std::string_view> tokens) {
    std::vector<std::string> names;
    if (!tokens.empty() && isOneOf(tokens[0], {"lowp", "mediump", "highp"})) tokens = tokens.subspan(1);
    int depth = 0;
    for (std::size_t i = 1; i < tokens.size(); ++i) {
        if (isOneOf(tokens[i], {"[", "("})) ++depth;
        if (isOneOf(tokens[i], {"]", ")"})) --depth;
        if (depth == 0 && tokens[i] == "=" && !names.empty()) names.pop_back();
        const bool begins = i == 1 || tokens[i - 1] == ",";
        if (depth == 0 && begins && isWordPart(tokens[i][0])) names.emplace_back(tokens[i]);
    }
    return names;
}

} // namespace

bool asksForPlace(std::string text) {
    std::erase_if(text, [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; });
    constexpr std::string_view OwnPixel = "texture2D(frame,gl_TexCoord[0].xy)";
    for (std::size_t at = text.find(OwnPixel); at != std::string::npos; at = text.find(OwnPixel, at))
        text.erase(at, OwnPixel.size());
    return text.find("gl_TexCoord") != std::string::npos || text.find("gl_FragCoord") != std::string::npos;
}

bool namesAnOutput(const std::string& text) {
    static const std::regex output("\\bgl_FragColor\\b|\\bgl_FragData\\b|\\bout\\s");
    return std::regex_search(text, output);
}

std::vector<std::string> unfedNames(const std::string& text) {
    const std::string code = withoutComments(text);
    const Tokens tokens = tokensOf(code);
    std::vector<std::string> names;
    for (std::size_t begin = 0; begin < tokens.size();) {
        std::size_t end = begin;
        while (end < tokens.size() && !isOneOf(tokens[end], {";", "{", "}"})) ++end;
        std::span<const std::string_view> part(tokens.data() + begin, end - begin);
        const bool isDeclaration = end < tokens.size() && tokens[end] == ";";
        begin = end + 1;
        while (!part.empty() && isOneOf(part[0], {"flat", "smooth", "noperspective", "centroid"}))
            part = part.subspan(1);
        if (!isDeclaration || part.empty() || !isOneOf(part[0], {"uniform", "in", "varying"})) continue;
        const bool isUniform = part[0] == "uniform";
        for (const std::string& name : declaredNames(part.subspan(1)))
            if (!(isUniform && name == "frame") && std::ranges::count(tokens, name) > 1)
                names.push_back((isUniform ? "the uniform " : "the input ") + name);
    }
    return names;
}

} // namespace workbench
