// SPDX-License-Identifier: Apache-2.0
#include "host/rendering/ImageTileProcessor.h"

namespace krod {

template class TypedValue<StrongPtr<ImageTileProcessor>>;
template class TypedValueCreator<StrongPtr<ImageTileProcessor>>;

ImageTileProcessor::~ImageTileProcessor() = default;

namespace {

/// The host's own value creator of this type. Never destroyed, like those of the other types.
[[maybe_unused]] const VValueCreator& processors = []() -> const VValueCreator& {
    auto& creator = *new TypedValueCreator<StrongPtr<ImageTileProcessor>>;
    VValueCreator::registerCreator(Typename<StrongPtr<ImageTileProcessor>>(), creator);
    return creator;
}();

} // namespace

} // namespace krod
