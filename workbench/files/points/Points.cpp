// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/Points.h"

#include "workbench/files/InputKind.h"
#include "workbench/files/points/PackedFile.h"
#include "workbench/files/points/Ply.h"
#include "workbench/files/points/PointText.h"
#include "workbench/report/Failure.h"

#include <algorithm>

namespace workbench {
namespace {

/// While it is read, in double precision, and as it is kept.
constexpr std::uint64_t BytesOfPoint = sizeof(glm::dvec3) + sizeof(glm::vec4) + sizeof(glm::vec3);

/// As many points as there can be at most.
std::uint64_t mostPoints(const std::filesystem::path& path, std::string_view bytes, bool isPly) {
    if (!isPly) {
        const bool isOldMac = bytes.find('\n') == std::string_view::npos;
        return static_cast<std::uint64_t>(std::ranges::count(bytes, isOldMac ? '\r' : '\n')) + 1;
    }
    for (const PlyElement& element : readPlyHeader(path, bytes).elements)
        if (element.name == "vertex") return std::min<std::uint64_t>(element.count, bytes.size());
    return 0;
}

/// The text behind the byte order mark that spreadsheets write.
std::string_view withoutMark(const std::filesystem::path& path, std::string_view text) {
    if (text.starts_with("\xff\xfe") || text.starts_with("\xfe\xff"))
        throw Failure(Fault::Input, {path.string(),
                                     "the points cannot be read",
                                     "a text in UTF-8",
                                     "one in UTF-16",
                                     "Save it as UTF-8, which spreadsheets call \"CSV UTF-8\"",
                                     {}});
    return text.starts_with("\xef\xbb\xbf") ? text.substr(3) : text;
}

} // namespace

PointSet readPoints(const std::filesystem::path& path, const MemoryBudget& budget) {
    checkInputFile(path);
    const std::string bytes = wholeFile(path, budget);
    const bool isPly = looksLikePly(bytes);
    budget.require(path, bytes.size() + mostPoints(path, bytes, isPly) * BytesOfPoint);
    PointSet points = isPly ? readPlyPoints(path, bytes) : readPointText(path, withoutMark(path, bytes));
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
