// SPDX-License-Identifier: Apache-2.0
// One OpenGL context with everything that hangs on it.
#pragma once

#include "workbench/platform/GpuChoice.h"

#include "host/Export.h"
#include "host/memory/StrongPtr.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace krod {
class GLTexture2D;
}

namespace workbench {

class ProgramCache;
class TargetPool;
struct ContextProperties;

/// What a session is asked for.
struct SessionOptions {
    GpuChoice gpu = {};
    bool strictGlsl = false; ///< module texts go to the driver without shims
    bool reportMissingUniforms =
        false; ///< drivers remove unused uniforms, so this is for people who write shaders
    bool keepLastGoodProgram =
        false; ///< a tile processor whose text does not compile says so once and draws with its last good one
    std::size_t cachedPrograms = 64; ///< 0 compiles every program anew
};

/// Owns an OpenGL context and what is kept from frame to frame: drawing areas and programs. One session is
/// current per thread; contract objects find it through `current`. Warnings go to krod::VActionNotifier.
class KROD_API RenderSession {
public:
    /// Opens a context and makes the session current on this thread. Throws Failure(OpenGL).
    explicit RenderSession(const SessionOptions& options = {});
    RenderSession(const RenderSession&) = delete;
    RenderSession& operator=(const RenderSession&) = delete;
    /// Deletes everything of the session. Another session that is current on this thread stays current.
    ~RenderSession();

    /// The session of the calling thread, or null.
    [[nodiscard]] static RenderSession* current() noexcept;
    /// The session of the calling thread. Throws Failure(OpenGL): "<who>: needs OpenGL …".
    [[nodiscard]] static RenderSession& require(const std::string& who);

    /// Makes the session current on this thread. Throws Failure(OpenGL).
    void makeCurrent();

    [[nodiscard]] const SessionOptions& options() const noexcept;
    [[nodiscard]] const ContextProperties& properties() const noexcept;
    /// Vendor, device and version in one line.
    [[nodiscard]] std::string driver() const;
    /// Differs from that of every other session of this process.
    [[nodiscard]] std::uint64_t number() const noexcept;

    [[nodiscard]] TargetPool& targets() noexcept;
    [[nodiscard]] ProgramCache& programs() noexcept;
    /// The texture that image tiles are uploaded to, kept from tile to tile and from processor to processor;
    /// made anew for another size. Throws krod::GLError.
    [[nodiscard]] krod::StrongPtr<krod::GLTexture2D> tileTexture(int width, int height);

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace workbench
