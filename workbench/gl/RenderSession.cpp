// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/RenderSession.h"

#include "workbench/gl/ProgramCache.h"
#include "workbench/gl/RenderTarget.h"
#include "workbench/platform/EglContext.h"
#include "workbench/report/Failure.h"

#include "host/gl/GLTexture2D.h"

#include <atomic>
#include <utility>

namespace workbench {
namespace {

thread_local RenderSession* currentSession = nullptr;

std::uint64_t nextNumber() {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

std::string driverText(const ContextProperties& facts) {
    return facts.vendor + ", " + facts.renderer + ", OpenGL " + facts.version;
}

} // namespace

/// The context comes first: everything behind it is deleted while it still exists.
struct RenderSession::State {
    State(EglContext made, const SessionOptions& wanted)
        : context(std::move(made)),
          options(wanted),
          targets(context.properties().maxSamples, context.properties().maxTextureSize),
          programs({driverText(context.properties()), wanted.strictGlsl, wanted.cachedPrograms}) {}

    EglContext context;
    SessionOptions options;
    std::uint64_t number = nextNumber();
    TargetPool targets;
    ProgramCache programs;
    krod::StrongPtr<krod::GLTexture2D> tileTexture;
};

RenderSession::RenderSession(const SessionOptions& options)
    : state(std::make_unique<State>(EglContext::create(options.gpu), options)) {
    currentSession = this;
}

RenderSession::~RenderSession() {
    RenderSession* const before = std::exchange(currentSession, this);
    try {
        state->context.makeCurrent();
    } catch (const Failure&) { // a context that cannot be entered is gone, and its names with it
    }
    state->tileTexture.reset(); // asks for the current session, which is complete only here
    state.reset();
    currentSession = nullptr;
    if (before == nullptr || before == this) return;
    try {
        before->makeCurrent();
    } catch (const Failure&) { // then this thread has no session
    }
}

RenderSession* RenderSession::current() noexcept { return currentSession; }

RenderSession& RenderSession::require(const std::string& who) {
    if (currentSession) return *currentSession;
    throw Failure(Fault::OpenGL, {who,
                                  "needs OpenGL",
                                  "an open session on this thread",
                                  "none",
                                  "Open a RenderSession first, or make it current here",
                                  {}});
}

void RenderSession::makeCurrent() {
    state->context.makeCurrent();
    currentSession = this;
}

const SessionOptions& RenderSession::options() const noexcept { return state->options; }
const ContextProperties& RenderSession::properties() const noexcept { return state->context.properties(); }
std::string RenderSession::driver() const { return driverText(properties()); }
std::uint64_t RenderSession::number() const noexcept { return state->number; }
TargetPool& RenderSession::targets() noexcept { return state->targets; }
ProgramCache& RenderSession::programs() noexcept { return state->programs; }

krod::StrongPtr<krod::GLTexture2D> RenderSession::tileTexture(int width, int height) {
    auto& kept = state->tileTexture;
    if (kept && kept->width() == width && kept->height() == height) return kept;
    kept.reset();
    return kept = krod::StrongPtr<krod::GLTexture2D>(new krod::GLTexture2D(width, height));
}

} // namespace workbench
