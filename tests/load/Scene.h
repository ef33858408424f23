// SPDX-License-Identifier: Apache-2.0
// What all tests of loading share.
#pragma once

#include "host/core/VObject.h"
#include "host/rendering/ImageTileProcessor.h"
#include "workbench/core/PluginManager.h"

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace scene {

using Processor = krod::StrongPtr<krod::ImageTileProcessor>;

/// The keys of the catalogue, row 1 first, with the source file where two creators share the key.
inline constexpr std::array<std::string_view, 15> Catalogue = {
    "Hollywood/ArcTangens",
    "Display/Blurred",
    "Display/CMYK",
    "Display/CurveAdjust",
    "Display/Depth@DisplayDepth",
    "Hollywood/ColorGammaCorrection",
    "Hollywood/GammaCorrection",
    "Hollywood/HDRColoredToneMapping",
    "Display/Depth@HDRObjectDisplay",
    "Hollywood/HDRToneMapping",
    "Display/HSVAdjust",
    "Hollywood/PixelBlur",
    "Display/PixelContours",
    "Display/ProximityHDR",
    "Hollywood/TileProgram",
};

/// The trace up to level 100, from construction to destruction.
class TraceRecord {
public:
    TraceRecord();
    TraceRecord(const TraceRecord&) = delete;
    TraceRecord& operator=(const TraceRecord&) = delete;
    ~TraceRecord();

    std::vector<std::string> lines; ///< with their line ends
};

/// Everything that reaches descriptor 1, from construction to text().
class OutputRecord {
public:
    OutputRecord();
    OutputRecord(const OutputRecord&) = delete;
    OutputRecord& operator=(const OutputRecord&) = delete;
    ~OutputRecord();

    /// Ends the record.
    std::string text();

private:
    int original;
    int file;
};

/// Tells its key and the number of creators that are still registered when its object is deleted.
class Witness : public krod::VParameter {
public:
    using Listener = std::function<void(const std::string& key, std::size_t creatorsLeft)>;
    Witness(std::string key, Listener listener);
    ~Witness() override;

private:
    std::string key;
    Listener listener;
};

/// Makes an object with the only creator of "KEY" or "KEY@SOURCE".
krod::StrongPtr<krod::VObject> make(std::string_view key, const std::string& name = "");
/// One object of each row of the catalogue, row 1 first.
std::vector<krod::StrongPtr<krod::VObject>> makeCatalogue();
/// Gives each object a witness, in the order of the catalogue.
void watch(const std::vector<krod::StrongPtr<krod::VObject>>& objects, const Witness::Listener& listener);

/// The output "ImageProcessor" of a module, its value and the processor in it.
krod::StrongPtr<krod::VParameter> outputOf(const krod::StrongPtr<krod::VObject>& object);
krod::StrongPtr<krod::VValueBase> valueOf(const krod::StrongPtr<krod::VObject>& object);
Processor processorOf(const krod::StrongPtr<krod::VObject>& object);

/// The number of creators that a library has registered.
std::size_t creatorCount(workbench::LibraryId library);
/// What a function throws, which has to be a Failure of the plug-in kind.
workbench::Diagnostic refusal(const std::function<void()>& function);
/// Whether a library file is known to the loader or mapped into memory.
bool isInMemory(const std::string& path);

} // namespace scene
