// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/check/Calls.h"

#include "workbench/gl/check/Objection.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace workbench {
namespace {

/// A definition with its body.
struct Function {
    std::size_t name = 0; ///< its place among the tokens
    std::size_t bodyEnd = 0;
    std::vector<std::size_t> called; ///< places of the names
    std::uint64_t elements = 0;      ///< of its own arrays
    enum class State { New, Open, Known } state = State::New;
    std::uint64_t calls = 0, allElements = 0; ///< with those of the functions that it calls
};

/// What carries one name.
struct Namesakes {
    std::vector<std::size_t> functions; ///< in the order of the text
    std::size_t prototype = SIZE_MAX;   ///< the place of the first one
};

class CallGraph {
public:
    CallGraph(std::span<const Token> tokens, const Brackets& brackets) : tokens(tokens), brackets(brackets) {
        for (std::size_t at = 0; at < tokens.size();) at = read(at);
    }

    void addArrays(std::span<const DeclaredArray> arrays) {
        std::size_t function = 0;
        for (const DeclaredArray& array : arrays) { // both are in the order of the text
            while (function < functions.size() && functions[function].bodyEnd < array.at) ++function;
            const bool within = function < functions.size() && functions[function].name < array.at;
            std::uint64_t& elements = within ? functions[function].elements : globalElements;
            elements = saturatingSum(elements, array.elements);
        }
        require(shaderlimit::AllElements, globalElements, 0, "declares too many elements of arrays");
    }

    void check() {
        for (std::size_t i = 0; i < functions.size(); ++i) measure(i);
        Function outside;
        outside.called = calledOutside;
        add(outside, SIZE_MAX);
        require(shaderlimit::Calls, outside.calls, 0, "calls functions too often");
    }

private:
    [[nodiscard]] bool isCallOrHeader(std::size_t at) const {
        return tokens[at].isWord() && at + 1 < tokens.size() && tokens[at + 1].is("(");
    }

    /// Reads what begins outside of all functions, and returns where to go on.
    std::size_t read(std::size_t at) {
        if (!isCallOrHeader(at)) return at + 1;
        const std::size_t end = brackets.closing(at + 1);
        const bool header =
            at > 0 && (tokens[at - 1].isWord() || tokens[at - 1].is("]") || tokens[at - 1].is("}"));
        if (header && end + 1 < tokens.size() && tokens[end + 1].is("{")) return readBody(at, end + 1);
        if (header && end + 1 < tokens.size() && (tokens[end + 1].is(";") || tokens[end + 1].is(","))) {
            Namesakes& known = names[tokens[at].text];
            known.prototype = std::min(known.prototype, at);
            return end + 1;
        }
        calledOutside.push_back(at);
        return at + 1;
    }

    std::size_t readBody(std::size_t name, std::size_t open) {
        const std::size_t end = brackets.closing(open);
        Function function;
        function.name = name;
        function.bodyEnd = end;
        for (std::size_t at = open; at < end; ++at)
            if (isCallOrHeader(at)) function.called.push_back(at);
        names[tokens[name].text].functions.push_back(functions.size());
        functions.push_back(std::move(function));
        return end + 1;
    }

    void require(std::uint64_t limit, std::uint64_t got, int line, const std::string& what) const {
        if (got > limit) object(line, what, limit, got);
    }

    void measure(std::size_t index) {
        Function& function = functions[index];
        const int line = tokens[function.name].line;
        const auto who = [&] { return " in function " + quotedName(tokens[function.name].text); };
        if (function.state == Function::State::Known) return;
        if (function.state == Function::State::Open) object(line, "calls itself" + who());
        function.state = Function::State::Open;
        function.allElements = function.elements;
        add(function, index);
        function.state = Function::State::Known;
        require(shaderlimit::Calls, function.calls, line, "calls functions too often" + who());
        require(shaderlimit::AllElements, saturatingSum(globalElements, function.allElements), line,
                "uses too many elements of arrays" + who());
    }

    /// Adds what the called functions cost.
    void add(Function& function, std::size_t index) {
        for (const std::size_t place : function.called) {
            const auto found = names.find(tokens[place].text);
            if (found == names.end() || found->second.functions.empty()) continue;
            std::uint64_t calls = 0, elements = 0;
            for (const std::size_t callee : candidates(found->second, place, index)) {
                measure(callee);
                calls = std::max(calls, functions[callee].calls);
                elements = std::max(elements, functions[callee].allElements);
            }
            function.calls = saturatingSum(function.calls, saturatingSum(calls, 1));
            function.allElements = saturatingSum(function.allElements, elements);
        }
    }

    /// What a call at that place can mean; the calling function itself only if there is nothing else.
    [[nodiscard]] std::vector<std::size_t> candidates(const Namesakes& namesakes, std::size_t place,
                                                      std::size_t caller) const {
        std::vector<std::size_t> possible;
        for (const std::size_t callee : namesakes.functions)
            if (callee != caller && (namesakes.prototype < place || functions[callee].name < place))
                possible.push_back(callee);
        if (possible.empty() && std::ranges::find(namesakes.functions, caller) != namesakes.functions.end())
            possible.push_back(caller);
        return possible;
    }

    std::span<const Token> tokens;
    const Brackets& brackets;
    std::vector<Function> functions;
    std::vector<std::size_t> calledOutside;
    std::unordered_map<std::string_view, Namesakes> names;
    std::uint64_t globalElements = 0;
};

} // namespace

void checkCalls(std::span<const Token> tokens, const Brackets& brackets,
                std::span<const DeclaredArray> arrays) {
    CallGraph graph(tokens, brackets);
    graph.addArrays(arrays);
    graph.check();
}

} // namespace workbench
