// SPDX-License-Identifier: Apache-2.0
// The two modules of the plug-in.
#pragma once

#include "tests/mutants/Fault.h"

#include "host/core/TypedSlot.h"
#include "host/gl/MSDeferredObjectDisplay.h"
#include "host/rendering/ImageTileProcessor.h"
#include "plugin/VSource.h"

#include <limits>
#include <string>

namespace mutant {

using Output = krod::StrongPtr<krod::ImageTileProcessor>;

/// A tile module: its processor halves the colours.
class Half : public krod::VObject, public krod::VSource<Output> {
public:
    Half(const std::string& name, const krod::StrongPtr<krod::VCreationPreferences>&);
    ~Half() override;
    bool update(krod::VRequest& request, double) override;

private:
    int place = 0; ///< among those that live
    krod::TypedSlot<int> steps{this, "steps", 3, 0, {.min = has(Fault::LimitsCrossed) ? 20 : 1, .max = 10}};
};

/// Half under another class.
class OtherHalf : public Half {
public:
    using Half::Half;
};

/// A display: multiplies by a factor.
class Factor : public krod::MSDeferredObjectDisplay {
public:
    Factor(const std::string& name, const krod::StrongPtr<krod::VCreationPreferences>& preferences);
    [[nodiscard]] krod::AcceptInfoList accept(const krod::WeakPtr<krod::VObject>& object) const override;
    [[nodiscard]] krod::BoundingSphere bounds() const override;
    krod::StrongPtr<MultiSampleDeferredRenderer> createRenderer(krod::VGLRenderContext& context) override;

private:
    static double initialFactor() {
        return has(Fault::InfiniteValue) ? std::numeric_limits<double>::infinity() : 1.0;
    }
    static krod::Limits<double> limits() {
        if (has(Fault::LimitMissing)) return {.max = 4.0};
        return {.min = 0.0, .max = 4.0};
    }
    krod::TypedSlot<double> factor{this, "factor", initialFactor(), 0, limits()};
};

} // namespace mutant
