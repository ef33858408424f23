// SPDX-License-Identifier: Apache-2.0
// Networks that were written to do harm, or damaged: refused in one sentence, in little memory.
#include "CountedMemory.h"

#include "workbench/network/NetworkFile.h"
#include "workbench/report/Failure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace workbench {
namespace {

/// The sentence with which a text is refused; empty when it is taken.
std::string refusal(std::string_view text) {
    try {
        static_cast<void>(networkFromText(text, "net.json"));
        return "";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.fault(), Fault::Network);
        return failure.what();
    }
}

bool isOneReadableLine(const std::string& sentence) {
    return sentence.starts_with("net.json") && sentence.size() < 5000 &&
           std::ranges::none_of(sentence,
                                [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 127; });
}

std::string contentsOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// The networks kept for fuzzing that are good ones.
std::vector<std::string> goodTexts() {
    std::vector<std::string> texts;
    for (const auto& entry : std::filesystem::directory_iterator(NETWORK_CORPUS)) {
        const std::string text = contentsOf(entry.path());
        if (refusal(text).empty()) texts.push_back(text);
    }
    std::ranges::sort(texts);
    return texts;
}

/// `count` texts with commas between them.
std::string list(std::size_t count, const std::function<std::string(std::size_t)>& item) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += (i ? ",\n" : "\n") + item(i);
    return text;
}

const std::string Begin = "{\"version\": 1, \"objects\": [";
const std::string One = R"({"name": "a", "creator": "X/Y"})";

std::string objects(std::size_t count) {
    return Begin +
           list(count,
                [](std::size_t i) { return R"({"creator": "X/Y", "name": ")" + std::to_string(i) + "\"}"; }) +
           "]}";
}

/// One view with `count` - 1 processors: as many links.
std::string links(std::size_t count) {
    return Begin + One + R"(], "views": [{"name": "v", "shows": "a", "processors": [)" +
           list(count - 1, [](std::size_t) { return "\"a\""; }) + "]}]}";
}

/// The same number of links, as shared parameters.
std::string ends(std::size_t count) {
    return Begin + One + "], \"shared\": [[" +
           list(count, [](std::size_t i) { return "\"a." + std::to_string(i) + '"'; }) + "]]}";
}

/// Two values for each parameter set: itself and nothing else, and four around them.
std::string values(std::size_t count) {
    return Begin + R"({"name": "a", "creator": "X/Y", "parameters": {)" +
           list(count - 7, [](std::size_t i) { return '"' + std::to_string(i) + "\": \"\""; }) + "}}]}";
}

std::string deep(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

std::string longText(std::size_t bytes) {
    return Begin + R"({"name": "a", "creator": "X/Y", "parameters": {"code": ")" + std::string(bytes, 'x') +
           "\"}}]}";
}

std::string ofSize(std::size_t bytes) {
    std::string text = Begin + One + "]}";
    text.resize(bytes, ' ');
    return text;
}

TEST(HostileNetwork, limits_areReachedAndNotPassed) {
    const struct {
        const char* what;
        std::size_t limit;
        std::string (*make)(std::size_t);
        const char* refusal;
    } limits[] = {
        {"objects", NetworkLimits::Objects, objects, "has too many objects"},
        {"links of a view", NetworkLimits::Links, links, "refers to objects too often"},
        {"shared parameters", NetworkLimits::Links, ends, "refers to objects too often"},
        {"values", NetworkLimits::Values, values, "holds too many values"},
        {"bytes of a text", NetworkLimits::TextBytes, longText, "holds a text that is too long"},
        {"bytes", NetworkLimits::Bytes, ofSize, "is too large for a network"},
    };
    for (const auto& each : limits) {
        EXPECT_EQ(refusal(each.make(each.limit - 1)), "") << each.what;
        EXPECT_EQ(refusal(each.make(each.limit)), "") << each.what;
        const std::string sentence = refusal(each.make(each.limit + 1));
        EXPECT_NE(sentence.find(each.refusal), std::string::npos) << each.what << ": " << sentence;
        EXPECT_TRUE(isOneReadableLine(sentence)) << sentence;
    }
    constexpr auto Depth = static_cast<std::size_t>(NetworkLimits::Depth);
    const auto tooDeep = [](std::size_t depth) {
        return refusal(deep(depth)).find("nested too deep") != std::string::npos;
    };
    EXPECT_FALSE(tooDeep(Depth - 1));
    EXPECT_FALSE(tooDeep(Depth));
    EXPECT_TRUE(tooDeep(Depth + 1));
    EXPECT_TRUE(tooDeep(100'000));
}

TEST(HostileNetwork, millionLinks_areRefused) {
    EXPECT_NE(refusal(links(1'000'000)).find("holds too many values"), std::string::npos);
    EXPECT_NE(refusal(ends(1'000'000)).find("holds too many values"), std::string::npos);
}

TEST(HostileNetwork, goodFileCutAnywhere_isRefusedUnlessOnlyBlanksAreMissing) {
    const auto texts = goodTexts();
    ASSERT_GE(texts.size(), 5U);
    for (const std::string& text : texts) {
        const std::size_t end = text.find_last_of('}');
        for (std::size_t size = 0; size <= text.size(); ++size) {
            const std::string sentence = refusal(std::string_view(text).substr(0, size));
            if (size > end)
                ASSERT_EQ(sentence, "") << size;
            else
                ASSERT_TRUE(isOneReadableLine(sentence)) << size << ": " << sentence;
        }
    }
}

/// Makes bad networks of a good one. Every way of damage is one that cannot leave it good.
class Damage {
public:
    explicit Damage(unsigned seed) : random(seed) {}

    std::string network() {
        const std::string name = '"' + std::string(1 + draw(20), 'n') + '"';
        switch (draw(14)) {
        case 0: // cut
            return Good.substr(0, 1 + draw(Good.size() - 3));
        case 1: // no UTF-8 or a raw control inside of a text
            return with("\"9.0\"", std::string("\"") + "\xff\xc0\x80\xed\x01\x1b\x7f"[draw(7)] + '"');
        case 2: // an escaped control
            return with("\"9.0\"", std::string("\"\\u00") + "01"[draw(2)] + "123456"[draw(6)] + '"');
        case 3: // half of a pair of escapes
            return with("\"9.0\"", draw(2) ? "\"\\ud800\"" : "\"\\udc00x\"");
        case 4: // a wrong kind
            return with(Kinds[draw(std::size(Kinds))], Wrong[draw(std::size(Wrong))]);
        case 5: // an unknown member, anywhere
            return with(Objects[draw(std::size(Objects))], Objects[0] + name + ": 1, ", true);
        case 6: // a name twice
            return with(One, One + ", " + One);
        case 7: // one that is not there
            return with("\"takes\": ", "\"takes\": " + name);
        case 8: // a circle
            return with("\"galaxy\", \"creator\": \"Scene/Galaxy\"",
                        "\"galaxy\", \"creator\": \"Scene/Galaxy\", \"input\": \"soft\"");
        case 9: // itself
            return with("\"input\": \"galaxy\"", "\"input\": \"soft\"");
        case 10: // a number that is none, or out of range
            return with("160", Numbers[draw(std::size(Numbers))]);
        case 11: // something behind the end
            return Good + "}]x\x1b,"[draw(5)];
        case 12: // a version that does not exist
            return with("\"version\": 1", "\"version\": " + std::to_string(2 + draw(1'000'000)));
        default: // a structural character lost
            return withoutStructure();
        }
    }

private:
    std::size_t draw(std::size_t below) { return random() % below; }

    std::string with(const std::string& from, const std::string& to, bool behind = false) const {
        std::string text = Good;
        const std::size_t at = text.find(from);
        if (at == std::string::npos) return text.substr(1);
        return behind ? text.insert(at + from.size(), to.substr(1)) : text.replace(at, from.size(), to);
    }

    std::string withoutStructure() {
        std::string text = Good;
        std::size_t at = draw(text.size());
        while (std::string_view("{}[]:,").find(text[at]) == std::string_view::npos)
            at = (at + 1) % text.size();
        return text.erase(at, 1);
    }

    static inline const std::string One = R"({"name": "galaxy", "creator": "Scene/Galaxy"})";
    static inline const std::string Good =
        R"({"version": 1, "objects": [)" + One +
        R"(, {"name": "soft", "creator": "Display/Blurred", "input": "galaxy", "parameters": {"width": "9.0"}}],)"
        R"( "shared": [["soft.width", "galaxy.size"]],)"
        R"( "views": [{"name": "main", "shows": "soft", "size": [160, 90], "srgb": true}]})";
    static inline const std::string Kinds[] = {"\"9.0\"", "\"Scene/Galaxy\"", "[160, 90]", "\"main\"",
                                               "true"};
    static inline const std::string Wrong[] = {"null", "-1", "{}", "[[]]", "[null]", "1e5"};
    static inline const std::string Objects[] = {"{", R"({"name": "soft", )", R"({"name": "main", )"};
    static inline const std::string Numbers[] = {
        "0", "-3", "1e999", "131073", "0.5", "NaN", "0x10", "+160", "01", "1e400", "99999999999999999999"};
    std::mt19937 random;
};

TEST(HostileNetwork, threeHundredDamagedOnes_areRefusedInOneLine) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        const std::string text = Damage(seed).network();
        const std::string sentence = refusal(text);
        EXPECT_TRUE(isOneReadableLine(sentence)) << "seed " << seed << ": " << sentence << '\n' << text;
    }
}

/// What fills a file of that size with as little as possible in each value.
std::string filled(const std::string& begin, const std::string& item, std::size_t bytes) {
    std::string text = begin;
    while (text.size() < bytes) text += item;
    return text;
}

TEST(HostileNetwork, memory_isAtMostTwentyTimesTheLargestFile) {
    constexpr std::size_t Size = NetworkLimits::Bytes - 64;
    const std::vector<std::string> texts = {
        filled("[", "[],", Size),
        filled("[", "0,", Size),
        filled("[", "\"\",", Size),
        filled("[", "{},", Size),
        values(NetworkLimits::Values),
        objects(NetworkLimits::Objects),
        links(NetworkLimits::Links),
        ends(NetworkLimits::Links),
        longText(NetworkLimits::TextBytes),
        Begin + R"({"name": ")" + std::string(Size, 'x'),
        filled("{\"version\": 1, \"shared\": [", "[\"a.b\",\"a.c\"],", Size),
    };
    for (const std::string& text : texts) {
        const std::size_t most = mostBytesDuring([&] { static_cast<void>(refusal(text)); });
        EXPECT_GT(most, 0U) << "nothing is counted";
        EXPECT_LE(most, 20 * NetworkLimits::Bytes) << text.substr(0, 60);
    }
}

TEST(HostileNetwork, namesThatWouldDeceive_areRefused) {
    const auto named = [](const std::string& name) {
        return refusal(Begin + "{\"name\": \"" + name + "\", \"creator\": \"X/Y\"}]}");
    };
    for (const char* const name : {"a\xe2\x80\xae"
                                   "b",
                                   "\xe2\x81\xa6", "\xd8\x9c", "a\\u202eb", "a\\u200f", "a\\u2069"})
        EXPECT_NE(named(name).find("marks that turn the direction of writing"), std::string::npos) << name;
    for (const char* const name : {"a\\u0000b", "\\u001b[2J", "\\u009b2J", "\x7f",
                                   "\xc2\x9b"
                                   "2J"})
        EXPECT_NE(named(name).find("control characters"), std::string::npos) << name;
    for (const char* const name :
         {"\xff", "\xc3", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xc0\xaf", "a\nb", "a\x1b"})
        EXPECT_NE(named(name).find("is no JSON text from here on"), std::string::npos) << name;
    for (const char* const name : {"", "a.b", "a=b", "a\\nb", "a\\fb"})
        EXPECT_NE(named(name).find("without a usable \"name\""), std::string::npos) << name;
    for (const char* const name : {"%n%s%s%x",
                                   "Gr\xc3\xbc\xc3\x9f"
                                   "e",
                                   "\xf0\x9f\x8c\x8c", "a b", "-q"})
        EXPECT_EQ(named(name), "") << name;
    EXPECT_EQ(named(std::string(NetworkLimits::TextBytes, 'x')), "");
}

TEST(HostileNetwork, endlessNames_areSaidShortly) {
    const std::string name(NetworkLimits::TextBytes, 'x');
    const std::string object = "{\"name\": \"" + name + "\", \"creator\": \"X/Y\"}";
    EXPECT_TRUE(isOneReadableLine(refusal(Begin + object + ", " + object + "]}")));
    EXPECT_TRUE(isOneReadableLine(
        refusal(Begin + "{\"name\": \"" + name + ".\", \"creator\": \"X/Y\"}]}").substr(0, 4000)));
    EXPECT_TRUE(isOneReadableLine(refusal(Begin + "{\"name\": \"" + name + "\", \"creator\": \"\"}]}")));
}

TEST(HostileNetwork, textsOfPrograms_comeBackByteForByte) {
    const std::string code = "#line 3\r\n\fvoid\tmain()\v{ // Gr\xc3\xbc\xc3\x9f"
                             "e \xe2\x80\xae \"\\\" %n%s\r}\n";
    Network network = networkFromText(Begin + One + "]}", "net.json");
    network.objects[0].parameters.push_back({"code", code, {}});
    for (const auto layout : {NetworkLayout::Lines, NetworkLayout::OneLine}) {
        const std::string text = textOf(network, layout);
        EXPECT_EQ(networkFromText(text, "net.json").objects[0].parameters[0].text, code);
        EXPECT_EQ(textOf(networkFromText(text, "net.json"), layout), text);
    }
}

TEST(HostileNetwork, depthAndEncodingOfFiles_areRead) {
    const auto view = [](const std::string& what) {
        return Begin + One + R"(], "views": [{"name": "v", "shows": "a", )" + what + "}]}";
    };
    const Network network = networkFromText(view(R"("srgb": true, "depth": "uint16")"), "net.json");
    EXPECT_EQ(network.views[0].depth, PixelDepth::UInt16);
    EXPECT_TRUE(network.views[0].srgb);
    EXPECT_NE(textOf(network, NetworkLayout::OneLine).find(R"("depth":"uint16","srgb":true)"),
              std::string::npos);
    const Network without = networkFromText(view(R"("srgb": false)"), "net.json");
    EXPECT_FALSE(without.views[0].depth);
    EXPECT_EQ(textOf(without).find("srgb"), std::string::npos) << "what is usual is not said";
    EXPECT_EQ(
        refusal(view("\n\"depth\": \"uint12\"")),
        "net.json, line 2: holds an unknown depth — expected half, float, uint8 or uint16, got \"uint12\".");
    EXPECT_EQ(refusal(view("\n\"depth\": 8")),
              "net.json, line 2: \"depth\" is of the wrong kind — expected a text, got 8.");
    EXPECT_EQ(refusal(view("\n\"srgb\": \"yes\"")),
              "net.json, line 2: \"srgb\" is of the wrong kind — expected true or false, got \"yes\".");
}

} // namespace
} // namespace workbench
