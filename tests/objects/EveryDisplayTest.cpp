// SPDX-License-Identifier: Apache-2.0
// Meshes, point lists, pictures and generated scenes through every display, alone and at each place of a chain.
#include "Stage.h"

#include "workbench/files/Picture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

using namespace workbench::test;

namespace {

/// A display with a setting that shows.
struct Setting {
    const char* key;
    const char* parameter; ///< empty: the initial values show
    const char* value;
};

constexpr Setting Displays[] = {{"Display/Blurred", "width", "9"},
                                {"Display/CMYK", "", ""},
                                {"Display/CurveAdjust", "p", "0.3 0.6"},
                                {"Display/Depth@DisplayDepth", "", ""},
                                {"Display/Depth@HDRObjectDisplay", "exponent", "-1"},
                                {"Display/HSVAdjust", "hue", "120"},
                                {"Display/PixelContours", "strength", "0.3"},
                                {"Display/ProximityHDR", "", ""}};
constexpr Setting Dim{"Display/CurveAdjust", "p", "0.6 0.3"}, Soft{"Display/Blurred", "exponent", "0.5"};

Object displayOf(const Setting& setting, const Object& input) {
    const Object object = Stage::make(setting.key);
    if (*setting.parameter != '\0') Stage::set(object, setting.parameter, setting.value);
    krod::castStrong<krod::MSDeferredObjectDisplay>(object)->setInput(input);
    return object;
}

/// How many pixels have finite colours that differ from another picture's by more than a hundredth.
std::size_t differing(const Pixels& a, const Pixels& b) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const auto differs = [](float x, float y) { return std::isfinite(x) && std::abs(x - y) > 0.01F; };
        count += differs(a[i].r, b[i].r) || differs(a[i].g, b[i].g) || differs(a[i].b, b[i].b);
    }
    return count;
}

class EveryDisplay : public ::testing::TestWithParam<Setting> {
protected:
    EveryDisplay() { stage.plugins.load(TOVAR_PLIME); }

    /// A coloured mesh: a cap of a ball, open to the camera's side.
    [[nodiscard]] Object mesh() const {
        constexpr int Steps = 24;
        std::string vertices, faces;
        for (int v = 0; v <= Steps; ++v)
            for (int u = 0; u <= Steps; ++u) {
                const double a = 0.25 * u, b = 0.06 * (v + 1);
                const double x = std::cos(a) * std::sin(b), y = std::sin(a) * std::sin(b), z = std::cos(b);
                const auto text = [](double value) { return krod::VValueTrait<double>::Text(value) + ' '; };
                vertices += text(x) + text(y) + text(z) + std::to_string(60 + 8 * u) + ' ' +
                            std::to_string(250 - 9 * v) + " 90\n";
                if (u == Steps || v == Steps) continue;
                const int corner = v * (Steps + 1) + u;
                faces += "4 " + std::to_string(corner) + ' ' + std::to_string(corner + 1) + ' ' +
                         std::to_string(corner + Steps + 2) + ' ' + std::to_string(corner + Steps + 1) + '\n';
            }
        const std::string counts = std::to_string((Steps + 1) * (Steps + 1));
        return withFile("Scene/Model", "cap.ply",
                        "ply\nformat ascii 1.0\nelement vertex " + counts +
                            "\nproperty float x\nproperty float y\nproperty float z\nproperty uchar red\n"
                            "property uchar green\nproperty uchar blue\nelement face " +
                            std::to_string(Steps * Steps) +
                            "\nproperty list uchar int vertex_indices\nend_header\n" + vertices + faces);
    }
    /// Points on a spiral; many fall onto one pixel.
    [[nodiscard]] Object points() const {
        std::string lines;
        for (int i = 0; i < 4000; ++i) {
            const double a = 0.02 * i, r = 0.0004 * i;
            for (const double value : {r * std::cos(a), r * std::sin(a), 0.1 * std::sin(7 * a)})
                lines += krod::VValueTrait<double>::Text(value) + ' ';
            lines += "0.9 0.5 0.25\n";
        }
        const Object object = withFile("Scene/Points", "spiral.xyz", lines);
        Stage::set(object, "size", "2");
        return object;
    }
    /// A picture with intensities from 0.05 to 64.
    [[nodiscard]] Object picture() const {
        workbench::Picture contents;
        contents.description.width = 32;
        contents.description.height = 18;
        for (int y = 0; y < 18; ++y)
            for (int x = 0; x < 32; ++x) {
                using half_float::half;
                contents.pixels.push_back({half(0.05F + 2 * static_cast<float>(x * x) / 32),
                                           half(0.05F + static_cast<float>((x * y) % 7)),
                                           half(0.05F + static_cast<float>(y)), half(1.0F)});
            }
        writePicture(stage.folder / "bright.exr", contents);
        const Object object = Stage::make("Scene/Picture");
        Stage::set(object, "file", (stage.folder / "bright.exr").string());
        return object;
    }
    [[nodiscard]] std::vector<Object> inputs() const {
        return {mesh(), points(), picture(), Stage::make("Scene/Galaxy")};
    }

    Stage stage;

private:
    [[nodiscard]] Object withFile(const char* key, const char* name, const std::string& bytes) const {
        const Object object = Stage::make(key);
        Stage::set(object, "file", stage.write(name, bytes));
        return object;
    }
};

} // namespace

TEST_P(EveryDisplay, Alone_it_changes_every_kind_of_input) {
    for (const Object& input : inputs()) {
        const Pixels plain = stage.render(*input), changed = stage.render(*displayOf(GetParam(), input));
        EXPECT_GT(differing(changed, plain), 100U) << input->name();
    }
}

TEST_P(EveryDisplay, At_each_place_of_a_chain_of_three_it_changes_what_comes_out) {
    for (const Object& input : inputs()) {
        const Pixels without = stage.render(*displayOf(Soft, displayOf(Dim, input)));
        const Pixels first = stage.render(*displayOf(Soft, displayOf(Dim, displayOf(GetParam(), input))));
        const Pixels second = stage.render(*displayOf(Soft, displayOf(GetParam(), displayOf(Dim, input))));
        const Pixels third = stage.render(*displayOf(GetParam(), displayOf(Soft, displayOf(Dim, input))));
        for (const Pixels* chain : {&first, &second, &third})
            EXPECT_GT(differing(*chain, without), 100U) << input->name();
    }
}

INSTANTIATE_TEST_SUITE_P(Displays, EveryDisplay, ::testing::ValuesIn(Displays), [](const auto& display) {
    std::string name(display.param.key);
    for (char& c : name) c = c == '/' || c == '@' ? '_' : c;
    return name;
});
