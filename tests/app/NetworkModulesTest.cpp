// SPDX-License-Identifier: Apache-2.0
// Networks of the plug-ins' own modules.
#include "apps/plime/modules/NetworkModules.h"

#include "apps/plime/modules/Provenance.h"
#include "tests/app/ShippedModules.h"
#include "workbench/network/NetworkFile.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace workbench {
namespace {

NetworkModules modulesOf(const std::string& text, Limits limits = Limits::Checked) {
    return {shippedModules(), networkFromText(text, "net.json"), "net.json", limits};
}

/// The sentence of a failure behind its exit code; "" without one.
template <class Work>
std::string refusal(const Work& work) {
    try {
        work();
    } catch (const Failure& failure) {
        return std::to_string(static_cast<int>(failure.fault())) + ' ' + failure.what();
    }
    return "";
}
std::string refusalOf(const std::string& text) {
    return refusal([&] { static_cast<void>(modulesOf(text)); });
}

/// A network with one line for each object, the first on line 2, and `rest` behind them.
std::string networkOf(const std::vector<std::string>& objects, const std::string& rest = "") {
    std::string text = "{\"version\": 1, \"objects\": [\n";
    for (std::size_t i = 0; i < objects.size(); ++i)
        text += "{" + objects[i] + (i + 1 < objects.size() ? "},\n" : "}");
    return text + "]" + rest + "}";
}
const std::string Knot = R"("name": "knot", "creator": "Scene/Knot")";
const std::string Soft = R"("name": "soft", "creator": "Display/Blurred", "input": "knot")";
const std::string Tone = R"("name": "tone", "creator": "Hollywood/HDRToneMapping")";

/// Gives the parameter the first of some values that differs from its own and is taken.
void change(ModuleInstance& module, const std::string& name) {
    const std::string before = module.parameter(name).value().text();
    for (const char* const text : {"3", "2", "0.5", "1.5", "true", "false", "0.25 0.75", "+glow",
                                   "+glow -halo", "+1 -2 +3", "void main()\n{\n\t// \"é\"\r\n}\n"}) {
        try {
            module.setText(name, text, Limits::Checked);
        } catch (const Failure&) {
            continue;
        }
        if (module.parameter(name).value().text() != before) return;
    }
    ADD_FAILURE() << module.entry().key << '.' << name << " took nothing new";
}

/// All modules of the post-processing plug-in, every parameter set and the last one of each unreadable, the displays
/// in a chain.
Network everything() {
    Provenance provenance;
    std::string last = provenance.add(ModuleInstance(shippedModules().one("Scene/Knot")));
    std::size_t count = 0;
    for (const CatalogueEntry& entry : shippedModules().entries()) {
        if (entry.plugin != "tovar_plime") continue;
        ++count;
        ModuleInstance module(entry);
        std::string name;
        for (const auto& input : module.object().slots().inputs()) change(module, name = input.name);
        if (!name.empty()) module.unset(name);
        if (entry.category == "Display")
            last = provenance.add(module, last);
        else
            provenance.addProcessor(module);
    }
    EXPECT_EQ(count, 15U);
    provenance.show(last);
    return provenance.network();
}

TEST(NetworkModules, fifteenModulesWithEveryParameterSet_areTheSameAfterSavingAndLoading) {
    const Network first = everything();
    const std::string text = textOf(first);
    const NetworkModules modules = modulesOf(text);
    EXPECT_EQ(textOf(modules.network()), text);
    EXPECT_EQ(modules.shownBy(first.views[0]).displays.size(), 8U);
    EXPECT_EQ(modules.processorsOf(first.views[0]).size(), 7U);
    const std::string line = textOf(first, NetworkLayout::OneLine);
    EXPECT_EQ(textOf(modulesOf(line).network(), NetworkLayout::OneLine), line);
}

TEST(NetworkModules, bothModulesOfOneKey_comeBackAsThemselves) {
    const Network network = everything();
    const NetworkModules modules = modulesOf(textOf(network));
    std::vector<std::string> sources;
    for (const ModuleInstance* display : modules.shownBy(network.views[0]).displays)
        if (display->entry().key == "Display/Depth") sources.push_back(*display->entry().source);
    std::ranges::sort(sources);
    EXPECT_EQ(sources, (std::vector<std::string>{"DisplayDepth", "HDRObjectDisplay"}));
}

TEST(NetworkModules, aNetworkCutAnywhere_isRefusedAsANetwork) {
    const std::string whole = textOf(everything());
    for (std::size_t size = 0; size + 2 < whole.size(); ++size) {
        const std::string sentence = refusalOf(whole.substr(0, size));
        ASSERT_TRUE(sentence.starts_with("8 net.json, line ")) << size << ": " << sentence;
    }
}

TEST(NetworkModules, anyLineLeftOut_isTakenOrRefusedAsANetwork) {
    const std::string whole = textOf(everything());
    for (std::size_t begin = 0; begin < whole.size();) {
        const std::size_t end = whole.find('\n', begin) + 1;
        const std::string sentence = refusalOf(whole.substr(0, begin) + whole.substr(end));
        ASSERT_TRUE(sentence.empty() || sentence.starts_with("8 net.json")) << sentence;
        begin = end;
    }
}

TEST(NetworkModules, unknownCreator_isSaidWithWhatMayBeMeant) {
    EXPECT_EQ(refusalOf(networkOf({Knot, R"("name": "soft", "creator": "Display/Blured")"})),
              "8 net.json, line 3: soft, Display/Blured: is not the key of a module. Did you mean "
              "\"Display/Blurred\"?");
    EXPECT_EQ(
        refusalOf(networkOf({R"("name": "x", "creator": "Elsewhere/Something")"})),
        "8 net.json, line 2: x, Elsewhere/Something: is not the key of a module. Its plug-in is not loaded; "
        "see \"plime doctor\".");
}

TEST(NetworkModules, sharedKeyWithoutSource_isRefusedNamingBoth) {
    EXPECT_EQ(refusalOf(networkOf({R"("name": "far", "creator": "Display/Depth")"})),
              "8 net.json, line 2: far, Display/Depth: is the key of several modules — expected "
              "Display/Depth@HDRObjectDisplay or Display/Depth@DisplayDepth, got the bare key.");
    EXPECT_EQ(refusalOf(networkOf({R"("name": "far", "creator": "Display/Depth", "source": "Nobody")"})),
              "8 net.json, line 2: far, Display/Depth@Nobody: is not the source of a module — expected "
              "Display/Depth@HDRObjectDisplay or Display/Depth@DisplayDepth.");
}

TEST(NetworkModules, wrongParameters_areSaidWithTheirLine) {
    const auto with = [](const std::string& more) {
        return refusalOf(networkOf({Knot, Soft + ",\n" + more}));
    };
    EXPECT_EQ(
        with(R"("parameters": {"widht": "9"})"),
        "8 net.json, line 4: soft, Display/Blurred: has no parameter \"widht\". Did you mean \"width\"?");
    EXPECT_TRUE(
        with(R"("parameters": {"width": "wide"})")
            .starts_with("8 net.json, line 4: soft, Display/Blurred: parameter \"width\" cannot take this "
                         "value — expected "));
    EXPECT_EQ(with(R"("parameters": {"samples": "17"})"),
              "8 net.json, line 4: soft, Display/Blurred: parameter \"samples\" is outside its limits — "
              "expected at "
              "most 16, got 17. Set it nevertheless with --unchecked.");
    EXPECT_EQ(
        with(R"("unset": ["sample"])"),
        "8 net.json, line 3: soft, Display/Blurred: has no parameter \"sample\". Did you mean \"samples\"?");
    EXPECT_EQ(refusal([] {
                  static_cast<void>(modulesOf(
                      networkOf({Knot, Soft + R"(, "parameters": {"samples": "17"})"}), Limits::Unchecked));
              }),
              "");
}

TEST(NetworkModules, valueThatLooksLikeAFile_isTheValue) {
    const std::string text = networkOf(
        {R"("name": "own", "creator": "Hollywood/TileProgram", "parameters": {"code": "@/etc/hostname"})"});
    EXPECT_EQ(modulesOf(text).network().objects[0].parameters[0].text, "@/etc/hostname");
}

TEST(NetworkModules, wrongConnections_areSaid) {
    EXPECT_EQ(
        refusalOf(networkOf({Knot, Tone + R"(, "input": "knot")"})),
        "8 net.json, line 3: tone, Hollywood/HDRToneMapping: takes no input — expected an \"input\" only of "
        "displays, got knot.");
    EXPECT_EQ(
        refusalOf(networkOf({Tone, R"("name": "soft", "creator": "Display/Blurred", "input": "tone")"})),
        "8 net.json, line 3: soft takes an object that cannot be drawn — expected a scene or a display, got "
        "tone, Hollywood/HDRToneMapping.");
    const auto view = [](const std::string& what) {
        return refusalOf(networkOf({Knot, R"("name": "soft", "creator": "Display/Blurred")", Tone},
                                   ",\n\"views\": [{\"name\": \"v\", " + what + "}]"));
    };
    EXPECT_EQ(view(R"("shows": "tone")"),
              "8 net.json, line 5: the view v shows what cannot be drawn — expected a "
              "scene or a display, got tone, Hollywood/HDRToneMapping.");
    EXPECT_EQ(view(R"("shows": "soft")"),
              "8 net.json, line 3: soft, Display/Blurred: has nothing to draw — expected "
              "an \"input\", the name of an object.");
    EXPECT_TRUE(
        view(R"("picture": "a.exr", "processors": ["knot"])")
            .starts_with("8 net.json, line 5: knot, Scene/Knot: is no tile processor — expected one of "));
}

const std::string Halves =
    R"("name": "other", "creator": "Display/Blurred", "input": "knot", "parameters": {"width": "5"})";

TEST(NetworkModules, sharedValue_goesToAllEnds) {
    NetworkModules modules =
        modulesOf(networkOf({Knot, Soft, Halves}, R"(, "shared": [["soft.width", "other.width"]])"));
    const auto widthOf = [&](std::size_t object) {
        return modules.network().objects[object].parameters[0].text;
    };
    EXPECT_EQ(widthOf(1), "5.0");
    EXPECT_EQ(widthOf(2), "5.0");
    modules.set({"soft.width=7"}, Limits::Checked);
    EXPECT_EQ(widthOf(1), "7.0");
    EXPECT_EQ(widthOf(2), "7.0");
    EXPECT_EQ(
        refusal([&] {
            modules.set({"soft.width=7", "other.width=8"}, Limits::Checked);
        }),
        "2 --set: sets soft.width twice — expected one value for all that share it, got \"other.width=8\".");
}

TEST(NetworkModules, sharedValue_isOneValue_alsoWhereNoneIsSet) {
    const std::string other = R"("name": "other", "creator": "Display/Blurred", "input": "knot")";
    const std::string text =
        networkOf({Knot, Soft, other}, R"(, "shared": [["soft.width", "other.exponent"]])");
    NetworkModules modules = modulesOf(text);
    const Network before = modules.network();
    EXPECT_TRUE(before.objects[1].parameters.empty() && before.objects[2].parameters.empty());
    NetworkView view;
    view.shows = "soft";
    const ModuleInstance& soft = *modules.shownBy(view).displays[0];
    view.shows = "other";
    const ModuleInstance& blurred = *modules.shownBy(view).displays[0];
    EXPECT_EQ(blurred.parameter("exponent").value().text(), "1.0") << "the first one's";
    ASSERT_TRUE(blurred.parameter("exponent").setValueFromText("0.25"));
    EXPECT_EQ(soft.parameter("width").value().text(), "0.25");
}

TEST(NetworkModules, sharedValues_ofAnotherTypeOrContradicting_areRefused) {
    EXPECT_EQ(
        refusalOf(networkOf({Knot, Soft, Halves}, ",\n\"shared\": [[\"other.width\", \"soft.samples\"]]")),
        "8 net.json, line 5: soft.samples shares a value of another type — expected double, got int.");
    EXPECT_EQ(
        refusalOf(networkOf({Knot, Soft + R"(, "parameters": {"width": "4"})", Halves},
                            ",\n\"shared\": [[\"soft.width\", \"other.width\"]]")),
        "8 net.json, line 5: other.width contradicts the value that it shares — expected 4.0, as soft.width "
        "has it, got 5.0.");
    EXPECT_EQ(refusalOf(networkOf({Knot, Soft, Halves}, ",\n\"shared\": [[\"soft.wide\", \"other.width\"]]"))
                  .substr(0, 71),
              "8 net.json, line 5: soft, Display/Blurred: has no parameter \"wide\". Did");
}

TEST(NetworkModules, settings_thatAreWrong_areMistakesOfTheCommandLine) {
    NetworkModules modules = modulesOf(networkOf({Knot, Soft}));
    const auto setting = [&](const std::string& text) {
        return refusal([&] { modules.set({text}, Limits::Checked); });
    };
    for (const char* const text : {"soft.width", "soft=3", ".width=3", "soft.=3", "width=1.5"})
        EXPECT_EQ(setting(text),
                  std::string("2 --set: is no setting — expected OBJECT.PARAMETER=VALUE, got \"") + text +
                      "\".");
    EXPECT_EQ(setting("sot.width=3"),
              "2 --set: names an object that is not in net.json — got \"sot\". Did you mean \"soft\"?");
    EXPECT_EQ(setting("soft.widht=3"),
              "2 --set, soft, Display/Blurred: has no parameter \"widht\". Did you mean \"width\"?");
    EXPECT_TRUE(setting("soft.samples=17")
                    .starts_with("2 --set, soft, Display/Blurred: parameter \"samples\" is outside"));
    EXPECT_TRUE(setting("soft.width=wide")
                    .starts_with("2 --set, soft, Display/Blurred: parameter \"width\" cannot take this"));
    EXPECT_EQ(modules.network().objects[1].parameters.size(), 0U) << "nothing was set";
    EXPECT_EQ(
        refusal([&] {
            modules.set({"soft.width=3", "soft.width=3"}, Limits::Checked);
        }),
        "2 --set: sets soft.width twice — expected one value for all that share it, got \"soft.width=3\".");
    EXPECT_EQ(setting("soft.width=6"), "");
}

} // namespace
} // namespace workbench
