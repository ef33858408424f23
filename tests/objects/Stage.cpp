// SPDX-License-Identifier: Apache-2.0
#include "Stage.h"

#include "workbench/core/CreatorRegistry.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace workbench::test {
namespace {

SessionOptions softwareOptions() {
    setenv("MESA_SHADER_CACHE_DISABLE", "true", 1);
    SessionOptions options;
    options.gpu.kind = GpuChoice::Kind::Software;
    return options;
}

std::filesystem::path newFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "objects-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    return pattern;
}

float brightness(const krod::RGBAHalf& pixel) {
    return std::max({static_cast<float>(pixel.r), static_cast<float>(pixel.g), static_cast<float>(pixel.b)});
}

} // namespace

Stage::Stage() : library(plugins.load(WORKBENCH_OBJECTS)), session(softwareOptions()), folder(newFolder()) {}

Stage::~Stage() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

Object Stage::make(std::string_view key) {
    const auto found = CreatorRegistry::find(key);
    if (found.size() != 1) throw std::runtime_error("not one creator: " + std::string(key));
    krod::VCreationContext context;
    return krod::castStrong<krod::VGLRenderObject>(found.front().creator->create("", context));
}

void Stage::set(const Object& object, const std::string& parameter, const std::string& text) {
    const auto slot = object->slots().input(parameter);
    if (!slot) throw std::runtime_error("no parameter " + parameter);
    if (const auto result = slot->setValueFromText(text); !result)
        throw std::runtime_error(parameter + ": expected " + result.expected);
}

std::string Stage::write(const std::string& name, std::string_view bytes) const {
    std::ofstream file(folder / name, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return (folder / name).string();
}

Pixels Stage::render(krod::VGLRenderObject& object) {
    FrameSetup setup;
    setup.width = Width;
    setup.height = Height;
    setup.camera = Camera::fitted(object.bounds(), static_cast<double>(Width) / Height);
    return renderPicture(session, object, pool, setup);
}

const krod::RGBAHalf& at(const Pixels& pixels, int x, int y) {
    return pixels.at(static_cast<std::size_t>(y) * Stage::Width + static_cast<std::size_t>(x));
}

float largest(const Pixels& pixels) {
    float most = 0;
    for (const auto& pixel : pixels) most = std::max(most, brightness(pixel));
    return most;
}

double coverage(const Pixels& pixels) {
    const auto lit =
        std::count_if(pixels.begin(), pixels.end(), [](const auto& pixel) { return brightness(pixel) > 0; });
    return static_cast<double>(lit) / static_cast<double>(pixels.size());
}

bool same(const Pixels& a, const Pixels& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(a.front())) == 0;
}

Diagnostic inputFailure(const std::function<void()>& function) {
    try {
        function();
    } catch (const Failure& failure) {
        if (failure.fault() != Fault::Input) throw;
        return failure.diagnostic();
    }
    throw std::runtime_error("nothing failed");
}

} // namespace workbench::test
