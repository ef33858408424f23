// SPDX-License-Identifier: Apache-2.0
// The host's base of deferred object displays.
#pragma once

#include "host/core/TypedSlot.h"
#include "host/gl/MSDeferredRenderObject.h"

#include <optional>

namespace krod {

/// Draws one renderable input off-screen and puts it back through a renderer that the display makes for each
/// frame. A display is itself renderable, so displays chain; the host hands the depth of the object at the
/// end of a chain on, whatever the displays between them write.
class KROD_API MSDeferredObjectDisplay : public MSDeferredRenderObject {
public:
    /// The initial value and expert level of "samples".
    struct Samples {
        int initialValue;
        int expertLevel;
    };

    /// [host · copies] Declares the slot "samples" with the property "max" 16, and the input "object".
    MSDeferredObjectDisplay(const std::string& name, const StrongPtr<VCreationPreferences>& preferences,
                            Samples samples);
    /// [host · copies] Declares the input only.
    MSDeferredObjectDisplay(const std::string& name, const StrongPtr<VCreationPreferences>& preferences);
    ~MSDeferredObjectDisplay() override;

    /// [host · shares] Connects the input; an empty reference disconnects it. Throws std::invalid_argument
    /// when the object is this display or has it among its own inputs, and when accept does not list the
    /// object itself. The old input stays then.
    void setInput(const StrongPtr<VGLRenderObject>& object);
    [[nodiscard]] const StrongPtr<VGLRenderObject>& input() const noexcept { return source; }

    /// [host · borrows] What of an object the display can be attached to: nothing of an absent or expired
    /// one, the object itself when it is renderable.
    [[nodiscard]] virtual AcceptInfoList accept(const WeakPtr<VObject>& object) const;

    /// [host · shares] Makes the renderer of one frame, with the parameters' values of the context's pool.
    [[nodiscard]] virtual StrongPtr<MultiSampleDeferredRenderer>
    createRenderer(VGLRenderContext& context) = 0;

    /// [host, gl] One frame: renderer, target, input, destination, render operation; all OpenGL state is
    /// restored.
    void draw(VGLRenderContext& context) final;
    /// [host] The input's bounds.
    [[nodiscard]] BoundingSphere bounds() const override;

protected:
    /// [host] Reads "samples" in a pool: false, and the argument unchanged, where it is not declared or not
    /// readable.
    bool readSamples(const VValuePool& pool, int& samples) const noexcept;

private:
    void requireAccepted(const StrongPtr<VGLRenderObject>& object) const;
    void drawFrame(VGLRenderContext& context, bool handsDepthOn);

    std::optional<TypedSlot<int>> samples;
    StrongPtr<VGLRenderObject> source;
};

} // namespace krod
