// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/commands/FileFacts.h"

#include "apps/plime/pictures/InputLoss.h"
#include "apps/plime/terminal/Text.h"
#include "workbench/files/InputKind.h"
#include "workbench/files/Model.h"
#include "workbench/files/Picture.h"
#include "workbench/files/Points.h"
#include "workbench/network/NetworkFile.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <limits>
#include <utility>
#include <vector>

namespace workbench {
namespace {

constexpr std::size_t LongestText = 60;  // columns, of a picture's texts
constexpr std::size_t LongestValue = 20; // columns, of a parameter

/// JSON files are networks, and so is what looks like JSON and is called otherwise, except for models.
bool isNetwork(const std::string& file) {
    checkInputFile(file);
    const std::string extension = lowerExtension(file);
    if (extension == "json" || extension == "gltf") return extension == "json";
    std::ifstream in(file, std::ios::binary);
    char first = 0;
    return in >> first && first == '{';
}

Json channelsOf(const PictureDescription& picture) {
    Json names = Json::array();
    const auto add = [&](std::size_t index, const char* usual) {
        const std::string& own = picture.channelNames[index];
        names.push_back(own.empty() ? usual : own);
    };
    if (picture.isGrey) {
        add(0, "Y");
    } else {
        add(0, "R");
        add(1, "G");
        add(2, "B");
    }
    if (picture.hasAlpha) add(3, "A");
    for (const ExtraChannel& channel : picture.extraChannels) names.push_back(channel.name);
    for (const std::string& name : picture.unreadChannels) names.push_back(name);
    return names;
}

/// What the values mean, what is taken of the file, and what is left out, where that is not the usual.
void addMeaning(const PictureDescription& picture, Json& facts) {
    constexpr std::array<const char*, 3> Transfers{"unknown", "linear", "sRGB"};
    facts["transfer"] = Transfers[static_cast<std::size_t>(picture.transfer)];
    if (picture.hasAlpha) facts["alpha"] = picture.alphaIsAssociated ? "associated" : "unassociated";
    const auto window = [](const PixelWindow& w) { return Json{w.x, w.y, w.width, w.height}; };
    const PixelWindow data{picture.dataX, picture.dataY, picture.width, picture.height};
    if (const PixelWindow display = picture.displayWindow.value_or(data); display != data) {
        facts["dataWindow"] = window(data);
        facts["displayWindow"] = window(display);
    }
    if (picture.pixelAspect != 1) facts["pixelAspect"] = picture.pixelAspect;
    if (const auto source = colorSource(picture)) facts["color"] = *source;
    if (picture.furtherPictures > 0)
        facts["notRead"] = std::to_string(picture.furtherPictures) + " further " + picture.furtherPicturesAre;
    if (!picture.unreadChannels.empty()) facts["unreadChannels"] = picture.unreadChannels;
    if (!picture.notes.empty()) facts["notes"] = picture.notes;
}

Json factsOfPicture(const std::string& file) {
    const auto reader = PictureReader::open(file);
    const PictureDescription& picture = reader->description();
    Json facts{{"path", file},
               {"kind", "picture"},
               {"size", {picture.width, picture.height}},
               {"channels", channelsOf(picture)},
               {"depth", depthName(picture.depth)},
               {"format", picture.format},
               {"network", picture.find(NetworkName) != nullptr},
               {"metadata", Json::object()}};
    addMeaning(picture, facts);
    for (const Metadatum& entry : picture.metadata)
        if (entry.name != NetworkName) facts["metadata"][entry.name] = entry.text;
    return facts;
}

Json factsOfNetwork(const std::string& file) {
    const std::string text = textOf(readNetwork(file));
    return {{"path", file}, {"kind", "network"}, {"network", Json::parse(text)}};
}

/// The corners of the smallest box around points.
class Box {
public:
    void add(const glm::dvec3& p) {
        for (glm::length_t i = 0; i < 3; ++i) {
            least[i] = std::min(least[i], p[i]);
            most[i] = std::max(most[i], p[i]);
        }
    }
    [[nodiscard]] Json json() const {
        if (least.x > most.x) return nullptr;
        return {{"least", {least.x, least.y, least.z}}, {"most", {most.x, most.y, most.z}}};
    }

private:
    glm::dvec3 least{std::numeric_limits<double>::infinity()}, most{-std::numeric_limits<double>::infinity()};
};

Json factsOfModel(const std::string& file) {
    const Model model = readModel(file);
    std::size_t vertices = 0, triangles = 0;
    Box box;
    for (const Mesh& mesh : model.meshes) {
        vertices += mesh.positions.size();
        triangles += mesh.triangles.size() / 3;
        for (const glm::vec3& position : mesh.positions) box.add(position);
    }
    return {{"path", file},
            {"kind", "model"},
            {"meshes", model.meshes.size()},
            {"vertices", vertices},
            {"triangles", triangles},
            {"dropped", model.droppedVertices},
            {"textures", model.leftOutTextures},
            {"bounds", box.json()}};
}

Json factsOfPoints(const std::string& file) {
    const PointSet points = readPoints(file);
    Box box;
    for (const glm::dvec3& corner : {points.low, points.high}) box.add(corner);
    float least = std::numeric_limits<float>::infinity(), most = -least;
    for (const glm::vec4& c : points.colours) {
        least = std::min({least, c.r, c.g, c.b});
        most = std::max({most, c.r, c.g, c.b});
    }
    return {
        {"path", file},
        {"kind", "points"},
        {"points", points.positions.size()},
        {"dropped", points.droppedPoints},
        {"columns", points.columns},
        {"unused", points.unusedColumns},
        {"colours", {{"least", least}, {"most", most}, {"dividedBy", points.hasEightBitColours ? 255 : 1}}},
        {"bounds", box.json()}};
}

using Rows = std::vector<std::pair<std::string, std::string>>;

std::string sizeText(const Json& size) { return size[0].dump() + 'x' + size[1].dump(); }

/// Indented lines, the second column below itself.
std::string table(const Rows& rows) {
    std::size_t widest = 0;
    for (const auto& [name, text] : rows) widest = std::max(widest, columnsOf(printable(name)));
    std::string lines;
    for (const auto& [name, text] : rows)
        lines += "  " +
                 (text.empty() ? printable(name) : padded(printable(name), widest + 2) + printable(text)) +
                 '\n';
    return lines;
}

/// A value in one line, its texts without quotation marks.
std::string plain(const Json& value) {
    if (value.is_string()) return value.get<std::string>();
    if (!value.is_structured()) return value.dump();
    std::string text;
    for (const Json& item : value) text += (text.empty() ? "" : ", ") + plain(item);
    return text;
}

std::pair<std::string, std::string> objectRow(const Json& object) {
    std::string text = plain(object["creator"]);
    if (object.contains("source")) text += '@' + plain(object["source"]);
    if (object.contains("input")) text += ", takes " + plain(object["input"]);
    if (object.contains("parameters"))
        for (const auto& [name, value] : object["parameters"].items())
            text += ", " + name + '=' + shortened(printable(plain(value)), LongestValue);
    if (object.contains("unset")) text += ", without " + plain(object["unset"]);
    return {plain(object["name"]), text};
}

std::pair<std::string, std::string> viewRow(const Json& view) {
    std::string text =
        view.contains("shows") ? "shows " + plain(view["shows"]) : "processes " + plain(view["picture"]);
    if (view.contains("processors")) text += " through " + plain(view["processors"]);
    if (view.contains("size")) text += ", " + sizeText(view["size"]);
    return {plain(view["name"]), text};
}

std::string networkText(const Json& network) {
    std::string text;
    const auto add = [&](const char* list, const char* heading, const auto& rowOf) {
        if (!network.contains(list)) return;
        Rows rows;
        for (const Json& item : network[list]) rows.push_back(rowOf(item));
        text += std::string(heading) + '\n' + table(rows);
    };
    add("objects", "Objects", objectRow);
    add("shared", "Shared parameters", [](const Json& ends) {
        return std::pair{plain(ends), std::string()};
    });
    add("views", "Views", viewRow);
    return text;
}

std::string pictureText(const Json& facts) {
    Rows rows{{"size", sizeText(facts["size"])},
              {"channels", plain(facts["channels"])},
              {"depth", plain(facts["depth"])},
              {"format", plain(facts["format"])},
              {"network", facts["network"] ? "kept; --network prints it" : "none"}};
    for (const char* const name : {"transfer", "alpha", "dataWindow", "displayWindow", "pixelAspect", "color",
                                   "notRead", "unreadChannels", "notes"})
        if (facts.contains(name)) rows.emplace_back(name, plain(facts[name]));
    for (const auto& [name, value] : facts["metadata"].items())
        rows.emplace_back(name, shortened(printable(plain(value)), LongestText));
    return table(rows);
}

/// Counts and bounds of a model or of points.
std::string amountText(const Json& facts) {
    Rows rows;
    for (const auto& [name, value] : facts.items())
        if (value.is_number()) rows.emplace_back(name, plain(value));
    if (facts.contains("columns")) {
        rows.emplace_back("columns", plain(facts["columns"]));
        if (!facts["unused"].empty()) rows.emplace_back("not used", plain(facts["unused"]));
        const Json& colours = facts["colours"];
        const bool isDivided = colours["dividedBy"] != 1;
        rows.emplace_back("colours", plain(colours["least"]) + " to " + plain(colours["most"]) +
                                         (isDivided ? ", divided by " + plain(colours["dividedBy"]) : ""));
    }
    if (const Json& bounds = facts["bounds"]; !bounds.is_null())
        rows.emplace_back("bounds", plain(bounds["least"]) + " to " + plain(bounds["most"]));
    return table(rows);
}

} // namespace

Json factsOf(const std::string& file) {
    if (isNetwork(file)) return factsOfNetwork(file);
    switch (classifyInput(file)) {
    case InputKind::Picture:
        return factsOfPicture(file);
    case InputKind::Model:
        return factsOfModel(file);
    case InputKind::Points:
        return factsOfPoints(file);
    }
    return {};
}

std::string textOf(const Json& facts) {
    const std::string kind = facts["kind"];
    const std::string head = printable(plain(facts["path"])) + ": " + kind + '\n';
    if (kind == "network") return head + networkText(facts["network"]);
    return head + (kind == "picture" ? pictureText(facts) : amountText(facts));
}

std::string networkIn(const std::string& file) {
    if (isNetwork(file)) return textOf(readNetwork(file));
    if (classifyInput(file) == InputKind::Picture) {
        const auto reader = PictureReader::open(file);
        if (const Metadatum* kept = reader->description().find(NetworkName))
            return textOf(networkFromText(kept->text, file));
    }
    throw Failure(Fault::Input, {file,
                                 "holds no network",
                                 "",
                                 "",
                                 "Pictures that \"plime render\" and \"plime process\" write hold one",
                                 {}});
}

} // namespace workbench
