// SPDX-License-Identifier: Apache-2.0
// Every picture format but EXR, PNG and JPEG. A library of its own, because OpenImageIO brings some 200 others along.
#include "workbench/files/codec/OiioReader.h"
#include "workbench/files/codec/OiioWriter.h"
#include "workbench/files/codec/PictureCodec.h"

namespace workbench {
namespace {

class OiioCodec final : public PictureCodec {
public:
    [[nodiscard]] std::unique_ptr<PictureReader> open(const std::filesystem::path& path) const override {
        return std::make_unique<OiioReader>(path);
    }
    [[nodiscard]] std::unique_ptr<PictureWriter> create(const std::filesystem::path& path,
                                                        const PictureDescription& description,
                                                        const WriteOptions& options) const override {
        return std::make_unique<OiioWriter>(path, description, options);
    }
};

} // namespace
} // namespace workbench

extern "C" KROD_FILES_API const workbench::PictureCodec* krodPictureCodec() {
    static const workbench::OiioCodec codec;
    return &codec;
}
