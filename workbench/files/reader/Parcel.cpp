// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/reader/Parcel.h"

#include <cstring>

namespace workbench {

ParcelWriter& ParcelWriter::number(std::uint64_t value) {
    char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    packed.append(bytes, sizeof bytes);
    return *this;
}

ParcelWriter& ParcelWriter::text(std::string_view value) {
    number(value.size());
    packed.append(value);
    return *this;
}

std::uint64_t ParcelReader::number(std::uint64_t most) {
    std::uint64_t value = 0;
    if (left.size() < sizeof value) throw BrokenParcel();
    std::memcpy(&value, left.data(), sizeof value);
    left.remove_prefix(sizeof value);
    if (value > most) throw BrokenParcel();
    return value;
}

int ParcelReader::integer(int least, int most) {
    const auto value = static_cast<std::int64_t>(number());
    if (value < least || value > most) throw BrokenParcel();
    return static_cast<int>(value);
}

std::string ParcelReader::text() {
    const std::uint64_t size = number(left.size());
    if (size > left.size()) throw BrokenParcel();
    std::string value(left.substr(0, size));
    left.remove_prefix(size);
    return value;
}

void ParcelReader::end() const {
    if (!left.empty()) throw BrokenParcel();
}

} // namespace workbench
