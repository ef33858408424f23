// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/points/Ply.h"
#include "workbench/files/points/PointBuilder.h"
#include "workbench/files/points/TextCursor.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

namespace workbench {
namespace {

constexpr std::size_t TypeSizes[] = {1, 1, 2, 2, 4, 4, 4, 8};

std::size_t sizeOf(PlyType type) { return TypeSizes[static_cast<std::size_t>(type)]; }

/// Largest value of an integer type, by which colours are divided; 1 for the others.
double scaleOf(PlyType type) {
    constexpr double Largest[] = {127, 255, 32767, 65535, 2147483647, 4294967295, 1, 1};
    return Largest[static_cast<std::size_t>(type)];
}

constexpr double LargestUInt16 = 65535;

/// The values of the file, one after the other.
class PlyValues {
public:
    virtual ~PlyValues() = default;
    virtual double next(PlyType type) = 0;
    [[nodiscard]] virtual std::size_t smallestSize(PlyType type) const = 0;
};

class AsciiValues final : public PlyValues {
public:
    AsciiValues(const std::filesystem::path& path, std::string_view data, std::uint64_t firstLine)
        : text(path, data, firstLine) {}
    double next(PlyType) override {
        std::string_view word;
        if (!text.nextWord(word)) text.failAtEnd("another number", "the end of the file");
        return text.number(word);
    }
    [[nodiscard]] std::size_t smallestSize(PlyType) const override { return 1; }

private:
    TextCursor text;
};

class BinaryValues final : public PlyValues {
public:
    BinaryValues(const std::filesystem::path& path, std::string_view data, PlyFormat format)
        : file(path),
          rest(data),
          swaps((format == PlyFormat::BigEndian) == (std::endian::native == std::endian::little)) {}

    double next(PlyType type) override {
        switch (type) {
        case PlyType::Int8:
            return take<std::int8_t>();
        case PlyType::UInt8:
            return take<std::uint8_t>();
        case PlyType::Int16:
            return take<std::int16_t>();
        case PlyType::UInt16:
            return take<std::uint16_t>();
        case PlyType::Int32:
            return take<std::int32_t>();
        case PlyType::UInt32:
            return take<std::uint32_t>();
        case PlyType::Float:
            return static_cast<double>(take<float>());
        case PlyType::Double:
            break;
        }
        return take<double>();
    }
    [[nodiscard]] std::size_t smallestSize(PlyType type) const override { return sizeOf(type); }

private:
    template <typename Stored>
    Stored take() {
        if (rest.size() < sizeof(Stored))
            throw Failure(Fault::Input, {file.string(),
                                         "the points cannot be read",
                                         "another value",
                                         "the end of the file",
                                         "The file is damaged or was not written to its end",
                                         {}});
        char bytes[sizeof(Stored)];
        std::memcpy(bytes, rest.data(), sizeof bytes);
        if (swaps) std::reverse(bytes, bytes + sizeof bytes);
        rest.remove_prefix(sizeof bytes);
        Stored value;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }

    const std::filesystem::path& file;
    std::string_view rest;
    bool swaps;
};

/// Believes a declared count only as far as the file has room for it.
void checkCount(const std::filesystem::path& path, const PlyElement& element, const PlyValues& values,
                std::size_t dataSize) {
    std::size_t smallest = 0;
    for (const auto& property : element.properties)
        smallest += values.smallestSize(property.isList ? property.countType : property.type);
    if (smallest == 0 || element.count <= dataSize / smallest) return;
    throw Failure(Fault::Input,
                  {path.string(),
                   "declares more entries of " + quotedField(element.name) + " than it can hold",
                   "at most " + std::to_string(dataSize / smallest),
                   std::to_string(element.count),
                   "The file is damaged or was not written to its end",
                   {}});
}

void skipList(const PlyProperty& property, PlyValues& values) {
    for (double left = values.next(property.countType); left >= 1; --left) values.next(property.type);
}

void skipElement(const PlyElement& element, PlyValues& values) {
    if (element.properties.empty()) return;
    for (std::uint64_t i = 0; i < element.count; ++i)
        for (const auto& property : element.properties) {
            if (property.isList)
                skipList(property, values);
            else
                values.next(property.type);
        }
}

/// Where a property goes, and what its values are divided by.
struct Target {
    std::optional<PointField> field;
    double scale = 1;
};

std::vector<Target> targetsOf(const std::filesystem::path& path, const PlyElement& element) {
    std::vector<Target> targets;
    std::array<bool, PointFields> found{};
    for (const auto& property : element.properties) {
        Target target;
        if (!property.isList) target.field = pointField(property.name);
        if (target.field) {
            found[static_cast<std::size_t>(*target.field)] = true;
            const bool isColour = *target.field >= PointField::Red && *target.field <= PointField::Alpha;
            if (isColour) target.scale = scaleOf(property.type);
        }
        targets.push_back(target);
    }
    if (!found[0] || !found[1] || !found[2])
        throw Failure(Fault::Input, {path.string(),
                                     "the points cannot be read",
                                     "properties named x, y and z",
                                     "an element \"vertex\" without them",
                                     "",
                                     {}});
    return targets;
}

/// By what colours of 32-bit integers are divided, unless they turn out to be bytes; 1 where the targets divide.
double takeCommonScale(const PlyElement& element, std::vector<Target>& targets) {
    double common = 1;
    for (std::size_t i = 0; i < targets.size(); ++i)
        if (targets[i].scale > LargestUInt16) {
            common = scaleOf(element.properties[i].type);
            targets[i].scale = 1;
        }
    return common;
}

void tellColumns(const PlyElement& element, const std::vector<Target>& targets, PointSet& points) {
    for (std::size_t i = 0; i < targets.size(); ++i) {
        if (targets[i].field)
            points.columns.push_back(nameOf(*targets[i].field));
        else
            points.unusedColumns.push_back(element.properties[i].name);
    }
}

PointSet readVertices(const std::filesystem::path& path, const PlyElement& element, PlyValues& values) {
    std::vector<Target> targets = targetsOf(path, element);
    PointBuilder builder(takeCommonScale(element, targets));
    builder.reserve(element.count);
    for (std::uint64_t i = 0; i < element.count; ++i) {
        PointValues point = DefaultPoint;
        for (std::size_t p = 0; p < targets.size(); ++p) {
            if (element.properties[p].isList) {
                skipList(element.properties[p], values);
                continue;
            }
            const double value = values.next(element.properties[p].type) / targets[p].scale;
            if (targets[p].field) point[static_cast<std::size_t>(*targets[p].field)] = value;
        }
        builder.add(point);
    }
    PointSet points = builder.take();
    tellColumns(element, targets, points);
    return points;
}

} // namespace

PointSet readPlyPoints(const std::filesystem::path& path, std::string_view bytes) {
    const PlyHeader header = readPlyHeader(path, bytes);
    const std::string_view data = bytes.substr(header.size);
    AsciiValues ascii(path, data, header.lines + 1);
    BinaryValues binary(path, data, header.format);
    PlyValues& values = header.format == PlyFormat::Ascii ? static_cast<PlyValues&>(ascii) : binary;
    for (const auto& element : header.elements) {
        checkCount(path, element, values, data.size());
        if (element.name == "vertex") return readVertices(path, element, values);
        skipElement(element, values);
    }
    return {};
}

} // namespace workbench
