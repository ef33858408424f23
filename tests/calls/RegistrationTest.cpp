// SPDX-License-Identifier: Apache-2.0
// The required calls while the library is loaded and unloaded, written by hand from the required catalogue.
#include "Calls.h"

#include "workbench/core/PluginManager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <regex>

namespace {

using Lines = std::vector<std::string>;
constexpr const char* None = nullptr;

/// One row of the catalogue. A row without category is registered by its name only.
struct Row {
    const char* category;
    const char* source;
    const char* name;
    const char* group;
    const char* help;
    const char* description;
    int order;
    const char* moduleClass;
    Lines types; ///< that no row below uses: a value creator, and a slot creator but where it is said

    [[nodiscard]] std::string key() const { return (category ? std::string(category) + '/' : "") + name; }
    [[nodiscard]] bool isTile() const { return key().starts_with("Hollywood/"); }
};

const Lines NoTypes;
constexpr char Processor[] = "StrongPtr<ImageTileProcessor>"; ///< of which there are no slots

/// Row 1 first.
const std::vector<Row> Catalogue = {
    {None, None, "Hollywood/ArcTangens", None, None, None, -1000, "ArcTangens", NoTypes},
    {"Display", "BlurredObject", "Blurred", "General", "Blur object in image space.", "todo", 0,
     "BlurredObjectRenderer", NoTypes},
    {"Display", "CMYKObjectDisplay", "CMYK", "General", "todo", "todo", 0, "MyObjectDisplay", NoTypes},
    {"Display",
     "CurvesFilter",
     "CurveAdjust",
     "General",
     "Adjust colors using curve image operation",
     "todo",
     0,
     "CurvesFilter",
     {"FixedArray<double,2>"}},
    {"Display", "DisplayDepth", "Depth", "General",
     "Uses the depth information of an object as colorization.",
     "Display the depth of an object as grayscale.", 0, "HDRObjectRenderer", NoTypes},
    {"Hollywood", None, "ColorGammaCorrection", None, "Allows to adjust the color of each color channel.",
     "Adjust pixel contrast.", -1000, "TileShader", NoTypes},
    {None, None, "Hollywood/GammaCorrection", None, None, None, -1000, "GammaCorrection", NoTypes},
    {"Hollywood", None, "HDRColoredToneMapping", None,
     "Maps excess intensity values larger into [0.0,1.0] range. The contrast (gamma value) can be specified "
     "indepently for each RGBA channel.",
     "Reduce High Intensity Colors, adustable gamma per color channel.", -1000, "TileShader", NoTypes},
    {"Display", "HDRObjectDisplay", "Depth", "General", "Reduce High Intensity Colors.",
     "Maps excess intensity values larger into [0.0,1.0] range.", 0, "HDRObjectRenderer", NoTypes},
    {"Hollywood", None, "HDRToneMapping", None, "Maps excess intensity values larger into [0.0,1.0] range.",
     "Reduce High Intensity Colors.", 0, "TileShader", NoTypes},
    {"Display", "HueSatValueFilter", "HSVAdjust", "General",
     "Adjust colors in hue saturation value color space.", "todo", 0, "HueSatValueFilter", NoTypes},
    {"Hollywood", None, "PixelBlur", None, "Blurs pixels during image rendering.", "Blurs pixels.", -1000,
     "TileShader", NoTypes},
    {"Display", "PixelContours", "PixelContours", None, None, None, 0, "PixelContours", NoTypes},
    {"Display",
     "ProximityHDR",
     "ProximityHDR",
     "General",
     "todo",
     "todo",
     0,
     "ProximityHDR",
     {"FlagList", "bool", "double", "int"}},
    {"Hollywood",
     None,
     "TileProgram",
     None,
     "Allows to execute a fragment shader program modifying the colors of each pixel. The fragment shader "
     "code in "
     "<A>GLSL language</A> can be modified interactively.",
     "Modify pixels using some shader code.",
     2000,
     "TileShader",
     {Processor, "string"}},
};

/// What registering the creator of a row asks for, up to the types.
Lines creatorOf(const Row& row) {
    Lines lines;
    const auto assign = [&lines](const char* field, const char* text) {
        if (text) lines.push_back(std::string("assign ") + field + ": " + text);
    };
    const std::string order = std::to_string(row.order), own = "no preferences, false, KROD_API_VERSION)";
    if (row.category) {
        assign("category", row.category);
        assign("source", row.source);
        assign("name", row.name);
        assign("group", row.group);
        assign("help", row.help);
        assign("description", row.description);
    }
    lines.push_back("VCreatorBase(" + (row.category ? "the record" : row.key()) + ", " + order + ", " + own);
    lines.emplace_back("keyname with /");
    lines.push_back("trace at 100: VCreator::VCreator(" + row.key() + ',' + order + ')');
    lines.emplace_back("fflush(stdout)");
    lines.emplace_back("destruction at unload registered");
    if (row.isTile())
        lines.push_back(std::string("registerVInput(") + Processor + ", creator of " + row.name + ')');
    return lines;
}

bool isOfAType(const std::string& line) {
    return line.starts_with("value creator") || line.starts_with("slot creator");
}

/// What one load and one unload ask for, without the notifications to the host.
class Registration : public testing::Test {
protected:
    Registration() {
        calls::Record record;
        {
            workbench::PluginManager manager;
            const auto library = manager.load(TOVAR_PLIME);
            loading = record.take();
            manager.unload(library);
            unloading = record.take();
        }
        for (std::string& line : loading) // which page the link leads to is free
            line = std::regex_replace(line, std::regex("<A HREF=\"[^\"]*\">"), "<A>");
        std::erase_if(loading, [](const auto& line) { return line.find("initPlugin") != std::string::npos; });
    }

    /// The calls of each row, the last row first.
    [[nodiscard]] std::vector<Lines> rows() const {
        std::vector<Lines> found;
        bool inRecord = false;
        for (const std::string& line : loading) {
            const bool assigns = line.starts_with("assign");
            const bool byName = line.starts_with("VCreatorBase(Hollywood/");
            if ((assigns && !inRecord) || byName) found.emplace_back();
            inRecord = assigns;
            if (!found.empty()) found.back().push_back(line);
        }
        return found;
    }

    Lines loading, unloading;
};

TEST_F(Registration, ofEachCreator_isRequiredCallByRequiredCall) {
    const std::vector<Lines> found = rows();
    ASSERT_EQ(found.size(), Catalogue.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        const Row& row = Catalogue[Catalogue.size() - 1 - i];
        const Lines required = creatorOf(row);
        ASSERT_GE(found[i].size(), required.size()) << row.key();
        EXPECT_EQ(Lines(found[i].begin(), found[i].begin() + std::ssize(required)), required);
        // What follows is of types, or registers the destruction of something else.
        EXPECT_TRUE(std::all_of(
            found[i].begin() + std::ssize(required), found[i].end(),
            [](const auto& line) { return isOfAType(line) || line == "destruction at unload registered"; }))
            << row.key();
    }
}

TEST_F(Registration, ofEachCreator_flushesStandardOutputOnce) {
    EXPECT_EQ(std::count(loading.begin(), loading.end(), "fflush(stdout)"), 15);
}

TEST_F(Registration, ofEachType_isMadeOnceByTheFirstRowThatNeedsIt) {
    const std::vector<Lines> found = rows();
    ASSERT_EQ(found.size(), Catalogue.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        const Row& row = Catalogue[Catalogue.size() - 1 - i];
        Lines made, required;
        for (const std::string& line : found[i])
            if (isOfAType(line)) made.push_back(line);
        for (const std::string& type : row.types) {
            required.push_back("value creator of " + type + " registered");
            if (type == Processor) continue;
            required.push_back("slot creator of " + type + " registered as " + type);
            const auto value =
                std::find(made.begin(), made.end(), "value creator of " + type + " registered");
            const auto slot = std::find(made.begin(), made.end(), required.back());
            EXPECT_LT(value - made.begin(), slot - made.begin()) << type << ": the value creator comes first";
        }
        std::sort(made.begin(), made.end()); // the order of several types is free
        std::sort(required.begin(), required.end());
        EXPECT_EQ(made, required) << row.key();
    }
}

TEST_F(Registration, ends_fromTheFirstRowToTheLast) {
    Lines required, found;
    for (const Row& row : Catalogue) {
        if (row.isTile())
            required.push_back(std::string("unregisterVInput(") + Processor + ", creator of " + row.name +
                               ')');
        required.push_back(std::string("deleteAllInstances of ") + row.name + ", " + row.moduleClass);
    }
    for (std::string line : unloading) {
        if (line.starts_with("deleteAllInstances")) // without the scopes around the class
            line = line.substr(0, line.rfind(", ") + 2) + line.substr(line.rfind(':') + 1);
        if (line.starts_with("deleteAllInstances") || line.starts_with("unregisterVInput"))
            found.push_back(line);
    }
    EXPECT_EQ(found, required);
}

TEST_F(Registration, ofEachType_endsWithTheSlotCreatorAndThenTheValueCreator) {
    for (const Row& row : Catalogue) {
        for (const std::string& type : row.types) {
            Lines found;
            std::copy_if(
                unloading.begin(), unloading.end(), std::back_inserter(found), [&type](const auto& line) {
                    return line.find("creator of " + type + ' ') != std::string::npos && isOfAType(line);
                });
            Lines required;
            if (type != Processor)
                required = {"slot creator of " + type + " withdrawn as " + type,
                            "slot creator of " + type + " freed"};
            required.push_back("value creator of " + type + " freed");
            EXPECT_EQ(found, required);
        }
    }
}

} // namespace
