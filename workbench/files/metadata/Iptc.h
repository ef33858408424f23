// SPDX-License-Identifier: Apache-2.0
// IPTC fields (Information Interchange Model, record 2) as metadata and back.
#pragma once

#include "workbench/files/PictureDescription.h"

#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// Appends the texts of a Photoshop block, as a JPEG's segment APP13 holds it; several keywords become one text,
/// separated by "; ".
void appendIptc(std::string_view block, std::vector<Metadatum>& metadata);

/// True where the entry has a place among the IPTC fields.
[[nodiscard]] bool isIptcField(const Metadatum& entry);

/// A Photoshop block of these entries, all of which have a place there; empty without any. What does not fit
/// into a segment is left out and its name appended to `dropped`.
[[nodiscard]] std::string iptcBlock(const std::vector<const Metadatum*>& entries,
                                    std::vector<std::string>& dropped);

} // namespace workbench
