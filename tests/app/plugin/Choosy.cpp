// SPDX-License-Identifier: Apache-2.0
// A display that accepts displays only, and shows them as they are.
#include "plugin/Registration.h"

#include "host/gl/MSDeferredObjectDisplay.h"

namespace {

using namespace krod;

class Choosy : public MSDeferredObjectDisplay {
public:
    Choosy(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : MSDeferredObjectDisplay(name, preferences) {}

    [[nodiscard]] AcceptInfoList accept(const WeakPtr<VObject>& object) const override {
        if (!castStrong<MSDeferredObjectDisplay>(object.lock())) return {};
        return MSDeferredObjectDisplay::accept(object);
    }
    StrongPtr<MultiSampleDeferredRenderer> createRenderer(VGLRenderContext& context) override {
        class Renderer : public MultiSampleDeferredRenderer {
        public:
            using MultiSampleDeferredRenderer::MultiSampleDeferredRenderer;
            void render() override {}
        };
        return StrongPtr<MultiSampleDeferredRenderer>(new Renderer(context, 1));
    }
};

KROD_ROW(1)
CreatorRegistration<Choosy, void> creator({.category = "Display", .source = "Choosy", .name = "Choosy"}, 0);

} // namespace
