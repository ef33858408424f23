// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/check/Arrays.h"

#include "workbench/gl/check/ConstantExpression.h"
#include "workbench/gl/check/Objection.h"

#include <algorithm>
#include <array>
#include <optional>
#include <unordered_map>

namespace workbench {
namespace {

using shaderlimit::ConstantElements;
using shaderlimit::VariableElements;

constexpr std::array<std::string_view, 5> ScalarTypes = {"float", "double", "int", "uint", "bool"};
constexpr std::array<std::string_view, 5> VectorTypes = {"vec", "ivec", "uvec", "bvec", "dvec"};
constexpr std::array<std::string_view, 2> MatrixTypes = {"mat", "dmat"};
constexpr std::array<std::string_view, 4> OpaqueTypes = {"sampler", "isampler", "usampler", "image"};
constexpr std::array<std::string_view, 7> WordsBeforeExpressions = {"return", "else",    "do",      "case",
                                                                    "break",  "default", "continue"};

bool isOneOf(std::span<const std::string_view> list, std::string_view word) {
    return std::ranges::find(list, word) != list.end();
}

/// What the word adds to one of the beginnings; nothing if it has none of them.
std::string_view endBehind(std::span<const std::string_view> beginnings, std::string_view word) {
    for (const std::string_view beginning : beginnings)
        if (word.starts_with(beginning)) return word.substr(beginning.size());
    return {};
}

bool isSize(char c) { return c >= '2' && c <= '4'; }

/// The columns of a matrix type, or 0: "mat3", "dmat2x4".
std::uint64_t columnsOf(std::string_view word) {
    const std::string_view size = endBehind(MatrixTypes, word);
    const bool square = size.size() == 1 && isSize(size[0]);
    const bool oblong = size.size() == 3 && isSize(size[0]) && size[1] == 'x' && isSize(size[2]);
    return square || oblong ? static_cast<std::uint64_t>(size[0] - '0') : 0;
}

/// What an element of a type of the language counts.
std::optional<std::uint64_t> builtInWeight(std::string_view word) {
    if (isOneOf(ScalarTypes, word)) return 1;
    if (const std::uint64_t columns = columnsOf(word)) return columns;
    const std::string_view size = endBehind(VectorTypes, word);
    if (size.size() == 1 && isSize(size[0])) return 1;
    const std::string_view shape = endBehind(OpaqueTypes, word);
    const bool opaque = shape.starts_with("1D") || shape.starts_with("2D") || shape.starts_with("3D") ||
                        shape.starts_with("Cube") || shape.starts_with("Buffer");
    return opaque ? std::optional<std::uint64_t>(1) : std::nullopt;
}

/// One pair of brackets on the way through the text, and the statement that is being read in it.
struct Level {
    enum class Kind { Statements, Members, Round, Square, List };

    Kind kind = Kind::Statements;
    std::string_view structName;      // with Members
    std::uint64_t memberElements = 0; // with Members
    bool declares = false;            // the statement is a declaration
    bool constant = false;            // with "const"
    bool openSize = false;            // its type is an array without size: "float[] a"
    std::uint64_t elements = 1;       // of its type

    void endStatement() {
        declares = constant = openSize = false;
        elements = 1;
    }
};

class ArrayScan {
public:
    ArrayScan(std::span<const Token> tokens, const Brackets& brackets) : tokens(tokens), brackets(brackets) {}

    std::vector<DeclaredArray> run() {
        levels.emplace_back();
        for (at = 0; at < tokens.size();) {
            if (tokens[at].isWord())
                word();
            else
                symbol();
        }
        return std::move(found);
    }

private:
    /// The sizes in the brackets behind a name or type.
    struct Sizes {
        std::uint64_t elements = 1;
        bool open = false; // the first one is empty
    };

    [[nodiscard]] bool is(std::size_t place, std::string_view text) const {
        return place < tokens.size() && tokens[place].is(text);
    }

    [[nodiscard]] bool followsWord() const {
        return at > 0 && tokens[at - 1].isWord() && !isOneOf(WordsBeforeExpressions, tokens[at - 1].text);
    }

    [[nodiscard]] std::optional<std::uint64_t> typeWeight(std::string_view word) const {
        if (const auto known = structs.find(word); known != structs.end()) return known->second;
        return builtInWeight(word);
    }

    void word() {
        Level& level = levels.back();
        const std::string_view text = tokens[at].text;
        const bool field = at > 0 && tokens[at - 1].is(".");
        const auto weight = field ? std::nullopt : typeWeight(text);
        if (text == "const") level.constant = true;
        if (weight) return type(level, *weight);
        const bool continues = at > 0 && level.declares && (tokens[at - 1].is(",") || afterType == at);
        if (!field && (followsWord() || continues || afterType == at))
            declarator(level);
        else
            ++at;
    }

    /// A type alone, with sizes ("float[3]"), or as a constructor ("float[](…)").
    void type(Level& level, std::uint64_t weight) {
        const std::size_t name = at++;
        if (is(at, "(")) return;
        const Sizes sizes = takeSizes(name);
        if (is(at, "("))
            return requireAtMost(ConstantElements, saturatingProduct(weight, sizes.elements), name);
        level.elements = saturatingProduct(weight, sizes.elements);
        level.openSize = sizes.open;
        requireAtMost(level.constant ? ConstantElements : VariableElements, level.elements, name);
        afterType = at;
    }

    /// A name that is declared, with what belongs to it up to its initialiser.
    void declarator(Level& level) {
        const std::size_t name = at++;
        level.declares = true;
        if (is(at, "(") || is(at, "{")) return;
        const bool isArray = is(at, "[");
        const Sizes sizes = takeSizes(name);
        std::uint64_t elements = saturatingProduct(level.elements, sizes.elements);
        const bool initialised = is(at, "=");
        if (level.openSize && isArray) object(tokens[name].line, withoutSize(name));
        if (sizes.open || level.openSize)
            elements = saturatingProduct(elements, initialElements(initialised, name));
        requireAtMost(level.constant && initialised ? ConstantElements : VariableElements, elements, name);
        if (level.kind == Level::Kind::Members)
            level.memberElements = saturatingSum(level.memberElements, elements);
        else if (elements > 1)
            found.push_back({name, elements});
        if (level.constant && initialised && !isArray) remember(name);
    }

    Sizes takeSizes(std::size_t name) {
        Sizes sizes;
        for (bool first = true; is(at, "["); first = false) {
            const std::size_t end = brackets.closing(at);
            const auto expression = tokens.subspan(at + 1, std::min(end, tokens.size()) - at - 1);
            at = std::min(end + 1, tokens.size());
            if (expression.empty() && first) {
                sizes.open = true;
                continue;
            }
            const auto size = computed(expression, [&](std::string_view word) { return valueOf(word); });
            if (!size)
                object(tokens[name].line,
                       "declares " + quotedName(tokens[name].text) + " with a size that cannot be computed");
            const auto elements = static_cast<std::uint64_t>(std::max<std::int64_t>(1, *size));
            sizes.elements = saturatingProduct(sizes.elements, elements);
        }
        return sizes;
    }

    /// How many elements the initialiser at the position gives an array without size.
    [[nodiscard]] std::uint64_t initialElements(bool initialised, std::size_t name) const {
        std::size_t open = at + 1;
        if (initialised && open < tokens.size() && tokens[open].isWord() && is(open + 1, "[")) {
            ++open;
            while (is(open, "[")) open = brackets.closing(open) + 1;
            if (is(open, "(")) return brackets.elements(open);
        }
        if (initialised && is(open, "{")) return brackets.elements(open);
        object(tokens[name].line, withoutSize(name));
    }

    [[nodiscard]] std::string withoutSize(std::size_t name) const {
        return "declares " + quotedName(tokens[name].text) + " without a size";
    }

    void requireAtMost(std::uint64_t limit, std::uint64_t elements, std::size_t name) const {
        if (elements > limit)
            object(tokens[name].line, "declares " + quotedName(tokens[name].text) + " with too many elements",
                   limit, elements);
    }

    [[nodiscard]] std::optional<std::int64_t> valueOf(std::string_view name) const {
        const auto known = constants.find(name);
        return known == constants.end() ? std::nullopt : known->second;
    }

    /// A name that stands for different constants in different places stands for none.
    void remember(std::size_t name) {
        std::size_t end = at + 1;
        while (end < tokens.size() && !is(end, ",") && !is(end, ";") && !closesBracket(tokens[end]))
            end = opensBracket(tokens[end]) ? brackets.closing(end) + 1 : end + 1;
        end = std::min(end, tokens.size());
        const auto value = computed(tokens.subspan(at + 1, end - at - 1),
                                    [&](std::string_view word) { return valueOf(word); });
        const auto [known, isNew] = constants.try_emplace(tokens[name].text, value);
        if (!isNew && known->second != value) known->second.reset();
    }

    void symbol() {
        const Token& token = tokens[at];
        if (opensBracket(token))
            open();
        else if (closesBracket(token))
            close();
        else if (token.is(";") ||
                 (token.is(",") && levels.back().kind == Level::Kind::Round && startsParameter(at + 1)))
            levels.back().endStatement();
        ++at;
    }

    /// Behind the comma of a parameter list; behind one of a for-loop stands a name.
    [[nodiscard]] bool startsParameter(std::size_t place) const {
        return place + 1 < tokens.size() && tokens[place].isWord() &&
               (tokens[place + 1].isWord() || typeWeight(tokens[place].text));
    }

    void open() {
        Level level;
        if (is(at, "("))
            level.kind = Level::Kind::Round;
        else if (is(at, "["))
            level.kind = Level::Kind::Square;
        else if (at > 0 && (is(at - 1, "=") || is(at - 1, ",") || is(at - 1, "{") || is(at - 1, "(")) &&
                 opensList())
            level.kind = Level::Kind::List;
        else if (at > 0 && tokens[at - 1].isWord() && !isOneOf(WordsBeforeExpressions, tokens[at - 1].text))
            openMembers(level);
        levels.push_back(level);
    }

    /// A brace behind a brace opens a block of statements, unless that one is a list.
    [[nodiscard]] bool opensList() const {
        return !is(at - 1, "{") || levels.back().kind == Level::Kind::List;
    }

    void openMembers(Level& level) const {
        level.kind = Level::Kind::Members;
        if (at > 1 && is(at - 2, "struct")) level.structName = tokens[at - 1].text;
    }

    void close() {
        if (levels.size() == 1) return;
        const Level closed = levels.back();
        levels.pop_back();
        Level& around = levels.back();
        if (closed.kind == Level::Kind::Statements) around.endStatement();
        if (closed.kind != Level::Kind::Members) return;
        const std::uint64_t elements = std::max<std::uint64_t>(1, closed.memberElements);
        requireAtMost(VariableElements, elements, at);
        if (!closed.structName.empty()) {
            auto& weight = structs[closed.structName]; // two of the same name count as the larger one
            weight = std::max(weight, elements);
        } else if (is(at + 1, ";")) {
            found.push_back({at, elements}); // an interface block without a name of its own
        }
        around.elements = elements;
        around.declares = true;
        afterType = at + 1;
    }

    std::span<const Token> tokens;
    const Brackets& brackets;
    std::size_t at = 0;
    std::size_t afterType = SIZE_MAX; // the token directly behind a type with sizes or members
    std::vector<Level> levels;
    std::unordered_map<std::string_view, std::uint64_t> structs;
    std::unordered_map<std::string_view, std::optional<std::int64_t>> constants;
    std::vector<DeclaredArray> found;
};

} // namespace

std::vector<DeclaredArray> declaredArrays(std::span<const Token> tokens, const Brackets& brackets) {
    return ArrayScan(tokens, brackets).run();
}

} // namespace workbench
