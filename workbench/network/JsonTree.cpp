// SPDX-License-Identifier: Apache-2.0
#include "workbench/network/JsonTree.h"

#include "workbench/network/NetworkFile.h"
#include "workbench/network/PlainText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <unordered_set>
#include <utility>

namespace workbench {
namespace {

constexpr std::size_t ShownBytes = 60;
constexpr std::string_view Digits = "0123456789+-eE.";

/// Counts the lines of what it walks over. A line end counts once the next character is read, since the
/// lexer looks one character beyond a number.
class CountingIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    struct Counter {
        int line = 1;
        bool lineEnded = false;
    };

    CountingIterator(const char* at, Counter& counter) : at(at), counter(&counter) {}

    reference operator*() const { return *at; }
    CountingIterator& operator++() {
        counter->line += counter->lineEnded ? 1 : 0;
        counter->lineEnded = *at++ == '\n';
        return *this;
    }
    friend bool operator==(const CountingIterator& a, const CountingIterator& b) { return a.at == b.at; }

private:
    const char* at;
    Counter* counter;
};

/// Builds the tree from the parser's events.
class Builder : public nlohmann::json_sax<nlohmann::json> {
public:
    Builder(std::string_view text, std::string who, const CountingIterator::Counter& counter)
        : source(text), who(std::move(who)), counter(counter) {}

    bool null() override { return add({.kind = JsonTree::Kind::Null}); }
    bool boolean(bool value) override { return add({.kind = JsonTree::Kind::Truth, .truth = value}); }
    bool number_integer(number_integer_t value) override {
        return add({.kind = JsonTree::Kind::Number,
                    .number = static_cast<double>(value),
                    .text = std::to_string(value)});
    }
    bool number_unsigned(number_unsigned_t value) override {
        return add({.kind = JsonTree::Kind::Number,
                    .number = static_cast<double>(value),
                    .text = std::to_string(value)});
    }
    bool number_float(number_float_t, const string_t& digits) override {
        JsonTree number{.kind = JsonTree::Kind::Number, .text = digits};
        // The lexer writes the point as the C library's locale has it.
        std::ranges::replace_if(
            number.text, [](char c) { return Digits.find(c) == std::string_view::npos; }, '.');
        const auto [end, error] =
            std::from_chars(number.text.data(), number.text.data() + number.text.size(), number.number);
        if (error != std::errc{}) refuse("is out of range", "", shortened(number.text));
        return add(std::move(number));
    }
    bool string(string_t& value) override {
        requirePlain(value);
        return add({.kind = JsonTree::Kind::Text, .text = std::move(value)});
    }
    bool binary(binary_t&) override { return false; } // not in text
    bool start_object(std::size_t) override { return begin({.kind = JsonTree::Kind::Object}); }
    bool end_object() override { return end(); }
    bool start_array(std::size_t) override { return begin({.kind = JsonTree::Kind::List}); }
    bool end_array() override { return end(); }
    bool key(string_t& name) override {
        requirePlain(name);
        if (name.size() > LongestMember || name.find_first_of(White) != std::string::npos)
            refuse("holds a name that is too long or has line ends",
                   "at most " + std::to_string(LongestMember) + " bytes",
                   JsonTree{JsonTree::Kind::Text, 0, false, 0, name}.shown());
        if (!open.back().names.insert(name).second)
            refuse('"' + shortened(name) + "\" stands twice in one object");
        open.back().pending = std::move(name);
        return true;
    }
    bool parse_error(std::size_t position, const std::string&,
                     const nlohmann::json::exception& error) override {
        const auto end = source.begin() + static_cast<std::ptrdiff_t>(
                                              std::min(position > 0 ? position - 1 : 0, source.size()));
        const int line = 1 + static_cast<int>(std::count(source.begin(), end, '\n'));
        if (dynamic_cast<const nlohmann::json::out_of_range*>(&error))
            refuseNetwork(who, {line}, "holds a number that is out of range");
        if (end == source.end()) refuseNetwork(who, {line}, "ends in the middle of its JSON text");
        refuseNetwork(who, {line}, "is no JSON text from here on", "", nearby(end));
    }

    JsonTree root;

private:
    /// A list or an object that has not ended.
    struct Open {
        JsonTree value;
        std::unordered_set<std::string> names; ///< of all members so far
        std::string pending;                   ///< of the member whose value comes next
    };

    [[noreturn]] void refuse(const std::string& what, const std::string& expected = "",
                             const std::string& got = "") const {
        refuseNetwork(who, {counter.line}, what, expected, got);
    }

    static std::string shortened(const std::string& text) {
        return text.size() <= ShownBytes ? text : text.substr(0, ShownBytes) + "…";
    }

    /// The rest of a line, as far as it can be shown.
    [[nodiscard]] std::string nearby(std::string_view::const_iterator from) const {
        const auto stop = std::find_if(from, source.end(), [](char c) { return c < ' ' || c > '~'; });
        return stop == from ? "" : '"' + shortened(std::string(from, stop)) + '"';
    }

    void requirePlain(const std::string& text) const {
        if (text.size() > NetworkLimits::TextBytes)
            refuse("holds a text that is too long", std::to_string(NetworkLimits::TextBytes) + " bytes",
                   std::to_string(text.size()));
        if (flawOf(text)) refuse("holds a text with control characters"); // the parser knows UTF-8
    }

    bool add(JsonTree value) {
        if (++values > NetworkLimits::Values)
            refuse("holds too many values", "at most " + std::to_string(NetworkLimits::Values));
        value.line = value.line ? value.line : counter.line;
        if (open.empty())
            root = std::move(value);
        else if (open.back().value.kind == JsonTree::Kind::List)
            open.back().value.items.push_back(std::move(value));
        else
            open.back().value.members.emplace_back(std::move(open.back().pending), std::move(value));
        return true;
    }

    bool begin(JsonTree value) {
        if (open.size() >= static_cast<std::size_t>(NetworkLimits::Depth))
            refuse("is nested too deep", "at most " + std::to_string(NetworkLimits::Depth) + " levels");
        value.line = counter.line;
        open.push_back({std::move(value), {}, {}});
        return true;
    }

    bool end() {
        JsonTree value = std::move(open.back().value);
        open.pop_back();
        return add(std::move(value));
    }

    std::string_view source;
    std::string who;
    const CountingIterator::Counter& counter;
    std::vector<Open> open;
    std::size_t values = 0; ///< so far
};

} // namespace

const JsonTree* JsonTree::member(std::string_view name) const noexcept {
    const auto found = std::ranges::find(members, name, &std::pair<std::string, JsonTree>::first);
    return found == members.end() ? nullptr : &found->second;
}

std::string JsonTree::shown() const {
    switch (kind) {
    case Kind::Null:
        return "null";
    case Kind::Truth:
        return truth ? "true" : "false";
    case Kind::Number:
        return text;
    case Kind::Text: {
        std::string shortened = text.size() <= ShownBytes ? text : text.substr(0, ShownBytes) + "…";
        std::ranges::replace_if(
            shortened, [](char c) { return White.find(c) != std::string_view::npos; }, ' ');
        return '"' + shortened + '"';
    }
    case Kind::List:
        return "a list";
    case Kind::Object:
        return "an object";
    }
    return "";
}

JsonTree parseJson(std::string_view text, const std::string& who) {
    CountingIterator::Counter counter;
    Builder builder(text, who, counter);
    nlohmann::json::sax_parse(CountingIterator(text.data(), counter),
                              CountingIterator(text.data() + text.size(), counter), &builder);
    return std::move(builder.root);
}

} // namespace workbench
