// SPDX-License-Identifier: Apache-2.0
// What is written is read as it was, or not written at all.
#include "workbench/network/NetworkFile.h"
#include "workbench/report/Failure.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace workbench {
namespace {

/// A network with something in every field.
Network complete() {
    return networkFromText(R"({"version": 1,
"objects": [{"name": "tone", "creator": "Hollywood/TileProgram", "source": "TileProgram",
             "parameters": {"code": "x"}, "unset": ["width"]},
            {"name": "soft", "creator": "Display/Blurred", "input": "knot", "parameters": {"width": "9.0"}},
            {"name": "knot", "creator": "Scene/Knot"}],
"shared": [["soft.width", "tone.width"]],
"views": [{"name": "photo", "picture": "sky.exr", "processors": ["tone"]},
          {"name": "main", "shows": "soft", "background": [0, 0, 0, 1], "camera":
            {"eye": [0, 0, 1], "target": [0, 0, 0], "up": [0, 1, 0], "fieldOfView": 30}}]})",
                           "net.json");
}

/// The sentence with which writing is refused; empty when it is not.
std::string refusal(const Network& network, const std::string& who = "") {
    try {
        static_cast<void>(exactTextOf(network, NetworkLayout::OneLine, who));
        return "";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.fault(), Fault::Network);
        return failure.what();
    }
}

/// The same with a text as the code of a shader.
std::string refusalOfCode(const std::string& code) {
    Network network = complete();
    network.objects[0].parameters[0].text = code;
    return refusal(network);
}

const std::string Plain = " cannot be saved as it is — expected UTF-8 without control characters, got ";

TEST(ExactNetwork, bytesThatAreNoText_areNamedWithTheirPlace) {
    const std::string code = "tone.code:" + Plain;
    EXPECT_EQ(refusalOfCode("caf\xe9"), code + "\\xe9.");
    EXPECT_EQ(refusalOfCode("void\nmain\n// caf\xe9\n"), code + "\\xe9 in line 3.");
    EXPECT_EQ(refusalOfCode("bell \a"), code + "\\x07.");
    EXPECT_EQ(refusalOfCode("\x1b[2J"), code + "\\x1b.");
    EXPECT_EQ(refusalOfCode(std::string("a\0b", 3)), code + "\\x00.");
    EXPECT_EQ(refusalOfCode("\x7f"), code + "\\x7f.");
    EXPECT_EQ(refusalOfCode("a\xc2\x9b"), code + "\\xc2\\x9b.");
    for (const char* const bad : {"\xc3", "\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe2\x82", "\x80"})
        EXPECT_TRUE(refusalOfCode(bad).starts_with(code)) << refusalOfCode(bad);
    for (const char* const good :
         {"é\r\n\t\f\v", "\xef\xbf\xbd", "\xf4\x8f\xbf\xbf", "\xc2\xa0", "\xe2\x80\xae", ""})
        EXPECT_EQ(refusalOfCode(good), "") << good;
}

TEST(ExactNetwork, everyField_isNamed) {
    const auto broken = [](const std::function<void(Network&)>& change) {
        Network network = complete();
        change(network);
        const std::string sentence = refusal(network);
        return sentence.substr(0, sentence.find(':'));
    };
    const std::string bad = "\xff";
    EXPECT_EQ(broken([&](Network& n) { n.objects[0].name = bad; }), "the name of an object");
    EXPECT_EQ(broken([&](Network& n) { n.objects[0].creator = bad; }), "\"creator\" of tone");
    EXPECT_EQ(broken([&](Network& n) { n.objects[0].source = bad; }), "\"source\" of tone");
    EXPECT_EQ(broken([&](Network& n) { n.objects[0].input = bad; }), "\"input\" of tone");
    EXPECT_EQ(broken([&](Network& n) { n.objects[0].unset[0] = bad; }), "\"unset\" of tone");
    EXPECT_EQ(broken([&](Network& n) { n.objects[0].parameters[0].name = bad; }),
              "the name of a parameter of tone");
    EXPECT_EQ(broken([&](Network& n) { n.objects[0].parameters[0].name = "a\nb"; }),
              "the name of a parameter of tone");
    EXPECT_EQ(broken([&](Network& n) { n.shared[0].ends[0].parameter = bad; }),
              "what a list of \"shared\" names");
    EXPECT_EQ(broken([&](Network& n) { n.views[0].name = bad; }), "the name of a view");
    EXPECT_EQ(broken([&](Network& n) { n.views[0].picture = bad; }), "\"picture\" of the view photo");
    EXPECT_EQ(broken([&](Network& n) { n.views[0].processors[0] = bad; }),
              "\"processors\" of the view photo");
    EXPECT_EQ(broken([&](Network& n) { n.views[1].shows = bad; }), "\"shows\" of the view main");
}

TEST(ExactNetwork, numbersThatAreNone_areNamed) {
    Network network = complete();
    (*network.views[1].background)[0] = std::numeric_limits<double>::infinity();
    EXPECT_EQ(
        refusal(network),
        "\"background\" of the view main: cannot be saved as it is — expected finite numbers, got inf.");
    network = complete();
    for (double* const number : {&network.views[1].camera->eye[2], &network.views[1].camera->target[0],
                                 &network.views[1].camera->up[1], &network.views[1].camera->fieldOfView}) {
        const double old = *number;
        *number = std::numeric_limits<double>::quiet_NaN();
        EXPECT_EQ(
            refusal(network),
            "\"camera\" of the view main: cannot be saved as it is — expected finite numbers, got nan.");
        *number = old;
    }
    EXPECT_EQ(refusal(network), "");
}

TEST(ExactNetwork, whatTheReaderRefuses_isNotWritten) {
    const std::string longest(NetworkLimits::TextBytes, 'x');
    EXPECT_EQ(refusalOfCode(longest), "");
    EXPECT_EQ(refusalOfCode(longest + 'x'),
              "tone.code: cannot be saved as it is — expected at most 1048576 bytes, got 1048577.");
    Network network = complete();
    network.objects[1].input = "none";
    EXPECT_EQ(refusal(network), "the network: soft takes the object \"none\", which is not there.");
    EXPECT_EQ(refusal(network, "net.json"),
              "net.json, the network: soft takes the object \"none\", which is not there.");
    network = complete();
    network.objects[0].name = "a.b";
    EXPECT_TRUE(refusal(network).starts_with("the network: holds something without a usable \"name\""));
    network = complete();
    for (int i = 0; i < 17; ++i)
        network.objects[0].parameters.push_back({"code" + std::to_string(i), longest, {}});
    EXPECT_TRUE(refusal(network).starts_with("the network: is too large for a network"));
}

TEST(ExactNetwork, fileThatWouldNotBeReadAgain_isNotWritten) {
    Network network = complete();
    network.objects[0].parameters[0].text = "9\xff";
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("exact-network-" + std::to_string(getpid()) + ".json");
    try {
        saveNetwork(network, file);
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(std::string(failure.what()), file.string() + ", tone.code:" + Plain + "\\xff.");
    }
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_THROW(static_cast<void>(textOf(network)), Failure) << "nothing is replaced";
}

TEST(ExactNetwork, fingerprint_differsWhateverTheTextsHold) {
    Network a = complete(), b = complete();
    EXPECT_EQ(fingerprintOf(a), fingerprintOf(b));
    a.objects[0].parameters[0].text = "\xe8";
    b.objects[0].parameters[0].text = "\xe9";
    EXPECT_NE(fingerprintOf(a), fingerprintOf(b));
    b.objects[0].parameters[0].text = "\\xe8";
    EXPECT_NE(fingerprintOf(a), fingerprintOf(b));
}

/// All texts of a network that may be any.
std::vector<std::string*> textsIn(Network& network) {
    return {&network.objects[0].parameters[0].text, &network.objects[0].creator, &network.objects[0].source,
            &network.objects[0].unset[0],           &network.views[0].picture,   &network.objects[1].creator};
}

TEST(ExactNetwork, anyBytes_areReadAsTheyWere_orRefused) {
    std::mt19937 random(20221);
    const std::string pieces[] = {
        "a",    "\n",   "\\",   "\"",   "é",    "\xef\xbf\xbd", "\xf0\x9f\x98\x80",
        "\x7f", "\xc2", "\x85", "\x1b", "\xe9", "\xff",         std::string(1, '\0')};
    std::size_t written = 0;
    for (int i = 0; i < 4'000; ++i) {
        Network network = complete();
        std::string& text = *textsIn(network)[random() % 6];
        text.clear();
        for (std::size_t length = 1 + random() % 4; length > 0; --length)
            text += random() % 8 ? pieces[random() % 7] : pieces[random() % std::size(pieces)];
        if (random() % 16 == 0) text += static_cast<char>(random() % 256);
        for (const NetworkLayout layout : {NetworkLayout::Lines, NetworkLayout::OneLine}) {
            try {
                Network again = networkFromText(exactTextOf(network, layout), "again");
                const auto before = textsIn(network), after = textsIn(again);
                for (std::size_t field = 0; field < before.size(); ++field)
                    ASSERT_EQ(*after[field], *before[field]);
                ++written;
            } catch (const Failure& failure) {
                ASSERT_EQ(failure.fault(), Fault::Network) << failure.what();
            }
        }
    }
    EXPECT_GT(written, 4'000U);
    EXPECT_LT(written, 7'600U);
}

} // namespace
} // namespace workbench
