// SPDX-License-Identifier: Apache-2.0
// An object that gives every sample of a target a value of its own.
#pragma once

#include "host/gl/VGLRenderObject.h"

#include <functional>
#include <utility>

namespace parity {

/// What one sample of one pixel holds.
struct SceneSample {
    float r = 0, g = 0, b = 0, a = 0;
    float depth = 1;
};

/// Fills the current target, sample by sample. Values have to be halves, so that nothing is lost.
class SamplePattern : public krod::VGLRenderObject {
public:
    /// Gives the value of a sample; y counts from the bottom row.
    using Values = std::function<SceneSample(int x, int y, int sample)>;

    explicit SamplePattern(Values values) : VGLRenderObject("pattern", 0, {}), values(std::move(values)) {}

    void draw(krod::VGLRenderContext& context) override;
    [[nodiscard]] krod::BoundingSphere bounds() const override { return {0, 0, 0, 1}; }

    /// The samples of the target that was drawn into last.
    [[nodiscard]] int samples() const noexcept { return drawnSamples; }

private:
    Values values;
    int drawnSamples = 0;
};

} // namespace parity
