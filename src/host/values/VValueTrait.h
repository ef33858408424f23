// SPDX-License-Identifier: Apache-2.0
// Text forms of the value types: what users type, what networks store, what shader text holds.
#pragma once

#include "host/Export.h"
#include "host/memory/StrongPtr.h"
#include "host/values/FixedArray.h"
#include "host/values/FlagList.h"

#include <string>
#include <string_view>

namespace krod {

class ImageTileProcessor;

/// What became of a text: nothing to say, or what form would have been right.
struct TextResult {
    std::string expected; ///< empty on success
    /// [any] Whether the text was taken.
    explicit operator bool() const noexcept { return expected.empty(); }
};

/// Text form of T. `Text` never depends on the locale and reads back to the same value; `setValueFromText`
/// leaves the old value when the text does not parse as a whole. Blanks around the text are ignored, except
/// in texts.
template <class T>
struct VValueTrait;

/// Decimal digits: "8", "-1".
template <>
struct KROD_API VValueTrait<int> {
    /// [any · gives] The text form, and the way back, which keeps the old value when it fails.
    static std::string Text(int value);
    static TextResult setValueFromText(int& value, std::string_view text);
};

/// The shortest text that reads back to the same double, always with a point or an exponent: "1.0", "0.1",
/// "1e-05". Infinity and NaN are written "inf", "-inf", "nan" and are refused by setValueFromText.
template <>
struct KROD_API VValueTrait<double> {
    /// [any · gives] The text form, and the way back, which keeps the old value when it fails.
    static std::string Text(double value);
    static TextResult setValueFromText(double& value, std::string_view text);
};

/// "true" or "false"; "1" and "0", "on" and "off", "yes" and "no" are read too.
template <>
struct KROD_API VValueTrait<bool> {
    /// [any · gives] The text form, and the way back, which keeps the old value when it fails.
    static std::string Text(bool value);
    static TextResult setValueFromText(bool& value, std::string_view text);
};

/// The text itself, byte for byte. A text with a NUL in it is refused.
template <>
struct KROD_API VValueTrait<std::string> {
    /// [any · gives] The text form, and the way back, which keeps the old value when it fails.
    static std::string Text(const std::string& value);
    static TextResult setValueFromText(std::string& value, std::string_view text);
};

/// "+a -b". The whole list is replaced; a token without sign or name is refused, and so is a name listed
/// twice.
template <>
struct KROD_API VValueTrait<FlagList> {
    /// [any · gives] The text form, and the way back, which keeps the old value when it fails.
    static std::string Text(const FlagList& value);
    static TextResult setValueFromText(FlagList& value, std::string_view text);
};

/// Two doubles with a blank between them: "0.5 0.5". A comma between them is read too.
template <>
struct KROD_API VValueTrait<FixedArray<double, 2>> {
    /// [any · gives] The text form, and the way back, which keeps the old value when it fails.
    static std::string Text(const FixedArray<double, 2>& value);
    static TextResult setValueFromText(FixedArray<double, 2>& value, std::string_view text);
};

/// An output type without a text form: "" always, and no text is accepted.
template <>
struct KROD_API VValueTrait<StrongPtr<ImageTileProcessor>> {
    /// [any · gives] The text form, and the way back, which keeps the old value when it fails.
    static std::string Text(const StrongPtr<ImageTileProcessor>& value);
    static TextResult setValueFromText(StrongPtr<ImageTileProcessor>& value, std::string_view text);
};

} // namespace krod
