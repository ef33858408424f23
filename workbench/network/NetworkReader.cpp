// SPDX-License-Identifier: Apache-2.0
#include "workbench/network/JsonTree.h"
#include "workbench/network/NetworkFile.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <set>
#include <string>
#include <system_error>
#include <unordered_map>

namespace workbench {
namespace {

using Kind = JsonTree::Kind;

/// U+061C, U+200E, U+200F, U+202A to U+202E, U+2066 to U+2069.
constexpr std::array Directions = {"\xd8\x9c",     "\xe2\x80\x8e", "\xe2\x80\x8f", "\xe2\x80\xaa",
                                   "\xe2\x80\xab", "\xe2\x80\xac", "\xe2\x80\xad", "\xe2\x80\xae",
                                   "\xe2\x81\xa6", "\xe2\x81\xa7", "\xe2\x81\xa8", "\xe2\x81\xa9"};

/// Reads the tree of one text; every mistake is said with its line.
class Reader {
public:
    explicit Reader(const std::string& who) : who(who) {}

    Network read(const JsonTree& root) {
        requireKind(root, Kind::Object, "a network");
        allowMembers(root, {"version", "objects", "shared", "views"});
        requireVersion(root);
        Network network;
        for (const JsonTree& item : list(root, "objects")) network.objects.push_back(object(item));
        if (network.objects.size() > NetworkLimits::Objects)
            refuse(root, "has too many objects", std::to_string(NetworkLimits::Objects),
                   std::to_string(network.objects.size()));
        for (const JsonTree& item : list(root, "shared")) network.shared.push_back(sharing(item));
        for (const JsonTree& item : list(root, "views")) network.views.push_back(view(item));
        requireFewLinks(network, root);
        return network;
    }

private:
    [[noreturn]] void refuse(const JsonTree& at, const std::string& what, const std::string& expected = "",
                             const std::string& got = "", const std::string& advice = "") const {
        refuseNetwork(who, {at.line}, what, expected, got, advice);
    }

    void requireFewLinks(const Network& network, const JsonTree& root) const {
        std::size_t links = 0;
        for (const NetworkObject& object : network.objects) links += object.input.empty() ? 0 : 1;
        for (const NetworkSharing& sharing : network.shared) links += sharing.ends.size();
        for (const NetworkView& view : network.views) links += 1 + view.processors.size();
        if (links > NetworkLimits::Links)
            refuse(root, "refers to objects too often",
                   "at most " + std::to_string(NetworkLimits::Links) + " times", std::to_string(links));
    }

    void requireKind(const JsonTree& value, Kind kind, const std::string& what) const {
        static constexpr const char* Names[] = {"null",   "true or false", "a number",
                                                "a text", "a list",        "an object"};
        if (value.kind != kind)
            refuse(value, what + " is of the wrong kind", Names[static_cast<int>(kind)], value.shown());
    }

    void allowMembers(const JsonTree& value, const std::vector<std::string>& known) const {
        for (const auto& [name, member] : value.members)
            if (std::ranges::find(known, name) == known.end()) {
                std::string names;
                for (const std::string& k : known) names += (names.empty() ? "" : ", ") + k;
                refuse(member, '"' + name + "\" is not known here", names);
            }
    }

    void requireVersion(const JsonTree& root) const {
        const JsonTree* version = root.member("version");
        if (!version) refuse(root, "says no version", "\"version\": " + std::to_string(Network::Version));
        if (version->kind != Kind::Number || version->number != Network::Version)
            refuse(*version, "is of a version that this program does not read",
                   std::to_string(Network::Version), version->shown());
    }

    [[nodiscard]] const std::vector<JsonTree>& list(const JsonTree& from, const std::string& name) const {
        static const std::vector<JsonTree> nothing;
        const JsonTree* value = from.member(name);
        if (!value) return nothing;
        requireKind(*value, Kind::List, '"' + name + '"');
        return value->items;
    }

    [[nodiscard]] std::string text(const JsonTree& from, const std::string& name) const {
        const JsonTree* value = from.member(name);
        if (!value) return "";
        requireKind(*value, Kind::Text, '"' + name + '"');
        return value->text;
    }

    [[nodiscard]] std::vector<std::string> texts(const JsonTree& from, const std::string& name) const {
        std::vector<std::string> all;
        for (const JsonTree& item : list(from, name)) {
            requireKind(item, Kind::Text, "an item of \"" + name + '"');
            all.push_back(item.text);
        }
        return all;
    }

    /// A list of N numbers.
    template <std::size_t N>
    [[nodiscard]] std::optional<std::array<double, N>> numbers(const JsonTree& from,
                                                               const std::string& name) const {
        const JsonTree* value = from.member(name);
        if (!value) return {};
        requireKind(*value, Kind::List, '"' + name + '"');
        std::array<double, N> all{};
        if (value->items.size() != N)
            refuse(*value, '"' + name + "\" has the wrong length", std::to_string(N) + " numbers",
                   std::to_string(value->items.size()));
        for (std::size_t i = 0; i < N; ++i) {
            requireKind(value->items[i], Kind::Number, "an item of \"" + name + '"');
            all[i] = value->items[i].number;
        }
        return all;
    }

    [[nodiscard]] int wholeNumber(const JsonTree& at, double value, int least, int most,
                                  const std::string& name) const {
        if (value < least || value > most || value != std::floor(value))
            refuse(at, '"' + name + "\" is out of range",
                   "whole numbers from " + std::to_string(least) + " to " + std::to_string(most));
        return static_cast<int>(value);
    }

    /// The name of an object or a view: what people type before a point.
    [[nodiscard]] std::string nameOf(const JsonTree& from) const {
        const std::string name = text(from, "name");
        if (name.empty() || name.find_first_of(".=\n\r\t\f\v") != std::string::npos)
            refuse(from, "holds something without a usable \"name\"",
                   "a text without points, equals signs and line ends",
                   from.member("name") ? from.member("name")->shown() : "\"\"");
        if (std::ranges::any_of(Directions,
                                [&](const char* mark) { return name.find(mark) != std::string::npos; }))
            refuse(
                from,
                "holds a \"name\" with marks that turn the direction of writing, so that it reads as another",
                "a text without them");
        return name;
    }

    /// A text, or what people write by hand instead: a number, whose digits count, or a truth value.
    [[nodiscard]] std::string parameterText(const JsonTree& value, const std::string& who) const {
        if (value.kind == Kind::Truth) return value.truth ? "true" : "false";
        if (value.kind != Kind::Number) requireKind(value, Kind::Text, who);
        return value.text;
    }

    [[nodiscard]] NetworkObject object(const JsonTree& from) const {
        requireKind(from, Kind::Object, "an item of \"objects\"");
        allowMembers(from, {"name", "creator", "source", "input", "parameters", "unset"});
        NetworkObject made{nameOf(from), text(from, "creator"), text(from, "source"), text(from, "input"),
                           {},           texts(from, "unset"),  {from.line}};
        if (made.creator.empty())
            refuse(from, made.name + " has no creator", "\"creator\": \"CATEGORY/NAME\"");
        if (const JsonTree* parameters = from.member("parameters")) {
            requireKind(*parameters, Kind::Object, "\"parameters\" of " + made.name);
            for (const auto& [name, value] : parameters->members) {
                made.parameters.push_back({name, parameterText(value, made.name + '.' + name), {value.line}});
            }
        }
        return made;
    }

    [[nodiscard]] NetworkSharing sharing(const JsonTree& from) const {
        requireKind(from, Kind::List, "an item of \"shared\"");
        NetworkSharing made{{}, {from.line}};
        for (const JsonTree& item : from.items) {
            requireKind(item, Kind::Text, "an item of a list in \"shared\"");
            const std::size_t point = item.text.find('.');
            if (point == std::string::npos || point == 0 || point + 1 == item.text.size())
                refuse(item, "shares what is no parameter", "OBJECT.PARAMETER", item.shown());
            made.ends.push_back({item.text.substr(0, point), item.text.substr(point + 1)});
        }
        if (made.ends.size() < 2) refuse(from, "shares a value between less than two parameters");
        return made;
    }

    [[nodiscard]] NetworkView view(const JsonTree& from) const {
        requireKind(from, Kind::Object, "an item of \"views\"");
        allowMembers(from, {"name", "shows", "picture", "processors", "size", "camera", "background", "tiles",
                            "processorTiles", "depth", "srgb", "clipNegative"});
        NetworkView made;
        made.name = nameOf(from);
        made.shows = text(from, "shows");
        made.picture = text(from, "picture");
        made.processors = texts(from, "processors");
        made.place = {from.line};
        if (made.shows.empty() == made.picture.empty())
            refuse(from, "the view " + made.name + " shows nothing or two things",
                   "either \"shows\", an object, or \"picture\", a file");
        if (const auto size = numbers<2>(from, "size")) {
            const JsonTree& at = *from.member("size");
            made.size = {wholeNumber(at, (*size)[0], 1, LargestSide, "size"),
                         wholeNumber(at, (*size)[1], 1, LargestSide, "size")};
        }
        made.background = numbers<4>(from, "background");
        made.camera = camera(from);
        made.tiles = tiles(from, "tiles");
        made.processorTiles = tiles(from, "processorTiles");
        if (made.processorTiles && !made.picture.empty())
            refuse(*from.member("processorTiles"),
                   "the view " + made.name + " processes a picture file, whose tiles are just \"tiles\"");
        made.depth = depth(from);
        made.srgb = truth(from, "srgb");
        made.clipNegative = truth(from, "clipNegative");
        return made;
    }

    [[nodiscard]] bool truth(const JsonTree& from, const std::string& name) const {
        const JsonTree* const member = from.member(name);
        if (!member) return false;
        requireKind(*member, Kind::Truth, '"' + name + '"');
        return member->truth;
    }

    [[nodiscard]] std::optional<PixelDepth> depth(const JsonTree& view) const {
        const JsonTree* from = view.member("depth");
        if (!from) return {};
        requireKind(*from, Kind::Text, "\"depth\"");
        const auto depth = depthFromName(from->text);
        if (!depth) refuse(*from, "holds an unknown depth", "half, float, uint8 or uint16", from->shown());
        return depth;
    }

    [[nodiscard]] std::optional<NetworkView::Camera> camera(const JsonTree& view) const {
        const JsonTree* from = view.member("camera");
        if (!from) return {};
        requireKind(*from, Kind::Object, "\"camera\"");
        allowMembers(*from, {"eye", "target", "up", "fieldOfView"});
        const auto eye = numbers<3>(*from, "eye"), target = numbers<3>(*from, "target"),
                   up = numbers<3>(*from, "up");
        const JsonTree* angle = from->member("fieldOfView");
        if (!eye || !target || !up || !angle)
            refuse(*from, "holds a camera that is not complete", "eye, target, up and fieldOfView");
        requireKind(*angle, Kind::Number, "\"fieldOfView\"");
        return NetworkView::Camera{*eye, *target, *up, angle->number};
    }

    [[nodiscard]] std::optional<NetworkView::Tiles> tiles(const JsonTree& view,
                                                          const std::string& name) const {
        const JsonTree* from = view.member(name);
        if (!from) return {};
        requireKind(*from, Kind::Object, '"' + name + '"');
        allowMembers(*from, {"size", "overlap"});
        const auto size = numbers<2>(*from, "size");
        if (!size) refuse(*from, "holds tiles without a size", "\"size\": [WIDTH, HEIGHT]");
        NetworkView::Tiles made{wholeNumber(*from, (*size)[0], 1, LargestSide, "size"),
                                wholeNumber(*from, (*size)[1], 1, LargestSide, "size"), 0};
        if (const JsonTree* overlap = from->member("overlap")) {
            requireKind(*overlap, Kind::Number, "\"overlap\"");
            made.overlap = wholeNumber(*overlap, overlap->number, 0, LargestSide, "overlap");
        }
        return made;
    }

    const std::string& who;
};

/// Looks whether names are given once and refer to what is there, without a cycle.
class Consistency {
public:
    Consistency(const Network& network, const std::string& who) : network(network), who(who) {}

    void check() {
        for (const NetworkObject& object : network.objects)
            if (!byName.emplace(object.name, &object).second)
                refuseNetwork(who, object.place, "two objects are called " + object.name);
        for (const NetworkObject& object : network.objects)
            if (!object.input.empty()) require(object.input, object.place, object.name + " takes");
        for (const NetworkObject& object : network.objects) requireNoCycle(object);
        std::set<std::string> shared;
        for (const NetworkSharing& sharing : network.shared)
            for (const auto& [object, parameter] : sharing.ends) {
                require(object, sharing.place, "a value is shared with");
                if (!shared.insert(object + '.' + parameter).second)
                    refuseNetwork(who, sharing.place, object + '.' + parameter + " is shared twice",
                                  "each parameter once in \"shared\"");
            }
        std::set<std::string> views;
        for (const NetworkView& view : network.views) {
            if (!views.insert(view.name).second)
                refuseNetwork(who, view.place, "two views are called " + view.name);
            if (!view.shows.empty()) require(view.shows, view.place, "the view " + view.name + " shows");
            for (const std::string& processor : view.processors)
                require(processor, view.place, "the view " + view.name + " uses");
        }
    }

private:
    void require(const std::string& name, NetworkPlace place, const std::string& sentence) const {
        if (!byName.contains(name))
            refuseNetwork(who, place, sentence + " the object \"" + name + "\", which is not there");
    }

    /// Follows the inputs of an object; neither a circle nor a row beyond the limit is allowed. Every object is
    /// followed once.
    void requireNoCycle(const NetworkObject& from) {
        std::vector<const NetworkObject*> path;
        std::set<const NetworkObject*> onPath;
        const NetworkObject* at = &from;
        for (; at && !lengths.contains(at); at = at->input.empty() ? nullptr : byName.at(at->input)) {
            if (!onPath.insert(at).second) {
                std::string text;
                for (auto step = std::ranges::find(path, at); step != path.end(); ++step)
                    text += (*step)->name + " → ";
                refuseNetwork(who, at->place, "objects take each other in a circle", "",
                              shortened(text) + at->name);
            }
            path.push_back(at);
        }
        std::size_t length = at ? lengths.at(at) : 0;
        for (auto step = path.rbegin(); step != path.rend(); ++step) {
            if (++length > NetworkLimits::Row)
                refuseNetwork(who, (*step)->place, "objects take each other in a row that is too deep",
                              "at most " + std::to_string(NetworkLimits::Row) + " objects");
            lengths.emplace(*step, length);
        }
    }

    static std::string shortened(const std::string& text) {
        return text.size() <= 200 ? text : text.substr(0, 200) + "… → ";
    }

    const Network& network;
    const std::string& who;
    std::unordered_map<std::string, const NetworkObject*> byName;
    std::unordered_map<const NetworkObject*, std::size_t> lengths; ///< of the rows that end there
};

std::string bytesOf(const std::filesystem::path& file) {
    const auto refuse = [&](const std::string& why) {
        throw Failure(Fault::Input, {file.string(), "cannot be read: " + why, "", "", "", {}});
    };
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (!std::filesystem::exists(status)) refuse("there is no such file");
    if (!std::filesystem::is_regular_file(status)) refuse("it is no regular file");
    const auto size = std::filesystem::file_size(file, error);
    if (error) refuse(error.message());
    if (size > NetworkLimits::Bytes)
        throw Failure(Fault::Network, {file.string(),
                                       "is too large for a network",
                                       "at most " + std::to_string(NetworkLimits::Bytes) + " bytes",
                                       std::to_string(size),
                                       "",
                                       {}});
    std::string bytes(static_cast<std::size_t>(size), '\0');
    std::ifstream in(file, std::ios::binary);
    if (!in.read(bytes.data(), static_cast<std::streamsize>(size))) refuse(std::strerror(errno));
    return bytes;
}

/// One line of reasonable length: names may hold line ends, and be as long as a whole file.
std::string readable(const std::string& text) {
    constexpr std::size_t Most = 1000;
    constexpr std::string_view White = "\n\r\t\f\v";
    std::string line;
    for (const char c : text) {
        const bool beginsLetter = (static_cast<unsigned char>(c) & 0xc0U) != 0x80U;
        if (line.size() >= Most && beginsLetter) return line + "…";
        line += White.find(c) == std::string_view::npos ? c : ' ';
    }
    return line;
}

} // namespace

void refuseNetwork(const std::string& who, NetworkPlace place, const std::string& what,
                   const std::string& expected, const std::string& got, const std::string& advice) {
    const std::string where = place.line > 0 ? who + ", line " + std::to_string(place.line) : who;
    throw Failure(Fault::Network,
                  {where, readable(what), readable(expected), readable(got), readable(advice), {}});
}

Network networkFromText(std::string_view text, const std::string& who) {
    if (text.size() > NetworkLimits::Bytes)
        refuseNetwork(who, {}, "is too large for a network",
                      "at most " + std::to_string(NetworkLimits::Bytes) + " bytes",
                      std::to_string(text.size()));
    Network network = Reader(who).read(parseJson(text, who));
    Consistency(network, who).check();
    return network;
}

Network readNetwork(const std::filesystem::path& file) {
    return networkFromText(bytesOf(file), file.string());
}

} // namespace workbench
