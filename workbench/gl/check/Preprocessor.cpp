// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/check/Preprocessor.h"

#include "workbench/gl/check/ConstantExpression.h"
#include "workbench/gl/check/Objection.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <unordered_map>

namespace workbench {
namespace {

using Tokens = std::span<const Token>;
using TokenList = std::vector<Token>;

struct Macro {
    bool isFunction = false;
    std::vector<std::string_view> parameters;
    TokenList body;
    bool active = false; ///< its replacement is being looked at
};

/// Names that belong to the language, the driver or the host's own shims.
bool isReserved(std::string_view name) {
    return name == "defined" || name.starts_with("GL_") || name.starts_with("krod_") ||
           name.find("__") != std::string_view::npos;
}

bool isOfDriver(std::string_view name) { return name.starts_with("GL_") || name.starts_with("__"); }

bool sameTokens(Tokens a, Tokens b) { return std::ranges::equal(a, b, {}, &Token::text, &Token::text); }

/// One #if with what belongs to it.
struct Condition {
    bool outer = true; ///< what stands around it is read
    bool taken = false;
    bool reading = false;
};

class Preprocessor {
public:
    Preprocessor(Tokens text, DriverNames& driver) : text(text), driver(driver) {}

    TokenList run() {
        for (std::size_t at = 0; at < text.size();) {
            const bool isDirective = text[at].startsLine && text[at].is("#");
            const std::size_t end = isDirective ? endOfLine(at) : endOfCode(at);
            const Tokens part = text.subspan(at, end - at);
            if (isDirective)
                directive(part.subspan(1), part[0].line);
            else if (reading())
                expand(part, 0, result);
            at = end;
        }
        return std::move(result);
    }

private:
    [[nodiscard]] std::size_t endOfLine(std::size_t at) const {
        while (++at < text.size() && !text[at].startsLine) {
        }
        return at;
    }

    [[nodiscard]] std::size_t endOfCode(std::size_t at) const {
        while (++at < text.size() && !(text[at].startsLine && text[at].is("#"))) {
        }
        return at;
    }

    [[nodiscard]] bool reading() const { return conditions.empty() || conditions.back().reading; }

    void count(int line) {
        if (++handled > shaderlimit::Tokens)
            object(line, "makes the preprocessor handle too many tokens", shaderlimit::Tokens, handled);
    }

    void directive(Tokens line, int number) {
        count(number);
        if (line.empty()) return;
        const std::string_view name = line[0].text;
        const Tokens rest = line.subspan(1);
        if (name == "if" || name == "ifdef" || name == "ifndef") return open(name, rest, number);
        if (name == "elif" || name == "else") return alternative(name, rest, number);
        if (name == "endif") return close();
        if (!reading()) return;
        if (name == "include") object(number, "includes a file");
        if (name == "define") return define(rest, number);
        if (name == "undef") return undefine(rest, number);
        if (name == "version" && !version && !rest.empty()) version = computed(rest.first(1), noNames());
        TokenList unused; // some preprocessors replace macros here too
        expand(rest, number, unused);
    }

    static NameValue noNames() {
        return [](std::string_view) { return std::nullopt; };
    }

    void open(std::string_view name, Tokens rest, int line) {
        if (conditions.size() >= shaderlimit::Nesting)
            object(line, "nests conditions too deeply", shaderlimit::Nesting, conditions.size() + 1);
        Condition condition{.outer = reading()};
        if (condition.outer) condition.taken = condition.reading = holds(name, rest, line);
        conditions.push_back(condition);
    }

    void alternative(std::string_view name, Tokens rest, int line) {
        if (conditions.empty()) return;
        Condition& condition = conditions.back();
        condition.reading =
            condition.outer && !condition.taken && (name == "else" || holds("if", rest, line));
        condition.taken = condition.taken || condition.reading;
    }

    void close() {
        if (!conditions.empty()) conditions.pop_back();
    }

    bool holds(std::string_view name, Tokens rest, int line) {
        if (name == "if") return conditionHolds(rest, line);
        return !rest.empty() && isDefined(rest[0].text, line) == (name == "ifdef");
    }

    bool isDefined(std::string_view name, int line) {
        if (macros.contains(name)) return true;
        if (name == "__VERSION__" || name == "__LINE__" || name == "__FILE__") return true;
        return isOfDriver(name) && driver.exists(name, line);
    }

    bool conditionHolds(Tokens rest, int line) {
        TokenList expanded;
        expand(withoutDefined(rest, line), line, expanded);
        const auto value = computed(expanded, [&](std::string_view name) { return valueOf(name, line); });
        if (!value) object(line, "has a condition that cannot be computed");
        return *value != 0;
    }

    /// "defined X" and "defined(X)" as numbers.
    TokenList withoutDefined(Tokens rest, int line) {
        TokenList plain;
        for (std::size_t i = 0; i < rest.size(); ++i) {
            plain.push_back(rest[i]);
            if (!rest[i].is("defined")) continue;
            const bool inBrackets = i + 3 < rest.size() && rest[i + 1].is("(") && rest[i + 3].is(")");
            const std::size_t name = i + (inBrackets ? 2 : 1);
            if (name >= rest.size() || !rest[name].isWord())
                object(line, "has a condition that cannot be computed");
            plain.back().kind = Token::Kind::Number;
            plain.back().text = isDefined(rest[name].text, line) ? "1" : "0";
            i = name + (inBrackets ? 1 : 0);
        }
        return plain;
    }

    /// Names that nobody has defined count as 0.
    std::optional<std::int64_t> valueOf(std::string_view name, int line) {
        if (name == "__LINE__" || name == "__FILE__" || name == "defined") return std::nullopt;
        if (name ==
            "__VERSION__") // a text without #version is compiled as 1.10 or, behind the shims, as 1.20
            return version ? version : driver.exists(name, line) ? 120 : 110;
        return isOfDriver(name) && driver.exists(name, line) ? 1 : 0;
    }

    void define(Tokens rest, int line) {
        if (rest.empty() || !rest[0].isWord()) return;
        const std::string_view name = rest[0].text;
        if (isReserved(name)) object(line, "defines the reserved name " + quotedName(name));
        Macro macro;
        std::size_t body = 1;
        if (rest.size() > 1 && rest[1].is("(") && !rest[1].afterBlank) {
            macro.isFunction = true;
            for (body = 2; body < rest.size() && !rest[body].is(")"); ++body)
                if (rest[body].isWord()) macro.parameters.push_back(rest[body].text);
            body = std::min(body + 1, rest.size());
        }
        macro.body.assign(rest.begin() + static_cast<std::ptrdiff_t>(body), rest.end());
        for (const Token& token : macro.body)
            if (token.is("#") || token.is("##")) object(line, "pastes tokens in macro " + quotedName(name));
        for (std::size_t i = 0; i < rest.size(); ++i) count(line);
        const auto [known, isNew] = macros.try_emplace(name, macro);
        if (!isNew && !sameMacro(known->second, macro))
            object(line, "defines macro " + quotedName(name) + " a second time");
    }

    static bool sameMacro(const Macro& a, const Macro& b) {
        return a.isFunction == b.isFunction && a.parameters == b.parameters && sameTokens(a.body, b.body);
    }

    void undefine(Tokens rest, int line) {
        if (rest.empty()) return;
        if (isReserved(rest[0].text)) object(line, "undefines the reserved name " + quotedName(rest[0].text));
        macros.erase(rest[0].text);
    }

    /// Replaces macros. `useLine` is the line of the macro that the tokens stand for; 0 leaves them theirs.
    void expand(Tokens tokens, int useLine, TokenList& out) {
        if (++depth > static_cast<int>(shaderlimit::Nesting))
            object(useLine, "nests macros too deeply", shaderlimit::Nesting, shaderlimit::Nesting + 1);
        for (std::size_t at = 0; at < tokens.size();) {
            Token token = tokens[at++];
            if (useLine != 0) token.line = useLine;
            count(token.line);
            const auto found = token.isWord() ? macros.find(token.text) : macros.end();
            if (found == macros.end()) {
                requireForeign(token);
                out.push_back(token);
            } else {
                at += replace(found->first, found->second, tokens.subspan(at), token.line, out);
            }
        }
        --depth;
    }

    /// The shims use these names; a text that joins in would do things behind the back of this check.
    static void requireForeign(const Token& token) {
        if (token.isWord() && token.text.starts_with("krod_"))
            object(token.line, "uses the reserved name " + quotedName(token.text));
    }

    /// Writes what a macro stands for, and returns how many of the tokens behind its name belong to it.
    std::size_t replace(std::string_view name, Macro& macro, Tokens behind, int line, TokenList& out) {
        if (macro.active) object(line, "uses macro " + quotedName(name) + ", which grows by itself");
        std::size_t used = 0;
        TokenList substituted;
        if (macro.isFunction) {
            std::vector<Tokens> arguments;
            used = takeArguments(name, behind, line, arguments);
            substituted = substitute(name, macro, arguments, line);
        }
        macro.active = true;
        expand(macro.isFunction ? Tokens(substituted) : Tokens(macro.body), line, out);
        macro.active = false;
        return used;
    }

    std::size_t takeArguments(std::string_view name, Tokens behind, int line,
                              std::vector<Tokens>& arguments) {
        if (behind.empty() || !behind[0].is("("))
            object(line, "uses macro " + quotedName(name) + " without its arguments");
        std::size_t open = 0, begin = 1;
        for (std::size_t at = 0; at < behind.size(); ++at) {
            countArgumentToken(line);
            if (behind[at].is("(")) ++open;
            const bool ends = behind[at].is(")") && --open == 0;
            if (!ends && !(behind[at].is(",") && open == 1)) continue;
            arguments.push_back(behind.subspan(begin, at - begin));
            begin = at + 1;
            if (ends) return at + 1;
        }
        object(line, "uses macro " + quotedName(name) + " without a closing bracket");
    }

    /// Arguments within arguments are walked over once for each level.
    void countArgumentToken(int line) {
        constexpr std::uint64_t Most = 16 * shaderlimit::Tokens;
        if (++walked > Most) object(line, "nests the arguments of macros too deeply", Most, walked);
    }

    TokenList substitute(std::string_view name, const Macro& macro, std::vector<Tokens>& arguments,
                         int line) {
        if (macro.parameters.empty() && arguments.size() == 1 && arguments[0].empty()) arguments.clear();
        if (arguments.size() != macro.parameters.size())
            object(line, "gives macro " + quotedName(name) + " a wrong number of arguments",
                   macro.parameters.size(), arguments.size());
        std::unordered_map<std::string_view, TokenList> values;
        for (std::size_t i = 0; i < arguments.size(); ++i)
            expand(arguments[i], line, values[macro.parameters[i]]);
        TokenList substituted;
        for (const Token& token : macro.body) {
            const auto value = token.isWord() ? values.find(token.text) : values.end();
            if (value == values.end())
                substituted.push_back(token);
            else
                substituted.insert(substituted.end(), value->second.begin(), value->second.end());
            if (substituted.size() > shaderlimit::Tokens)
                object(line, "makes the preprocessor handle too many tokens", shaderlimit::Tokens,
                       shaderlimit::Tokens + 1);
        }
        return substituted;
    }

    Tokens text;
    DriverNames& driver;
    std::unordered_map<std::string_view, Macro> macros;
    std::vector<Condition> conditions;
    std::optional<std::int64_t> version;
    std::uint64_t handled = 0; // tokens
    std::uint64_t walked = 0;  // tokens of arguments
    int depth = 0;
    TokenList result;
};

} // namespace

bool DriverNames::exists(std::string_view name, int line) {
    const auto known = std::ranges::find(names, name);
    const auto index = static_cast<std::size_t>(known - names.begin());
    if (known != names.end()) return ((choice >> index) & 1U) != 0;
    names.push_back(name);
    if (names.size() > shaderlimit::DriverNames)
        object(line, "asks for too many names of the driver", shaderlimit::DriverNames, names.size());
    return false;
}

bool DriverNames::next() { return ++choice < (1U << names.size()); }

std::vector<Token> preprocessed(const std::vector<Token>& text, DriverNames& driver) {
    return Preprocessor(text, driver).run();
}

} // namespace workbench
