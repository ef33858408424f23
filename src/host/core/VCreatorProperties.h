// SPDX-License-Identifier: Apache-2.0
// The texts of a creator.
#pragma once

#include "host/Export.h"

#include <optional>
#include <string>
#include <utility>

namespace krod {

/// The property record of a creator. Fields that no value sets stay without one.
struct VCreatorProperties {
    std::optional<std::string> category;    ///< first component of the key, the menu family
    std::optional<std::string> name;        ///< second component of the key
    std::optional<std::string> help;        ///< longer text, HTML allowed
    std::optional<std::string> description; ///< one line
    std::optional<std::string> group;       ///< grouping below the category
    std::optional<std::string> source;      ///< base name of the module's source file
};

/// A value for one field of the record.
class KROD_API VCreatorPropertyBase {
public:
    using Field = std::optional<std::string> VCreatorProperties::*;

    /// [load · copies]
    VCreatorPropertyBase(Field field, std::string text);
    VCreatorPropertyBase(const VCreatorPropertyBase&) = default;
    VCreatorPropertyBase& operator=(const VCreatorPropertyBase&) = default;
    virtual ~VCreatorPropertyBase();

    /// [load · borrows] Merges the value into a record: its field is set, every other field is kept.
    void assign(VCreatorProperties& properties) const;
    /// [load · gives] Category and name joined by the separator; the name alone without a category.
    [[nodiscard]] static std::string keyname(const VCreatorProperties& properties,
                                             const std::string& separator);

private:
    Field field;
    std::string text;
};

/// One kind of single-field value per field.
template <VCreatorPropertyBase::Field F>
class VCreatorProperty : public VCreatorPropertyBase {
public:
    /// [load · copies]
    explicit VCreatorProperty(std::string text) : VCreatorPropertyBase(F, std::move(text)) {}
};

using VCreatorCategory = VCreatorProperty<&VCreatorProperties::category>;
using VCreatorName = VCreatorProperty<&VCreatorProperties::name>;
using VCreatorHelp = VCreatorProperty<&VCreatorProperties::help>;
using VCreatorDescription = VCreatorProperty<&VCreatorProperties::description>;
using VCreatorGroup = VCreatorProperty<&VCreatorProperties::group>;
using VCreatorSource = VCreatorProperty<&VCreatorProperties::source>;

} // namespace krod
