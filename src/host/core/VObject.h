// SPDX-License-Identifier: Apache-2.0
// Module objects.
#pragma once

#include "host/core/VConnectable.h"
#include "host/core/VManagedObjectBase.h"
#include "host/core/VRequest.h"
#include "host/core/VSaveable.h"
#include "host/core/VStateCreatorBase.h"

#include <string>

namespace krod {

class VCreatorBase;

/// A node of the user's network. Made by a creator; the host knows every living one.
class KROD_API VObject : public virtual VManagedObjectBase,
                         public virtual VConnectable,
                         public virtual VStateCreatorBase,
                         public virtual VSaveable {
public:
    /// The level of help() that asks for the detailed text; every other level asks for the short one.
    static constexpr int Detailed = 2;

    /// [host · copies]
    explicit VObject(std::string name);
    ~VObject() override;

    /// [any · borrows] The object's name.
    [[nodiscard]] const std::string& name() const noexcept { return text; }
    /// [host · shares] The object's own strong reference. Not inside a constructor.
    [[nodiscard]] StrongPtr<VObject> self() noexcept { return StrongPtr<VObject>(this); }

    /// [host · borrows] The creator that made the object.
    void setCreator(const WeakPtr<VCreatorBase>& creator) noexcept;
    [[nodiscard]] StrongPtr<VCreatorBase> creator() const noexcept;
    /// [host] From here on the host may send requests. Called once the object is complete.
    void enableRequestProcessing() noexcept;
    [[nodiscard]] bool processesRequests() const noexcept { return ready; }

    /// [host · borrows] Brings outputs up to date with the parameters, read in the request's context;
    /// `precision` is the request's. True on success.
    virtual bool update(VRequest& request, double precision);
    /// [host · gives] A text about the module, HTML allowed. Empty: the host shows the creator's texts.
    [[nodiscard]] virtual std::string help(int level) const;

private:
    std::string text;
    WeakPtr<VCreatorBase> maker;
    bool ready = false;
};

} // namespace krod
