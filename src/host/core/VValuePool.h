// SPDX-License-Identifier: Apache-2.0
// Where parameters are read.
#pragma once

#include "host/core/VParameter.h"

#include <map>

namespace krod {

/// The context of one request or one frame. A parameter reads as its own value unless the pool holds another
/// value for it, or says that it cannot be read here.
class KROD_API VValuePool {
public:
    /// [host] A pool in which every parameter reads as its own value.
    VValuePool();
    ~VValuePool();

    /// [host · shares] Gives a parameter a value in this pool only, as set. Throws PointerException without a
    /// value.
    void set(const VParameter& parameter, StrongPtr<VValueBase> value);
    /// [host] Makes a parameter unreadable in this pool.
    void makeUnreadable(const VParameter& parameter);

private:
    friend class VParameter;
    std::map<const VParameter*, StrongPtr<VValueBase>> local; // an empty reference: not readable
};

} // namespace krod
