// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/check/Token.h"

#include "workbench/gl/check/Objection.h"

#include <algorithm>
#include <array>

namespace workbench {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isWordStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isWordPart(char c) { return isWordStart(c) || isDigit(c); }
bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\f' || c == '\r'; }

constexpr std::array<std::string_view, 2> ThreeCharacters = {"<<=", ">>="};
constexpr std::array<std::string_view, 20> TwoCharacters = {
    "<<", ">>", "<=", ">=", "==", "!=", "&&", "||", "^^", "++",
    "--", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "##"};

class Tokeniser {
public:
    explicit Tokeniser(std::string_view source) : text(source) {}

    std::vector<Token> run() {
        while (at < text.size()) step();
        return std::move(tokens);
    }

private:
    [[nodiscard]] char peek(std::size_t ahead = 1) const {
        return at + ahead < text.size() ? text[at + ahead] : '\n';
    }

    void step() {
        const char c = text[at];
        requireKnown(c);
        if (c == '\n') {
            endLine();
        } else if (isBlank(c)) {
            skipBlank();
        } else if (c == '\\') {
            joinLines();
        } else if (c == '/' && (peek() == '/' || peek() == '*')) {
            skipComment();
        } else if (isWordStart(c)) {
            take(Token::Kind::Word, lengthOf(isWordPart));
        } else if (isDigit(c) || (c == '.' && isDigit(peek()))) {
            take(Token::Kind::Number, numberLength());
        } else {
            take(Token::Kind::Symbol, symbolLength());
        }
    }

    void requireKnown(char c) const {
        if (c == '\0') object(line, "holds a NUL, behind which drivers read nothing");
        if (c == '\r' && peek() != '\n') object(line, "holds a carriage return without line feed");
    }

    void endLine() {
        ++at;
        ++line;
        startsLine = true;
        afterBlank = true;
    }

    void skipBlank() {
        ++at;
        afterBlank = true;
    }

    /// With a blank on one side, joined lines and separate ones have the same tokens.
    void joinLines() {
        const std::size_t end = at + (peek() == '\r' ? 2 : 1);
        if (end >= text.size() || text[end] != '\n') object(line, "holds a backslash within a line");
        const bool blankBefore = at == 0 || isBlank(text[at - 1]) || text[at - 1] == '\n';
        const bool blankBehind = end + 1 >= text.size() || isBlank(text[end + 1]);
        if (!blankBefore && !blankBehind) object(line, "joins lines without a blank between them");
        at = end + 1;
        ++line;
        afterBlank = true;
    }

    void skipComment() {
        const bool toLineEnd = peek() == '/';
        at += 2;
        while (at < text.size() && !(toLineEnd ? text[at] == '\n' : text[at] == '*' && peek() == '/'))
            skipInComment();
        if (!toLineEnd) at = std::min(text.size(), at + 2);
        afterBlank = true;
    }

    void skipInComment() {
        const char c = text[at];
        requireKnown(c);
        if (c == '\\' && (peek() == '\n' || peek() == '\r'))
            object(line, "ends a line of a comment with a backslash");
        if (c == '\n') ++line;
        ++at;
    }

    [[nodiscard]] std::size_t lengthOf(bool (*belongs)(char)) const {
        const auto begin = text.begin() + static_cast<std::ptrdiff_t>(at);
        return static_cast<std::size_t>(std::find_if_not(begin, text.end(), belongs) - begin);
    }

    /// As preprocessors read it: "1.5e-3", "0x1Fu", also "1.2.3".
    [[nodiscard]] std::size_t numberLength() const {
        std::size_t length = 1;
        while (isWordPart(peek(length)) || peek(length) == '.' ||
               ((peek(length) == '+' || peek(length) == '-') &&
                (peek(length - 1) == 'e' || peek(length - 1) == 'E') && !text.substr(at).starts_with("0x")))
            ++length;
        return length;
    }

    [[nodiscard]] std::size_t symbolLength() const {
        const auto listed = [](const auto& symbols, std::string_view symbol) {
            return std::ranges::find(symbols, symbol) != symbols.end();
        };
        if (listed(ThreeCharacters, text.substr(at, 3))) return 3;
        return listed(TwoCharacters, text.substr(at, 2)) ? 2 : 1;
    }

    void take(Token::Kind kind, std::size_t length) {
        tokens.push_back({text.substr(at, length), kind, startsLine, afterBlank, line});
        startsLine = afterBlank = false;
        at += length;
    }

    std::string_view text;
    std::size_t at = 0;
    int line = 1;
    bool startsLine = true;
    bool afterBlank = false;
    std::vector<Token> tokens;
};

} // namespace

std::vector<Token> tokensOf(std::string_view text) { return Tokeniser(text).run(); }

} // namespace workbench
