// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/Points.h"

#include "workbench/files/InputKind.h"
#include "workbench/files/points/Ply.h"
#include "workbench/files/points/PointText.h"
#include "workbench/report/Failure.h"

#include <fstream>

namespace workbench {
namespace {

std::string wholeFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::string bytes(std::filesystem::file_size(path), '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!in || static_cast<std::size_t>(in.gcount()) != bytes.size())
        throw Failure(Fault::Input, {path.string(),
                                     "cannot be read to its end",
                                     std::to_string(bytes.size()) + " bytes",
                                     std::to_string(in.gcount()),
                                     "",
                                     {}});
    return bytes;
}

} // namespace

PointSet readPoints(const std::filesystem::path& path) {
    checkInputFile(path);
    const std::string bytes = wholeFile(path);
    const bool isPly = bytes.starts_with("ply\n") || bytes.starts_with("ply\r\n");
    PointSet points = isPly ? readPlyPoints(path, bytes) : readPointText(path, bytes);
    if (points.positions.empty())
        throw Failure(Fault::Input, {path.string(),
                                     "holds no points",
                                     "at least one point",
                                     points.droppedPoints > 0 ? "only points that are not finite" : "",
                                     "",
                                     {}});
    return points;
}

} // namespace workbench
