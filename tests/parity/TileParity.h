// SPDX-License-Identifier: Apache-2.0
// What the parity tests of shader modules for image tiles share.
#pragma once

#include "Comparison.h"
#include "tests/support/LoadedPlugin.h"
#include "tests/support/ParameterPool.h"
#include "workbench/gl/RenderSession.h"

#include "host/values/VValueTrait.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace parity {

using half_float::half;
using krod::RGBAHalf;

/// What has to come of one channel, or why the requirement says nothing about it.
struct Required {
    Bounded value = {};
    std::string unknown = {};
};

/// How many patterns of a half there are, and how many before those of negative numbers.
inline constexpr std::uint32_t AllPatterns = 0x10000, WithoutSign = 0x8000;

/// The four channels in the order of storage, with their names in failure texts.
inline constexpr std::array<const char*, 4> ChannelNames{"red", "green", "blue", "alpha"};
[[nodiscard]] std::array<half, 4> channelsOf(const RGBAHalf& pixel);

/// 10 to the power of v, as the text of the module writes it and the shader holds it.
[[nodiscard]] Bounded powerOfTen(double v);

/// A test of one module on tiles.
class TileParity : public testing::Test {
protected:
    /// What has to come of a finite number in a channel.
    using Mapping = std::function<Required(std::size_t channel, double c)>;

    explicit TileParity(const std::string& key) : module(plugin.make(key)) {}

    /// A number as parameters take it.
    static std::string text(double value) { return krod::VValueTrait<double>::Text(value); }

    /// The tile, rows from the top, after the processor of the module.
    [[nodiscard]] std::vector<RGBAHalf> processed(std::vector<RGBAHalf> pixels, int width);
    /// What comes of a single pixel.
    [[nodiscard]] RGBAHalf processed(const RGBAHalf& pixel) { return processed(std::vector{pixel}, 1)[0]; }
    /// What comes of a pixel with the same number in all channels.
    [[nodiscard]] RGBAHalf processed(float value);

    /// Compares what comes of the first patterns of a half in every channel. `limit` as for Comparison.
    void compareAll(const std::string& subject, const Mapping& mapping, double limit = 1,
                    std::uint32_t count = AllPatterns);

    workbench::RenderSession session{{.gpu = {workbench::GpuChoice::Kind::Software, 0, ""}}};
    support::LoadedPlugin plugin;
    krod::StrongPtr<krod::VObject> module;
    support::ParameterPool pool{*module};
};

} // namespace parity
