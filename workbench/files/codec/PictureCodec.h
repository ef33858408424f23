// SPDX-License-Identifier: Apache-2.0
// What the codec library for pictures other than EXR, PNG and JPEG offers.
#pragma once

#include "workbench/files/Picture.h"

namespace workbench {

/// The one object of the codec library, which its C function `krodPictureCodec` returns. It lives for ever.
class PictureCodec {
public:
    /// As PictureReader::open and PictureWriter::create.
    [[nodiscard]] virtual std::unique_ptr<PictureReader> open(const std::filesystem::path& path) const = 0;
    [[nodiscard]] virtual std::unique_ptr<PictureWriter> create(const std::filesystem::path& path,
                                                                const PictureDescription& description,
                                                                const WriteOptions& options) const = 0;

protected:
    ~PictureCodec() = default;
};

} // namespace workbench
