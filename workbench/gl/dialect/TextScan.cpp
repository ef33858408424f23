// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/dialect/TextScan.h"

#include <algorithm>
#include <charconv>

namespace workbench {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isWordStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isWordPart(char c) { return isWordStart(c) || isDigit(c); }
bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\f' || c == '\r'; }

class Scanner {
public:
    explicit Scanner(std::string_view source) : text(source) {}

    TextScan run() {
        while (at < text.size()) step();
        if (headOpen) found.headEnd = text.size();
        return std::move(found);
    }

private:
    void step() {
        const char c = text[at];
        if (c == '\n') {
            endLine();
        } else if (isBlank(c)) {
            ++at;
        } else if (startsComment()) {
            skipComment();
        } else if (isWordStart(c)) {
            takeWord();
        } else if (isDigit(c) || (c == '.' && at + 1 < text.size() && isDigit(text[at + 1]))) {
            skipNumber();
        } else {
            if (c == '#' && lineIsBlank) inDirective = true;
            lineIsBlank = false;
            previous = {};
            ++at;
        }
    }

    /// Inside an #if the head ends behind the #endif only: what is put there must not depend on the
    /// condition.
    void endLine() {
        ++at;
        if (headOpen && depth == 0) {
            found.headEnd = at;
            headOpen = false;
        }
        if (inDirective) previous = {};
        lineIsBlank = true;
        inDirective = false;
        directiveNamed = false;
    }

    [[nodiscard]] bool startsComment() const {
        return text.substr(at, 2) == "//" || text.substr(at, 2) == "/*";
    }

    void skipComment() {
        const bool toLineEnd = text[at + 1] == '/';
        const std::size_t end = toLineEnd ? text.find('\n', at) : text.find("*/", at + 2);
        at = std::min(text.size(), end == std::string_view::npos ? end : toLineEnd ? end : end + 2);
    }

    void skipNumber() {
        const auto part = [](char c) { return isWordPart(c) || c == '.'; };
        at = static_cast<std::size_t>(std::find_if_not(text.begin() + at, text.end(), part) - text.begin());
        previous = {};
        lineIsBlank = false;
    }

    void takeWord() {
        const auto begin = text.begin() + static_cast<std::ptrdiff_t>(at);
        const auto end = std::find_if_not(begin, text.end(), isWordPart);
        const std::string_view word = text.substr(at, static_cast<std::size_t>(end - begin));
        at += word.size();
        lineIsBlank = false;
        if (inDirective && !directiveNamed) {
            directiveNamed = true;
            takeDirective(word);
        } else {
            found.identifiers.insert(word);
            if (!previous.empty() && previous != "return" && previous != "else")
                found.declarations.insert(word);
        }
        previous = word;
    }

    void takeDirective(std::string_view name) {
        if (name == "if" || name == "ifdef" || name == "ifndef") ++depth;
        if (name == "endif" && depth > 0) --depth;
        if (name == "version" && found.version == 0) takeVersion();
        if (name == "version" || name == "extension") headOpen = true;
    }

    void takeVersion() {
        while (at < text.size() && isBlank(text[at])) ++at;
        std::from_chars(text.data() + at, text.data() + text.size(), found.version);
    }

    std::string_view text;
    std::size_t at = 0;
    std::string_view previous; // the word directly before, if nothing but space lies between
    bool lineIsBlank = true;   // so far
    bool inDirective = false;  // behind a # that starts its line
    bool directiveNamed = false;
    bool headOpen = false; // a #version or #extension has come, and its place has not ended
    int depth = 0;         // of #if
    TextScan found;
};

} // namespace

TextScan scanText(std::string_view text) { return Scanner(text).run(); }

} // namespace workbench
