// SPDX-License-Identifier: Apache-2.0
#include "host/core/VObject.h"

#include "host/core/VCreatorBase.h"
#include "workbench/core/ObjectRegistry.h"

#include <utility>

namespace krod {

VManagedObjectBase::~VManagedObjectBase() = default;

VStateCreatorBase::~VStateCreatorBase() = default;

VSaveable::~VSaveable() = default;

VConnectable::VConnectable() = default;

VConnectable::~VConnectable() = default;

VRequest::~VRequest() = default;

VObject::VObject(std::string name) : text(std::move(name)) { workbench::ObjectRegistry::enter(*this); }

VObject::~VObject() { workbench::ObjectRegistry::leave(*this); }

void VObject::setCreator(const WeakPtr<VCreatorBase>& creator) noexcept { maker = creator; }

StrongPtr<VCreatorBase> VObject::creator() const noexcept { return maker.lock(); }

void VObject::enableRequestProcessing() noexcept { ready = true; }

bool VObject::update(VRequest& /*request*/, double /*precision*/) { return true; }

std::string VObject::help(int /*level*/) const { return {}; }

} // namespace krod
