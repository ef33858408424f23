// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/reader/PictureMessages.h"

#include "host/rendering/RGBAHalf.h"
#include "workbench/files/PixelConversion.h"

#include <bit>
#include <limits>
#include <utility>

namespace workbench {
namespace {

void pack(ParcelWriter& parcel, const std::vector<std::string>& texts) {
    parcel.number(texts.size());
    for (const std::string& text : texts) parcel.text(text);
}

/// A text takes its length at least.
constexpr std::size_t LeastText = sizeof(std::uint64_t);
/// No picture that is allowed needs as much.
constexpr std::uint64_t MostReaderBytes = std::uint64_t{1} << 50;

std::vector<std::string> texts(ParcelReader& parcel) {
    std::vector<std::string> all;
    for (std::uint64_t left = parcel.count(LeastText); left > 0; --left) all.push_back(parcel.text());
    return all;
}

/// A window whose far edges are numbers as well.
PixelWindow window(ParcelReader& parcel) {
    PixelWindow read;
    read.x = parcel.integer();
    read.y = parcel.integer();
    read.width = parcel.integer();
    read.height = parcel.integer();
    constexpr std::int64_t Most = std::numeric_limits<int>::max();
    if (std::int64_t{read.x} + read.width > Most || std::int64_t{read.y} + read.height > Most)
        throw BrokenParcel();
    return read;
}

void pack(ParcelWriter& parcel, const PixelWindow& window) {
    parcel.integer(window.x).integer(window.y).integer(window.width).integer(window.height);
}

} // namespace

SlotLayout::SlotLayout(const PictureDescription& about, int rows) {
    const std::size_t values = static_cast<std::size_t>(about.width) * static_cast<std::size_t>(rows);
    lossesAt = values * sizeof(krod::RGBAHalf);
    all = lossesAt + static_cast<std::size_t>(rows) * sizeof(ValueLoss);
    for (const ExtraChannel& channel : about.extraChannels) {
        planesAt.push_back(all);
        all += values * channel.bytesPerValue();
    }
    constexpr std::size_t Line = 64; // slots begin at full lines of the processor's cache
    all = (all + Line - 1) / Line * Line;
}

std::string packed(const OpenRequest& request) {
    return ParcelWriter()
        .text(request.folder)
        .text(request.path)
        .number(request.needsCodec)
        .number(request.memory)
        .integer(request.seconds)
        .number(request.linear)
        .bytes();
}

OpenRequest openRequestIn(std::string_view bytes) {
    ParcelReader parcel(bytes);
    OpenRequest request;
    request.folder = parcel.text();
    request.path = parcel.text();
    request.needsCodec = parcel.flag();
    request.memory = parcel.number();
    request.seconds = parcel.integer(0);
    request.linear = parcel.flag();
    parcel.end();
    return request;
}

std::string packed(const RowsRequest& request) {
    return ParcelWriter()
        .number(request.slot)
        .integer(request.first)
        .integer(request.count)
        .number(request.withExtra)
        .bytes();
}

RowsRequest rowsRequestIn(std::string_view bytes) {
    ParcelReader parcel(bytes);
    RowsRequest request;
    request.slot = parcel.number();
    request.first = parcel.integer(0);
    request.count = parcel.integer(1);
    request.withExtra = parcel.flag();
    parcel.end();
    return request;
}

std::string packed(const RowMemory& memory) {
    return ParcelWriter().integer(memory.id).number(memory.slots).integer(memory.rowsPerSlot).bytes();
}

RowMemory rowMemoryIn(std::string_view bytes) {
    ParcelReader parcel(bytes);
    RowMemory memory;
    memory.id = parcel.integer(0);
    memory.slots = parcel.number();
    memory.rowsPerSlot = parcel.integer(1);
    parcel.end();
    return memory;
}

std::string packed(const PictureDescription& about) {
    ParcelWriter parcel;
    parcel.text(about.format);
    parcel.number(static_cast<std::uint64_t>(about.depth)).number(about.hasAlpha).number(about.isGrey);
    parcel.number(about.alphaIsAssociated).number(static_cast<std::uint64_t>(about.transfer));
    parcel.number(about.isLossy).integer(about.orientation);
    parcel.number(std::bit_cast<std::uint32_t>(about.pixelAspect));
    parcel.integer(about.furtherPictures).text(about.furtherPicturesAre).text(about.layer);
    pack(parcel, PixelWindow{about.dataX, about.dataY, about.width, about.height});
    parcel.number(about.displayWindow.has_value());
    if (about.displayWindow) pack(parcel, *about.displayWindow);
    for (const std::string& name : about.channelNames) parcel.text(name);
    parcel.number(about.extraChannels.size());
    for (const ExtraChannel& channel : about.extraChannels)
        parcel.text(channel.name).number(static_cast<std::uint64_t>(channel.type));
    pack(parcel, about.unreadChannels);
    pack(parcel, about.notes);
    parcel.number(about.readerBytes);
    parcel.number(about.metadata.size());
    for (const Metadatum& entry : about.metadata)
        parcel.text(entry.name).text(entry.type).text(entry.text).text(entry.bytes);
    return parcel.bytes();
}

PictureDescription descriptionIn(std::string_view bytes) {
    ParcelReader parcel(bytes);
    PictureDescription about;
    about.format = parcel.text();
    about.depth = static_cast<PixelDepth>(parcel.number(static_cast<std::uint64_t>(PixelDepth::Float)));
    about.hasAlpha = parcel.flag();
    about.isGrey = parcel.flag();
    about.alphaIsAssociated = parcel.flag();
    about.transfer = static_cast<Transfer>(parcel.number(static_cast<std::uint64_t>(Transfer::Srgb)));
    about.isLossy = parcel.flag();
    about.orientation = parcel.integer(1, 8);
    about.pixelAspect = std::bit_cast<float>(static_cast<std::uint32_t>(parcel.number(0xffffffffu)));
    if (!(about.pixelAspect > 0 && about.pixelAspect <= std::numeric_limits<float>::max()))
        throw BrokenParcel();
    about.furtherPictures = parcel.integer(0);
    about.furtherPicturesAre = parcel.text();
    about.layer = parcel.text();
    const PixelWindow data = window(parcel);
    about.dataX = data.x;
    about.dataY = data.y;
    about.width = data.width;
    about.height = data.height;
    if (parcel.flag()) about.displayWindow = window(parcel);
    if (about.displayWindow && (about.displayWindow->width < 1 || about.displayWindow->height < 1))
        throw BrokenParcel();
    for (std::string& name : about.channelNames) name = parcel.text();
    for (std::uint64_t left = parcel.count(LeastText); left > 0; --left) {
        std::string name = parcel.text();
        constexpr auto Last = static_cast<std::uint64_t>(ExtraType::UInt);
        about.extraChannels.push_back({std::move(name), static_cast<ExtraType>(parcel.number(Last))});
    }
    about.unreadChannels = texts(parcel);
    about.notes = texts(parcel);
    about.readerBytes = parcel.number(MostReaderBytes);
    for (std::uint64_t left = parcel.count(4 * LeastText); left > 0; --left) {
        Metadatum entry;
        for (std::string Metadatum::*part :
             {&Metadatum::name, &Metadatum::type, &Metadatum::text, &Metadatum::bytes})
            entry.*part = parcel.text();
        about.metadata.push_back(std::move(entry));
    }
    parcel.end();
    return about;
}

std::string packed(const Failure& failure) {
    const Diagnostic& message = failure.diagnostic();
    ParcelWriter parcel;
    parcel.number(failure.fault() == Fault::Output);
    for (const std::string* part :
         {&message.who, &message.what, &message.expected, &message.got, &message.advice})
        parcel.text(*part);
    pack(parcel, message.details);
    return parcel.bytes();
}

Failure failureIn(std::string_view bytes) {
    ParcelReader parcel(bytes);
    const Fault fault = parcel.flag() ? Fault::Output : Fault::Input;
    Diagnostic message;
    for (std::string Diagnostic::*part :
         {&Diagnostic::who, &Diagnostic::what, &Diagnostic::expected, &Diagnostic::got, &Diagnostic::advice})
        message.*part = parcel.text();
    message.details = texts(parcel);
    parcel.end();
    return {fault, std::move(message)};
}

} // namespace workbench
