// SPDX-License-Identifier: Apache-2.0
// Saved networks: reading, refusing, writing again.
#include "workbench/network/NetworkFile.h"
#include "workbench/network/JsonTree.h"
#include "workbench/report/Failure.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace workbench {
namespace {

constexpr char Good[] = R"({
  "version": 1,
  "objects": [
    {
      "name": "galaxy",
      "creator": "Scene/Galaxy",
      "source": "Galaxy",
      "parameters": {
        "intensity": "2.0"
      }
    },
    {
      "name": "soft",
      "creator": "Display/Blurred",
      "source": "BlurredObject",
      "input": "galaxy",
      "parameters": {
        "width": "9.0",
        "options": "+glow"
      },
      "unset": ["samples"]
    },
    {
      "name": "tone",
      "creator": "Hollywood/HDRToneMapping"
    }
  ],
  "shared": [
    ["soft.exponent", "tone.exponent"]
  ],
  "views": [
    {
      "name": "main",
      "shows": "soft",
      "processors": ["tone"],
      "size": [640, 360],
      "camera": {
        "eye": [0.1, -2.5, 1e-05],
        "target": [0.0, 0.0, 0.0],
        "up": [0.0, 1.0, 0.0],
        "fieldOfView": 30.0
      },
      "background": [0.0, 0.0, 0.0, 1.0],
      "tiles": {
        "size": [2048, 2048],
        "overlap": 64
      },
      "processorTiles": {
        "size": [320, 180]
      }
    },
    {
      "name": "photo",
      "picture": "sky \"1\".exr",
      "processors": ["tone"]
    }
  ]
}
)";

/// The sentence with which a text is refused; empty when it is taken.
std::string refusal(const std::string& text) {
    try {
        static_cast<void>(networkFromText(text, "net.json"));
        return "";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.fault(), Fault::Network);
        return failure.what();
    }
}

/// The good text with one place replaced.
std::string with(const std::string& from, const std::string& to) {
    std::string text = Good;
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

std::string nested(int depth) { return std::string(static_cast<std::size_t>(depth), '['); }

TEST(NetworkFile, good_text_everyFieldIsRead) {
    const Network network = networkFromText(Good, "net.json");
    ASSERT_EQ(network.objects.size(), 3U);
    const NetworkObject& soft = network.objects[1];
    EXPECT_EQ(soft.name, "soft");
    EXPECT_EQ(soft.creator, "Display/Blurred");
    EXPECT_EQ(soft.source, "BlurredObject");
    EXPECT_EQ(soft.input, "galaxy");
    ASSERT_EQ(soft.parameters.size(), 2U);
    EXPECT_EQ(soft.parameters[1].name, "options");
    EXPECT_EQ(soft.parameters[1].text, "+glow");
    EXPECT_EQ(soft.parameters[1].place.line, 19);
    EXPECT_EQ(soft.unset, std::vector<std::string>{"samples"});
    ASSERT_EQ(network.shared.size(), 1U);
    EXPECT_EQ(network.shared[0].ends[1].object, "tone");
    EXPECT_EQ(network.shared[0].ends[1].parameter, "exponent");
    ASSERT_EQ(network.views.size(), 2U);
    EXPECT_EQ(network.views[0].camera->eye[2], 1e-05);
    EXPECT_EQ(network.views[0].tiles->overlap, 64);
    EXPECT_EQ(network.views[0].processorTiles->height, 180);
    EXPECT_EQ(network.views[1].picture, "sky \"1\".exr");
    EXPECT_EQ(network.object("tone"), &network.objects[2]);
    EXPECT_EQ(network.object("none"), nullptr);
}

TEST(NetworkFile, writingWhatWasRead_sameBytes) {
    const Network network = networkFromText(Good, "net.json");
    EXPECT_EQ(textOf(network), Good);
    const std::string line = textOf(network, NetworkLayout::OneLine);
    EXPECT_EQ(line.find('\n'), std::string::npos);
    EXPECT_EQ(textOf(networkFromText(line, "line")), Good);
    EXPECT_EQ(textOf(networkFromText(R"({"version": 1})", "least")), "{\n  \"version\": 1\n}\n");
}

TEST(NetworkFile, numbers_areReadToTheirLastDigit) {
    for (const char* const digits : {"0.1", "1e-05", "-12.5", "0.30000000000000004", "1.5e+300"}) {
        const Network network =
            networkFromText(with("[0.1, -2.5,", '[' + std::string(digits) + ", -2.5,"), "net.json");
        EXPECT_NE(textOf(network, NetworkLayout::OneLine).find("\"eye\":[" + std::string(digits) + ','),
                  std::string::npos)
            << digits;
    }
    EXPECT_EQ(refusal(with("30.0", "1e999")), "net.json, line 41: holds a number that is out of range.");
}

TEST(NetworkFile, numbersAndTruthValuesOfParameters_areTakenAsTheyAreWritten) {
    const auto width = [](const std::string& value) {
        return networkFromText(with("\"9.0\"", value), "net.json").objects[1].parameters[0].text;
    };
    EXPECT_EQ(width("9"), "9");
    EXPECT_EQ(width("9.250"), "9.250");
    EXPECT_EQ(width("true"), "true");
    EXPECT_EQ(width("false"), "false");
}

TEST(NetworkFile, aFileCutAnywhere_isRefusedWithALine) {
    const std::string whole = Good;
    for (std::size_t size = 0; size + 2 < whole.size(); ++size) {
        const std::string sentence = refusal(whole.substr(0, size));
        ASSERT_TRUE(sentence.starts_with("net.json, line ")) << size << ": " << sentence;
    }
    EXPECT_EQ(refusal(whole.substr(0, 40)), "net.json, line 5: ends in the middle of its JSON text.");
    EXPECT_EQ(refusal(""), "net.json, line 1: ends in the middle of its JSON text.");
}

TEST(NetworkFile, anyByteReplaced_isReadOrRefused) {
    for (const char byte : {'\0', '"', '{', ']', ',', '9', '\n', '\xff'}) {
        for (std::size_t at = 0; at < sizeof Good - 1; ++at) {
            std::string text = Good;
            text[at] = byte;
            const std::string sentence = refusal(text);
            ASSERT_TRUE(sentence.empty() || sentence.starts_with("net.json")) << at << ": " << sentence;
        }
    }
}

TEST(NetworkFile, mistakes_areSaidWithTheirLine) {
    EXPECT_EQ(refusal(with("\"name\": \"soft\",", "\"name\": \"soft\", \"colour\": 3,")),
              "net.json, line 13: \"colour\" is not known here — expected name, creator, source, input, "
              "parameters, unset.");
    EXPECT_EQ(refusal(with("\"width\": \"9.0\"", "\"width\": [9.0]")),
              "net.json, line 18: soft.width is of the wrong kind — expected a text, got a list.");
    EXPECT_EQ(refusal(with("\"input\": \"galaxy\"", "\"input\": \"galxy\"")),
              "net.json, line 12: soft takes the object \"galxy\", which is not there.");
    EXPECT_EQ(refusal(with("\"name\": \"tone\"", "\"name\": \"soft\"")),
              "net.json, line 23: two objects are called soft.");
    EXPECT_EQ(refusal(with("\"options\": \"+glow\"", "\"width\": \"3.0\"")),
              "net.json, line 19: \"width\" stands twice in one object.");
    EXPECT_EQ(refusal(with("\"version\": 1", "\"version\": 2")),
              "net.json, line 2: is of a version that this program does not read — expected 1, got 2.");
    EXPECT_EQ(refusal(with("\"version\": 1,", "")),
              "net.json, line 1: says no version — expected \"version\": 1.");
    EXPECT_EQ(refusal(with("[\"soft.exponent\", \"tone.exponent\"]", "[\"soft.exponent\"]")),
              "net.json, line 29: shares a value between less than two parameters.");
    EXPECT_EQ(
        refusal(with("\"tone.exponent\"", "\"exponent\"")),
        "net.json, line 29: shares what is no parameter — expected OBJECT.PARAMETER, got \"exponent\".");
    EXPECT_EQ(refusal(with("[640, 360]", "[640, 0]")),
              "net.json, line 36: \"size\" is out of range — expected whole numbers from 1 to 131072.");
    EXPECT_EQ(refusal(with("\"shows\": \"soft\",", "")),
              "net.json, line 32: the view main shows nothing or two things — expected either \"shows\", an "
              "object, or \"picture\", a file.");
    EXPECT_EQ(refusal(with("\"picture\": ", "\"processorTiles\": {\"size\": [8, 8]}, \"picture\": ")),
              "net.json, line 54: the view photo processes a picture file, whose tiles are just \"tiles\".");
    EXPECT_EQ(refusal(with("\"name\": \"photo\"", "\"name\": \"main\"")),
              "net.json, line 52: two views are called main.");
    EXPECT_EQ(refusal(with("\"version\": 1,", "\"version\": 1 !")),
              "net.json, line 2: is no JSON text from here on — got \"!\".");
    EXPECT_EQ(refusal("[]"),
              "net.json, line 1: a network is of the wrong kind — expected an object, got a list.");
    EXPECT_EQ(
        refusal(with("\"name\": \"tone\"", "\"name\": \"a.b\"")),
        "net.json, line 23: holds something without a usable \"name\" — expected a text without points, "
        "equals signs and line ends, got \"a.b\".");
}

TEST(NetworkFile, namesAndTextsOfSeveralLines_areSaidInOneLine) {
    EXPECT_EQ(
        refusal("{\"a\\nb\": 4}"),
        "net.json, line 1: holds a name that is too long or has line ends — expected at most 256 bytes, "
        "got \"a b\".");
    EXPECT_EQ(refusal("{\"version\": \"1\\n2\"}").find('\n'), std::string::npos);
    EXPECT_NE(refusal("{\"" + std::string(257, 'x') + "\": 4}").find("is too long"), std::string::npos);
    EXPECT_EQ(refusal(R"({"version": 1, "shared": [["a\n\tb.c", "d.e"]]})"),
              "net.json, line 1: a value is shared with the object \"a  b\", which is not there.");
    std::string letters; // of two bytes, so that the cut falls into one of them at one of the two places
    for (int i = 0; i < 600; ++i) letters += "ä";
    for (const std::string before : {"", "x"}) {
        const std::string said =
            refusal(R"({"version": 1, "shared": [[")" + before + letters + R"(.c", "d.e"]]})");
        EXPECT_TRUE(said.ends_with("ä….")) << said;
    }
}

TEST(NetworkFile, cycle_isRefusedWithItsPath) {
    EXPECT_EQ(refusal(R"({"version": 1, "objects": [
{"name": "a", "creator": "X/Y", "input": "b"},
{"name": "b", "creator": "X/Y", "input": "c"},
{"name": "c", "creator": "X/Y", "input": "b"}]})"),
              "net.json, line 3: objects take each other in a circle — got b → c → b.");
    EXPECT_EQ(refusal(R"({"version": 1, "objects": [{"name": "a", "creator": "X/Y", "input": "a"}]})"),
              "net.json, line 1: objects take each other in a circle — got a → a.");
}

TEST(NetworkFile, nesting_upToTheLimitAndNotBeyond) {
    const std::string value = nested(62) + std::string(62, ']'); // in an object in a list
    EXPECT_EQ(refusal(with("\"objects\": [", "\"x\": " + value + ", \"objects\": [")).find("nested"),
              std::string::npos);
    EXPECT_EQ(refusal(nested(100'000)), "net.json, line 1: is nested too deep — expected at most 64 levels.");
}

TEST(NetworkFile, sizes_upToTheLimitsAndNotBeyond) {
    const auto objects = [](std::size_t count) {
        std::string text = "{\"version\": 1, \"objects\": [";
        for (std::size_t i = 0; i < count; ++i)
            text += (i ? ",\n" : "\n") + std::string("{\"creator\": \"X/Y\", \"name\": \"") +
                    std::to_string(i) + "\"}";
        return text + "]}";
    };
    const auto row = [](std::size_t count) {
        std::string text = "{\"version\": 1, \"objects\": [";
        for (std::size_t i = count; i-- > 0;)
            text += "\n{\"creator\": \"X/Y\", \"name\": \"" + std::to_string(i) +
                    (i ? "\", \"input\": \"" + std::to_string(i - 1) + "\"}," : "\"}");
        return text + "]}";
    };
    EXPECT_EQ(refusal(row(NetworkLimits::Row)), "");
    EXPECT_EQ(refusal(row(NetworkLimits::Row + 1)),
              "net.json, line 2: objects take each other in a row that is too deep — expected at most 256 "
              "objects.");
    EXPECT_EQ(refusal(objects(NetworkLimits::Objects)), "");
    EXPECT_EQ(refusal(objects(NetworkLimits::Objects + 1)),
              "net.json, line 1: has too many objects — expected 10000, got 10001.");
    const std::string longest(NetworkLimits::TextBytes, 'x');
    EXPECT_EQ(refusal(with("\"9.0\"", '"' + longest + '"')), "");
    EXPECT_EQ(refusal(with("\"9.0\"", '"' + longest + "y\"")),
              "net.json, line 18: holds a text that is too long — expected 1048576 bytes, got 1048577.");
    EXPECT_EQ(refusal(std::string(NetworkLimits::Bytes + 1, ' ')),
              "net.json: is too large for a network — expected at most 16777216 bytes, got 16777217.");
}

TEST(NetworkFile, manyMembers_areReadInLinearTime) {
    std::string text =
        "{\"version\": 1, \"objects\": [{\"name\": \"a\", \"creator\": \"X/Y\", \"parameters\": {";
    for (int i = 0; i < 400'000; ++i) text += (i ? ", \"p" : "\"p") + std::to_string(i) + "\": \"\"";
    text += "}}]}";
    EXPECT_EQ(networkFromText(text, "net.json").objects[0].parameters.size(), 400'000U);
}

TEST(NetworkFile, controlCharactersAndBrokenUtf8_areRefused) {
    EXPECT_EQ(refusal(with("\"9.0\"", "\"9\\u001b[2J\"")),
              "net.json, line 18: holds a text with control characters.");
    EXPECT_EQ(refusal(with("\"9.0\"", "\"9\xff\"")).substr(0, 55),
              "net.json, line 18: is no JSON text from here on.");
    EXPECT_EQ(networkFromText(with("\"9.0\"", "\"a\\nb\\tc é\""), "net.json").objects[1].parameters[0].text,
              "a\nb\tc é");
}

TEST(NetworkFile, parameterSharedTwice_isRefused) {
    EXPECT_EQ(
        refusal(with("\"tone.exponent\"]", "\"tone.exponent\"], [\"soft.width\", \"soft.exponent\"]")),
        "net.json, line 29: soft.exponent is shared twice — expected each parameter once in \"shared\".");
    EXPECT_EQ(
        refusal(with("\"tone.exponent\"", "\"soft.exponent\"")),
        "net.json, line 29: soft.exponent is shared twice — expected each parameter once in \"shared\".");
}

TEST(NetworkFile, partForAView_hasWhatItNeedsAndNothingElse) {
    const Network network = networkFromText(Good, "net.json");
    EXPECT_EQ(partFor(network, network.views[0]).objects.size(), 3U);
    EXPECT_EQ(partFor(network, network.views[0]).shared.size(), 1U);
    const Network photo = partFor(network, network.views[1]);
    ASSERT_EQ(photo.objects.size(), 1U);
    EXPECT_EQ(photo.objects[0].name, "tone");
    EXPECT_TRUE(photo.shared.empty()) << "a parameter shares its value with nobody";
    ASSERT_EQ(photo.views.size(), 1U);
    EXPECT_EQ(photo.views[0].name, "photo");
}

TEST(NetworkFile, changedPaths_areThoseOfFilesAndPictures) {
    Network network = networkFromText(with("\"intensity\": \"2.0\"", "\"file\": \"a.ply\""), "net.json");
    network.objects[2].parameters.push_back({"file", "", {}});
    changePaths(network, [](const std::string& path) { return "x/" + path; });
    EXPECT_EQ(network.objects[0].parameters[0].text, "x/a.ply");
    EXPECT_EQ(network.objects[1].parameters[0].text, "9.0");
    EXPECT_EQ(network.objects[2].parameters[0].text, "");
    EXPECT_EQ(network.views[1].picture, "x/sky \"1\".exr");
}

TEST(NetworkFile, savedFile_readsBackAndLeavesNothingElse) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("network-test-" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    const Network network = networkFromText(Good, "net.json");
    saveNetwork(network, folder / "a.json");
    saveNetwork(readNetwork(folder / "a.json"), folder / "a.json");
    EXPECT_EQ(textOf(readNetwork(folder / "a.json")), Good);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
    EXPECT_THROW(saveNetwork(network, folder / "a.json", true), Failure);
    std::filesystem::remove_all(folder);
    try {
        static_cast<void>(readNetwork(folder / "a.json"));
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.fault(), Fault::Input);
    }
}

} // namespace
} // namespace workbench
