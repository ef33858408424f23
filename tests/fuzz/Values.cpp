// SPDX-License-Identifier: Apache-2.0
// Text forms of the value types. The first byte chooses the type, the others are the text.
#include "Target.h"

#include "host/values/VValueTrait.h"

#include <string>

namespace {

using namespace krod;

template <class T>
void check(std::string_view text, const T& old) {
    T value = old;
    const TextResult result = VValueTrait<T>::setValueFromText(value, text);
    if (!result) {
        fuzz::require(value == old, "a text that is refused leaves the value");
        return;
    }
    const std::string written = VValueTrait<T>::Text(value);
    T again = old;
    fuzz::require(static_cast<bool>(VValueTrait<T>::setValueFromText(again, written)), "a text form is read");
    fuzz::require(again == value, "a text form reads back to the same value");
    fuzz::require(VValueTrait<T>::Text(again) == written, "a value has one text form");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view text = fuzz::textOf(data + 1, size - 1);
    switch (data[0]) {
    case 'i':
        check<int>(text, 42);
        break;
    case 'd':
        check<double>(text, 0.25);
        break;
    case 'b':
        check<bool>(text, false);
        check<bool>(text, true);
        break;
    case 's':
        check<std::string>(text, "old");
        break;
    case 'f':
        check<FlagList>(text, FlagList("+old", ' '));
        break;
    case 'p':
        check<FixedArray<double, 2>>(text, FixedArray<double, 2>(0.25, 0.75));
        break;
    default:
        break;
    }
    return 0;
}
