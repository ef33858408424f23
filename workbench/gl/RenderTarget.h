// SPDX-License-Identifier: Apache-2.0
// Off-screen targets, and the pool that keeps them for the next frame.
#pragma once

#include "workbench/gl/GLName.h"
#include "workbench/report/Failure.h"

#include "host/Export.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace workbench {

/// What a target is to be.
struct KROD_API TargetShape {
    int width = 0;
    int height = 0;
    int samples = 0;   ///< 0: an ordinary texture; from 1 on: a multisample texture with at least as many
    bool depth = true; ///< with 32 bit float depth

    friend bool operator==(const TargetShape&, const TargetShape&) = default;
    /// Memory of the textures, as far as formats and counts tell.
    [[nodiscard]] std::size_t bytes() const noexcept;
};

/// A Failure(Output) of its own kind, because there is a way on: the memory for graphics does not suffice,
/// with smaller tiles it may.
class KROD_API GraphicsMemoryFailure : public Failure {
public:
    /// `who` is what was to be drawn, "image tile of 8x8" for instance; `bytes` what it needs, 0: unknown;
    /// `got` how the driver said so.
    GraphicsMemoryFailure(const std::string& who, std::size_t bytes,
                          const std::string& got = "GL_OUT_OF_MEMORY");
    explicit GraphicsMemoryFailure(Diagnostic message) : Failure(Fault::Output, std::move(message)) {}
};

/// A framebuffer with textures for half RGBA colour and float depth, contents undefined.
class RenderTarget {
public:
    /// Throws GraphicsMemoryFailure when the memory does not suffice, Failure(OpenGL) when the driver
    /// refuses.
    explicit RenderTarget(const TargetShape& shape);

    [[nodiscard]] const TargetShape& shape() const noexcept { return wanted; }
    [[nodiscard]] unsigned framebuffer() const noexcept { return frame.get(); }
    [[nodiscard]] unsigned color() const noexcept { return colorTexture.get(); }
    [[nodiscard]] unsigned depth() const noexcept { return depthTexture.get(); }
    /// The samples that the textures really hold; 0 for ordinary textures.
    [[nodiscard]] int samples() const noexcept { return realSamples; }
    /// Memory of the textures with the samples that they really hold.
    [[nodiscard]] std::size_t bytes() const noexcept;

    /// Makes it the current framebuffer, for drawing and reading.
    void bind() const;
    /// Fills the current framebuffer with a colour, and its depth with 1. Leaves colour and depth writes
    /// enabled and the scissor test off.
    static void clear(const float (&color)[4]);

private:
    void makeTextures();
    void makeFramebuffer();

    TargetShape wanted;
    GLName colorTexture, depthTexture, frame;
    int realSamples = 0;
};

/// Targets that nobody uses at the moment, up to a number and an amount of memory; the oldest go first.
class KROD_API TargetPool {
public:
    static constexpr std::size_t MostIdle = 6;
    static constexpr std::size_t MostIdleBytes = std::size_t{384} << 20;

    struct Return {
        TargetPool* pool;
        void operator()(RenderTarget* target) const noexcept;
    };
    /// A target in use. Comes back to the pool at its end.
    using Lease = std::unique_ptr<RenderTarget, Return>;

    /// The limits of the driver.
    TargetPool(int maxSamples, int maxSize) noexcept : maxSamples(maxSamples), maxSize(maxSize) {}

    /// From now on this alone decides how much is kept: idle targets go as soon as, with those in use, they take
    /// more than so many bytes.
    void allow(std::size_t bytes) noexcept;

    /// An ordinary target. Throws as RenderTarget does, and Failure(OpenGL) beyond the driver's size.
    [[nodiscard]] Lease lease(int width, int height, bool depth);
    /// A multisample target of that many samples, or of the next count that the driver grants; the target says
    /// how many it holds.
    [[nodiscard]] Lease leaseMultisample(int width, int height, int askedSamples);

    [[nodiscard]] std::size_t idleCount() const noexcept { return idle.size(); }

private:
    [[nodiscard]] Lease lease(const TargetShape& shape);
    [[nodiscard]] int grantedSamples(int asked) const;
    void giveBack(std::unique_ptr<RenderTarget> target);

    [[nodiscard]] Lease made(const TargetShape& shape);
    void dropIdle(std::size_t further) noexcept;

    int maxSamples, maxSize;
    std::size_t used = 0;                            // bytes
    std::optional<std::size_t> allowed;              // bytes, in use and idle
    std::vector<std::unique_ptr<RenderTarget>> idle; // the oldest first
};

} // namespace workbench
