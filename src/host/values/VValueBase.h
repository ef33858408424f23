// SPDX-License-Identifier: Apache-2.0
// Typed value objects.
#pragma once

#include "host/memory/ReferenceBase.h"
#include "host/memory/StrongPtr.h"
#include "host/memory/Typename.h"
#include "host/values/Ageable.h"
#include "host/values/VValueTrait.h"

#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>

namespace krod {

/// The base of typed values: one value of one type, stamped with the global age when it is made or changed.
class KROD_API VValueBase : public ReferenceBase, public Ageable {
public:
    ~VValueBase() override;
    /// [any · borrows] The type of the value held. The type_info belongs to a host library.
    [[nodiscard]] virtual const std::type_info& type() const noexcept = 0;
    /// [any · gives] The host's name of that type.
    [[nodiscard]] virtual std::string typeName() const = 0;
    /// [any · gives] The value's text form.
    [[nodiscard]] virtual std::string text() const = 0;
    /// [any · borrows] Reads the value from text; the old value is kept when that fails.
    virtual TextResult setFromText(std::string_view text) = 0;
    /// [any · gives] A copy with an age of its own.
    [[nodiscard]] virtual StrongPtr<VValueBase> clone() const = 0;
};

/// One value of type T. Instantiated for the seven value types in host libraries only, so that values outlive
/// every plug-in.
template <class T>
class TypedValue : public VValueBase {
public:
    /// [any · copies] Stamped with the current global age.
    explicit TypedValue(T value) : held(std::move(value)) {}

    /// [any · borrows] The value.
    [[nodiscard]] const T& value() const noexcept { return held; }
    /// [any · copies] Replaces the value and stamps it anew.
    void setValue(T value) {
        held = std::move(value);
        touch();
    }

    [[nodiscard]] const std::type_info& type() const noexcept override { return typeid(T); }
    [[nodiscard]] std::string typeName() const override { return Typename<T>(); }
    [[nodiscard]] std::string text() const override { return VValueTrait<T>::Text(held); }
    TextResult setFromText(std::string_view text) override {
        TextResult result = VValueTrait<T>::setValueFromText(held, text);
        if (result) touch();
        return result;
    }
    [[nodiscard]] StrongPtr<VValueBase> clone() const override {
        return StrongPtr<VValueBase>(new TypedValue<T>(held));
    }

private:
    T held;
};

extern template class KROD_API TypedValue<int>;
extern template class KROD_API TypedValue<double>;
extern template class KROD_API TypedValue<bool>;
extern template class KROD_API TypedValue<std::string>;
extern template class KROD_API TypedValue<FlagList>;
extern template class KROD_API TypedValue<FixedArray<double, 2>>;

/// [any · gives] A new value object, held by a strong reference.
template <class T>
[[nodiscard]] StrongPtr<TypedValue<T>> makeValue(T value) {
    return StrongPtr<TypedValue<T>>(new TypedValue<T>(std::move(value)));
}

} // namespace krod
