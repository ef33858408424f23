// SPDX-License-Identifier: Apache-2.0
// What the host and the process that reads a picture tell each other.
#pragma once

#include "workbench/files/PictureDescription.h"
#include "workbench/files/reader/Parcel.h"
#include "workbench/report/Failure.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// A picture that is to be opened.
struct OpenRequest {
    std::string folder;       ///< where the host works
    std::string path;         ///< as people gave it
    bool needsCodec = false;  ///< it is read by OpenImageIO
    std::uint64_t memory = 0; ///< bytes that reading may need at most, whatever the picture declares
    int seconds = 0;          ///< of the processor, beside what decoding of its pixels takes
    bool linear = false;      ///< colors that are sRGB are made linear
};

/// Rows that are to be decoded into a slot.
struct RowsRequest {
    std::uint64_t slot = 0;
    int first = 0, count = 0;
    bool withExtra = false;
};

/// Memory for rows that both processes see: equal slots, one behind the other.
struct RowMemory {
    int id = 0;
    std::uint64_t slots = 0;
    int rowsPerSlot = 0;
};

/// Where in a slot the parts of its rows lie, in bytes. Both processes work it out by themselves.
class SlotLayout {
public:
    SlotLayout(const PictureDescription& about, int rows);

    /// The pixels lie at 0, what was lost of them, a ValueLoss for each row, here.
    [[nodiscard]] std::size_t losses() const { return lossesAt; }
    /// The rows of an additional channel.
    [[nodiscard]] std::size_t plane(std::size_t channel) const { return planesAt[channel]; }
    [[nodiscard]] std::size_t size() const { return all; }

private:
    std::size_t lossesAt = 0, all = 0;
    std::vector<std::size_t> planesAt;
};

[[nodiscard]] std::string packed(const OpenRequest& request);
[[nodiscard]] std::string packed(const RowsRequest& request);
[[nodiscard]] std::string packed(const RowMemory& memory);
[[nodiscard]] std::string packed(const PictureDescription& about);
[[nodiscard]] std::string packed(const Failure& failure);

/// The same things out of a message's bytes. All of them throw BrokenParcel for bytes that cannot be right.
[[nodiscard]] OpenRequest openRequestIn(std::string_view bytes);
[[nodiscard]] RowsRequest rowsRequestIn(std::string_view bytes);
[[nodiscard]] RowMemory rowMemoryIn(std::string_view bytes);
/// A description of a picture that could be: size, channels and windows are within the limits.
[[nodiscard]] PictureDescription descriptionIn(std::string_view bytes);
/// A failure of the kind Input, or Output where the memory that is allowed does not suffice.
[[nodiscard]] Failure failureIn(std::string_view bytes);

} // namespace workbench
