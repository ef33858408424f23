// SPDX-License-Identifier: Apache-2.0
// One of two classes that share a name, each in a scope of its own.
#include "host/memory/ReferenceBase.h"

#include <typeinfo>

namespace {

class TileShader : public krod::ReferenceBase {};

} // namespace

const std::type_info& typeOfFirstTileShader();
const std::type_info& typeOfFirstTileShader() { return typeid(TileShader); }
