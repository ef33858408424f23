// SPDX-License-Identifier: Apache-2.0
// What the checks that draw have in common.
#pragma once

#include "workbench/report/Failure.h"
#include "workbench/validate/Guest.h"
#include "workbench/validate/Module.h"

#include <filesystem>
#include <functional>
#include <string>

namespace workbench::validate {

/// Whether a module may refuse its work in this way: it waits for a file.
[[nodiscard]] bool mayRefuse(const krod::VObject& object, const Failure& failure);

/// Notes what `work` throws, and OpenGL errors that are pending afterwards. Whether it came to its end.
bool worksWell(Trial& trial, const std::string& who, const krod::VObject& object,
               const std::function<void()>& work);

/// Calls a function with each object that draws.
void forEachDrawing(const Guest& guest, const std::function<void(const Maker&, krod::VObject&)>& call);

/// The picture of an object that draws, or else its processor's work on a drawn tile; empty for an object
/// that does neither, and for one that waits for a file. Throws what the module throws.
[[nodiscard]] Pixels drawOrProcess(RenderSession& session, krod::VObject& object,
                                   const krod::VValuePool& pool = {}, int width = 8, int height = 8);

/// A pool in which every parameter has one of its usual values, and the words for it.
[[nodiscard]] krod::VValuePool drawnSetting(const krod::VObject& object, Trial& trial, std::string& text);

/// A folder for temporary files that goes with its owner.
class Folder {
public:
    Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder();
    [[nodiscard]] const std::filesystem::path& path() const { return where; }

private:
    std::filesystem::path where;
};

} // namespace workbench::validate
