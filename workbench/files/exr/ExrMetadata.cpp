// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/exr/ExrMetadata.h"

#include <OpenEXR/ImfIO.h>
#include <OpenEXR/ImfOpaqueAttribute.h>
#include <OpenEXR/ImfStringAttribute.h>
#include <OpenEXR/ImfVersion.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

namespace workbench {
namespace {

/// Longest name of an attribute in the file format.
constexpr std::size_t LongestName = 255;

/// Collects what an attribute writes about itself.
class BytesOut : public Imf::OStream {
public:
    BytesOut() : OStream("attribute") {}
    void write(const char c[], int n) override { bytes.append(c, static_cast<std::size_t>(n)); }
    uint64_t tellp() override { return bytes.size(); }
    void seekp(uint64_t) override {}
    std::string bytes;
};

/// Gives it back to an attribute.
class BytesIn : public Imf::IStream {
public:
    explicit BytesIn(const std::string& source) : IStream("attribute"), bytes(source) {}
    bool read(char c[], int n) override {
        const auto count = static_cast<std::size_t>(n);
        if (count > bytes.size() - at) throw Iex::InputExc("attribute value too short");
        std::memcpy(c, bytes.data() + at, count);
        at += count;
        return at < bytes.size();
    }
    uint64_t tellg() override { return at; }
    void seekg(uint64_t position) override { at = std::min<std::size_t>(position, bytes.size()); }

private:
    const std::string& bytes;
    std::size_t at = 0;
};

/// These follow from the pixels that are written, or would contradict them.
bool isStructural(std::string_view name) {
    constexpr std::string_view Names[] = {"channels", "dataWindow", "displayWindow", "lineOrder", "tiles",
                                          "type",     "chunkCount", "version",       "preview"};
    return std::find(std::begin(Names), std::end(Names), name) != std::end(Names);
}

std::unique_ptr<Imf::Attribute> attributeOf(const Metadatum& entry) {
    if (entry.type == "string") return std::make_unique<Imf::StringAttribute>(entry.text);
    std::unique_ptr<Imf::Attribute> attribute;
    if (Imf::Attribute::knownType(entry.type.c_str()))
        attribute.reset(Imf::Attribute::newAttribute(entry.type.c_str()));
    else
        attribute = std::make_unique<Imf::OpaqueAttribute>(entry.type.c_str());
    BytesIn in(entry.bytes);
    attribute->readValueFrom(in, static_cast<int>(entry.bytes.size()), Imf::EXR_VERSION);
    return attribute;
}

} // namespace

std::vector<Metadatum> metadataOf(const Imf::Header& header) {
    std::vector<Metadatum> metadata;
    for (auto it = header.begin(); it != header.end(); ++it) {
        if (isStructural(it.name())) continue;
        Metadatum entry{it.name(), it.attribute().typeName(), "", ""};
        BytesOut out;
        it.attribute().writeValueTo(out, Imf::EXR_VERSION);
        entry.bytes = std::move(out.bytes);
        if (entry.type == "string")
            entry.text = std::exchange(entry.bytes, {});
        else
            entry.text = metadataText(entry.type, entry.bytes);
        metadata.push_back(std::move(entry));
    }
    return metadata;
}

void enterMetadata(const std::vector<Metadatum>& metadata, Imf::Header& header,
                   std::vector<std::string>& dropped) {
    for (const auto& entry : metadata) {
        if (isStructural(entry.name)) continue;
        const auto old = header.find(entry.name);
        const bool clashes = old != header.end() && entry.type != old.attribute().typeName();
        if (clashes && entry.name == "compression")
            continue; // another format's word for its own way of packing
        const bool nameFits = !entry.name.empty() && entry.name.size() <= LongestName;
        try {
            if (!clashes && nameFits) {
                header.insert(entry.name, *attributeOf(entry));
                continue;
            }
        } catch (const Iex::BaseExc&) { // a value that does not fit its type is as little use as a clash
        }
        dropped.push_back(entry.name);
    }
}

} // namespace workbench
