// SPDX-License-Identifier: Apache-2.0
// A short array of fixed length, as a parameter value.
#pragma once

#include <array>
#include <cstddef>
#include <type_traits>

namespace krod {

/// N components of type T, read and written by index.
template <class T, std::size_t N>
class FixedArray {
public:
    constexpr FixedArray() = default;
    /// [any] One value per component.
    template <class... Values, class = std::enable_if_t<sizeof...(Values) == N>>
    constexpr explicit FixedArray(Values... values) : components{static_cast<T>(values)...} {}

    /// [any] Component i, 0 <= i < N.
    [[nodiscard]] constexpr T& operator[](std::size_t i) { return components[i]; }
    [[nodiscard]] constexpr const T& operator[](std::size_t i) const { return components[i]; }
    friend bool operator==(const FixedArray&, const FixedArray&) = default;

private:
    std::array<T, N> components{};
};

} // namespace krod
