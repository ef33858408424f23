// SPDX-License-Identifier: Apache-2.0
// What is applied to every tile of a picture.
#pragma once

#include "host/rendering/ImageTile.h"
#include "host/rendering/VRenderContext.h"
#include "host/values/VValueCreator.h"

namespace krod {

/// Processes image tiles in place. Virtual slots in order: the first slot of the reference-count base, the
/// two destructors, process.
class KROD_API ImageTileProcessor : public ReferenceBase {
public:
    ImageTileProcessor() = default;
    ~ImageTileProcessor() override;
    /// [host, gl for shader processors · borrows] Processes one tile. A tile of a kind that the processor
    /// does not handle stays as it is. Throws GLError and what the processor's own work throws.
    virtual void process(const VRenderContext& context, ImageTile& tile) = 0;
};

extern template class KROD_API TypedValue<StrongPtr<ImageTileProcessor>>;
extern template class KROD_API TypedValueCreator<StrongPtr<ImageTileProcessor>>;

} // namespace krod
