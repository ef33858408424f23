// SPDX-License-Identifier: Apache-2.0
// Creators: the factories that plug-ins register.
#pragma once

#include "host/core/VCreationContext.h"
#include "host/core/VCreationPreferences.h"
#include "host/core/VCreatorProperties.h"
#include "host/core/VObject.h"

#include <string>
#include <typeinfo>

namespace krod {

/// A factory of module objects, registered in the host from its construction to its destruction. Creators
/// stand in static storage: references to them never delete them.
class KROD_API VCreatorBase : public virtual VManagedObjectBase {
public:
    /// [load · copies] Property form. `order` is passed on to the host's menus; `hidden` keeps the creator
    /// out of them; `key` is the interface key that the plug-in was built with.
    VCreatorBase(const VCreatorProperties& properties, int order,
                 const StrongPtr<VCreationPreferences>& preferences, bool hidden, const char* key);
    /// [load · copies] Name form: a creator without properties, whose name is the full key.
    VCreatorBase(const std::string& keyname, int order, const StrongPtr<VCreationPreferences>& preferences,
                 bool hidden, const char* key);
    /// [load] Withdraws the creator from the registry.
    ~VCreatorBase() override;

    /// [host · gives] Makes an object. An empty name gives it the creator's name. Throws what the module
    /// throws.
    [[nodiscard]] virtual StrongPtr<VObject> create(const std::string& name, VCreationContext& context) = 0;

    /// [any · borrows] The creator's own name: the name property, or the full key of the name form.
    [[nodiscard]] const std::string& name() const noexcept { return own; }
    /// [any · gives] The key, e.g. "Display/CMYK".
    [[nodiscard]] std::string keyname() const { return VCreatorPropertyBase::keyname(record, "/"); }
    [[nodiscard]] const VCreatorProperties& properties() const noexcept { return record; }
    [[nodiscard]] int order() const noexcept { return rank; }
    [[nodiscard]] bool hidden() const noexcept { return concealed; }
    [[nodiscard]] const StrongPtr<VCreationPreferences>& preferences() const noexcept { return wishes; }

protected:
    /// [load] Deletes every living object that this creator made and whose class is exactly `type`, held or
    /// not. Strong references that are still held become empty. Needs no memory.
    void deleteAllInstances(const std::type_info& type) noexcept;

private:
    VCreatorProperties record;
    std::string own;
    int rank;
    StrongPtr<VCreationPreferences> wishes;
    bool concealed;
};

} // namespace krod
