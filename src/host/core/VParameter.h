// SPDX-License-Identifier: Apache-2.0
// Parameters.
#pragma once

#include "host/core/VCreationPreferences.h"
#include "host/memory/WeakPtr.h"
#include "host/values/VValueBase.h"

#include <map>
#include <memory>
#include <string>

namespace krod {

class VObject;
class VValuePool;

/// Told when a property changes.
class KROD_API VPropertyNotifier {
public:
    virtual ~VPropertyNotifier();
    /// [host · borrows] Called after the property `key` was set.
    virtual void propertyChanged(const std::string& key) = 0;
};

/// One named value of an object, an input or an output, with a map of named properties (limits: "min",
/// "max").
class KROD_API VParameter : public ReferenceBase {
public:
    /// The state bit that says that a value was set. A new parameter has it; a slot clears it, so that the
    /// initial value counts as never set.
    static constexpr unsigned ValueSet = 8;

    /// What a read yields. Three states: an empty value is not readable; otherwise `set` tells a value that
    /// was set from the initial one.
    struct LocalValue {
        StrongPtr<VValueBase> value;
        bool set = false;
    };

    /// [host · shares] Owns the value. The preferences may be empty. Throws PointerException without a value.
    VParameter(StrongPtr<VValueBase> value, std::string name, StrongPtr<VCreationPreferences> preferences);
    ~VParameter() override;

    /// [any · borrows] The parameter's name.
    [[nodiscard]] const std::string& name() const noexcept { return text; }
    /// [host · borrows] The host's name of the value's type.
    [[nodiscard]] std::string typeName() const { return own->value->typeName(); }
    /// [host · borrows] The object that the parameter belongs to.
    void setCreator(VObject* object) noexcept;
    [[nodiscard]] StrongPtr<VObject> creator() const noexcept;

    /// [host · shares] Attaches a named property, whose type is the parameter's. The notifier may be null.
    /// Throws PointerException without a value and std::invalid_argument for a value of another type.
    void setProperty(const std::string& key, const StrongPtr<VValueBase>& value, VPropertyNotifier* notifier);
    /// [host · shares] The property of that name, or an empty reference.
    [[nodiscard]] StrongPtr<VValueBase> property(const std::string& key) const noexcept;

    /// [host · shares] The current value in a value pool.
    [[nodiscard]] LocalValue getLocalValue(const VValuePool& pool) const noexcept;
    /// [host · borrows] The parameter's own value, whatever a pool says.
    [[nodiscard]] const VValueBase& value() const noexcept { return *own->value; }
    /// [host · borrows] Replaces the own value and marks it as set. The text's old value is kept when it does
    /// not parse.
    TextResult setValueFromText(std::string_view text);
    /// [host · shares] Replaces the own value by one of the same type and marks it as set; false for another
    /// type.
    bool setValue(const StrongPtr<VValueBase>& value);
    /// [host · copies] Takes the value over from a host-wide variable of the same type, with a trace line at
    /// level 50; false, and nothing changed, for another type.
    bool setGlobalValue(const VValueBase& variable);

    /// [host · shares] Connects the parameter to another one: from here on both have the value of the other,
    /// and setting one sets both. What this one was connected to before keeps its value. The connection
    /// outlives the other parameter. False, and nothing changed, for a value of another type.
    bool shareValue(VParameter& other);
    /// [host] Disconnects: the parameter keeps the value, which is its own from here on.
    void unshareValue();
    /// [host · borrows] Whether both have one value; a parameter does so with itself.
    [[nodiscard]] bool sharesValueWith(const VParameter& other) const noexcept { return own == other.own; }

    /// [host] The state bits. Whether a value was set is the same for all that share it.
    [[nodiscard]] unsigned state() const noexcept { return own->set ? bits | ValueSet : bits & ~ValueSet; }
    void setState(unsigned mask) noexcept { changeState(bits | mask, mask, true); }
    void clearState(unsigned mask) noexcept { changeState(bits & ~mask, mask, false); }

private:
    friend class VSlotContainer;

    void changeState(unsigned newBits, unsigned mask, bool set) noexcept {
        bits = newBits;
        if ((mask & ValueSet) != 0) own->set = set;
    }

    /// What connected parameters have in common.
    struct Own {
        StrongPtr<VValueBase> value;
        bool set = true;
    };
    std::shared_ptr<Own> own;
    std::string text;
    StrongPtr<VCreationPreferences> preferences;
    WeakPtr<VObject> object;
    std::map<std::string, StrongPtr<VValueBase>> properties;
    unsigned bits = 0;
};

} // namespace krod
