// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/check/ConstantExpression.h"

#include "workbench/gl/check/ShaderCheck.h"

#include <array>
#include <charconv>
#include <string>

namespace workbench {
namespace {

/// What ends the computation: there is no value.
struct NoValue {};

struct Operator {
    std::string_view symbol;
    int strength; ///< greater ones bind first
};

constexpr std::array<Operator, 18> Operators = {{{"||", 1},
                                                 {"&&", 2},
                                                 {"|", 3},
                                                 {"^", 4},
                                                 {"&", 5},
                                                 {"==", 6},
                                                 {"!=", 6},
                                                 {"<", 7},
                                                 {">", 7},
                                                 {"<=", 7},
                                                 {">=", 7},
                                                 {"<<", 8},
                                                 {">>", 8},
                                                 {"+", 9},
                                                 {"-", 9},
                                                 {"*", 10},
                                                 {"/", 10},
                                                 {"%", 10}}};

std::int64_t number(std::string_view digits) {
    int base = 10;
    if (digits.starts_with("0x") || digits.starts_with("0X")) {
        base = 16;
        digits.remove_prefix(2);
    } else if (digits.size() > 1 && digits.starts_with('0')) {
        base = 8;
    }
    std::int64_t value = 0;
    const char* const end = digits.data() + digits.size();
    const auto [read, error] = std::from_chars(digits.data(), end, value, base);
    if (error != std::errc() || read != end) throw NoValue{};
    return value;
}

bool isUnsigned(std::string_view digits) { return digits.ends_with('u') || digits.ends_with('U'); }

std::int64_t shifted(std::int64_t value, std::int64_t bits, bool left) {
    if (bits < 0 || bits > 31) throw NoValue{};
    return left ? value * (std::int64_t{1} << bits) : value >> bits;
}

std::int64_t divided(std::int64_t a, std::int64_t b, bool rest) {
    if (b == 0) throw NoValue{};
    return rest ? a % b : a / b;
}

std::int64_t applied(std::string_view symbol, std::int64_t a, std::int64_t b) {
    if (symbol == "+") return a + b;
    if (symbol == "-") return a - b;
    if (symbol == "*") return a * b;
    if (symbol == "/" || symbol == "%") return divided(a, b, symbol == "%");
    if (symbol == "<<" || symbol == ">>") return shifted(a, b, symbol == "<<");
    if (symbol == "==") return a == b;
    if (symbol == "!=") return a != b;
    if (symbol == "<=") return a <= b;
    if (symbol == ">=") return a >= b;
    if (symbol == "<") return a < b;
    if (symbol == ">") return a > b;
    if (symbol == "&&") return a != 0 && b != 0;
    if (symbol == "||") return a != 0 || b != 0;
    if (symbol == "&") return a & b;
    return symbol == "|" ? a | b : a ^ b;
}

class Computation {
public:
    Computation(std::span<const Token> tokens, const NameValue& valueOf) : tokens(tokens), valueOf(valueOf) {}

    std::int64_t run() {
        const std::int64_t value = binary(0);
        if (at != tokens.size() || (wasNegative && maybeUnsigned)) throw NoValue{};
        return value;
    }

private:
    std::int64_t checked(std::int64_t value) {
        if (value > INT32_MAX || value < INT32_MIN) throw NoValue{};
        wasNegative = wasNegative || value < 0;
        return value;
    }

    /// Operators of at least that strength.
    std::int64_t binary(int strength) {
        std::int64_t value = unary();
        while (const Operator* found = operatorHere(strength)) {
            ++at;
            value = checked(applied(found->symbol, value, binary(found->strength + 1)));
        }
        return value;
    }

    [[nodiscard]] const Operator* operatorHere(int strength) const {
        if (at == tokens.size()) return nullptr;
        for (const Operator& known : Operators)
            if (known.symbol == tokens[at].text && known.strength >= strength) return &known;
        return nullptr;
    }

    /// A loop, since a text may have thousands of signs in a row.
    std::int64_t unary() {
        const std::size_t begin = at;
        while (at < tokens.size() && isSign(tokens[at].text)) ++at;
        const std::size_t end = at;
        std::int64_t value = primary();
        for (std::size_t sign = end; sign > begin; --sign) {
            const std::string_view symbol = tokens[sign - 1].text;
            value = symbol == "-" ? -value : symbol == "~" ? ~value : symbol == "!" ? value == 0 : value;
        }
        return checked(value);
    }

    static bool isSign(std::string_view symbol) {
        return symbol == "-" || symbol == "+" || symbol == "!" || symbol == "~";
    }

    std::int64_t primary() {
        if (at == tokens.size()) throw NoValue{};
        const Token& token = tokens[at++];
        if (token.kind == Token::Kind::Number) return literal(token.text);
        if (token.isWord()) {
            maybeUnsigned = true;
            const auto value = valueOf(token.text);
            if (!value) throw NoValue{};
            return *value;
        }
        if (!token.is("(") || ++depth > static_cast<int>(shaderlimit::Nesting)) throw NoValue{};
        const std::int64_t value = binary(0);
        if (at == tokens.size() || !tokens[at++].is(")")) throw NoValue{};
        --depth;
        return value;
    }

    std::int64_t literal(std::string_view digits) {
        if (!isUnsigned(digits)) return checked(number(digits));
        maybeUnsigned = true;
        return checked(number(digits.substr(0, digits.size() - 1)));
    }

    std::span<const Token> tokens;
    const NameValue& valueOf;
    std::size_t at = 0;
    int depth = 0;
    bool wasNegative = false;
    bool maybeUnsigned = false;
};

} // namespace

std::optional<std::int64_t> computed(std::span<const Token> expression, const NameValue& valueOf) {
    try {
        return Computation(expression, valueOf).run();
    } catch (const NoValue&) {
        return std::nullopt;
    }
}

} // namespace workbench
