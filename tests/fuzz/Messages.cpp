// SPDX-License-Identifier: Apache-2.0
// What processes that have met foreign files send to the host, which believes nothing of it. The first byte chooses:
// 'd' a picture's description, 'f' a failure, 'm' the memory for rows, 'o' and 'r' what the host asks for itself,
// 'M' an imported model, 's' a program on trial.
#include "Target.h"

#include "workbench/files/model/ModelTransfer.h"
#include "workbench/files/reader/PictureMessages.h"
#include "workbench/gl/worker/ShaderTrial.h"
#include "workbench/platform/Descriptor.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace workbench;

void readDescription(std::string_view bytes) {
    const PictureDescription about = descriptionIn(bytes);
    fuzz::require(packed(about) == bytes, "a description is what its bytes say");
    fuzz::require(about.orientation >= 1 && about.orientation <= 8, "an orientation is one of eight");
    fuzz::require(about.pixelAspect > 0, "pixels have a width");
    fuzz::require(!about.displayWindow || (about.displayWindow->width > 0 && about.displayWindow->height > 0),
                  "a display window has pixels");
    fuzz::require(about.depth <= PixelDepth::Float && about.transfer <= Transfer::Srgb, "names are known ones");
    for (const ExtraChannel& channel : about.extraChannels)
        fuzz::require(channel.type <= ExtraType::UInt, "types of channels are known ones");
}

void readFailure(std::string_view bytes) {
    const Failure failure = failureIn(bytes);
    fuzz::require(failure.fault() == Fault::Input || failure.fault() == Fault::Output,
                  "a decoder does not decide how the program ends");
}

void readRequests(char kind, std::string_view bytes) {
    if (kind == 'm') fuzz::require(packed(rowMemoryIn(bytes)) == bytes, "a place for rows is what its bytes say");
    if (kind == 'o') fuzz::require(packed(openRequestIn(bytes)) == bytes, "a request is what its bytes say");
    if (kind == 'r') fuzz::require(packed(rowsRequestIn(bytes)) == bytes, "rows are what their bytes say");
}

void readModel(std::string_view bytes) {
    const Descriptor file = memoryFile("model", bytes);
    const ImportResult result = receiveResult(file.get());
    const auto* const model = std::get_if<Model>(&result);
    if (!model) return;
    for (const Mesh& mesh : model->meshes) {
        fuzz::require(mesh.normals.size() == mesh.positions.size(), "every vertex has a normal");
        fuzz::require(mesh.colours.empty() || mesh.colours.size() == mesh.positions.size(),
                      "every vertex has a color, or none has");
        fuzz::require(std::all_of(mesh.triangles.begin(), mesh.triangles.end(),
                                  [&](std::uint32_t vertex) { return vertex < mesh.positions.size(); }),
                      "triangles have vertices that are there");
    }
}

void readTrial(std::string_view input) {
    const std::vector<char> bytes(input.begin(), input.end());
    static_cast<void>(packed(unpacked(bytes)));
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view bytes = fuzz::textOf(data + 1, size - 1);
    try {
        if (data[0] == 'd') readDescription(bytes);
        if (data[0] == 'f') readFailure(bytes);
        if (data[0] == 'm' || data[0] == 'o' || data[0] == 'r') readRequests(static_cast<char>(data[0]), bytes);
        if (data[0] == 'M') readModel(bytes);
        if (data[0] == 's') readTrial(bytes);
    } catch (const std::runtime_error&) { // the message is refused
    }
    return 0;
}
