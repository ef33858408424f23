// SPDX-License-Identifier: Apache-2.0
#include "host/memory/ChunkBase.h"

namespace krod {

ChunkBase::~ChunkBase() = default;

} // namespace krod
