// SPDX-License-Identifier: Apache-2.0
// A creator offered as the source of an input.
#pragma once

#include "host/core/VInputRegistry.h"

namespace krod {

/// Offers the objects of `Creator` wherever an input of type `InputType` is to be filled.
template <class InputType, class Creator>
class VInputCreator : public VInputCreatorBase {
public:
    /// [load · borrows]
    explicit VInputCreator(Creator& creator) noexcept : maker(creator) {}
    [[nodiscard]] VCreatorBase& creator() const noexcept override { return maker; }

private:
    Creator& maker;
};

} // namespace krod
