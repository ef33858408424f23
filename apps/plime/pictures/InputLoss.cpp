// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/InputLoss.h"

#include "host/values/VValueTrait.h"

#include <algorithm>

namespace workbench {
namespace {

std::string numberText(float value) { return krod::VValueTrait<double>::Text(static_cast<double>(value)); }

/// "5 channels (Z, id, …)".
std::string channelsText(const std::vector<std::string>& names) {
    constexpr std::size_t MostNames = 8;
    std::string text;
    for (std::size_t i = 0; i < names.size() && i < MostNames; ++i) text += (i > 0 ? ", " : "") + names[i];
    if (names.size() > MostNames) text += ", …";
    return std::to_string(names.size()) + (names.size() == 1 ? " channel (" : " channels (") + text + ")";
}

Diagnostic sentence(const std::string& input, std::string what, std::string advice = "") {
    return {input, std::move(what), "", "", std::move(advice), {}};
}

} // namespace

std::optional<std::string> colorSource(const PictureDescription& picture) {
    const auto& names = picture.channelNames;
    const auto own = [&](std::size_t i) { return names[i].substr(names[i].rfind('.') + 1); };
    if (own(0) == "X") return names[0] + ", " + names[1] + ", " + names[2] + " as red, green, blue";
    if (own(0) == "U") return names[0] + ", " + names[1] + " as red, green";
    if (!picture.layer.empty()) return "the layer " + picture.layer;
    return std::nullopt;
}

void tellOfInput(Report& report, const std::string& input, const PictureDescription& picture, bool srgb) {
    if (picture.furtherPictures > 0)
        report.warning(sentence(input, "only the first of " + std::to_string(picture.furtherPictures + 1) +
                                           ' ' + picture.furtherPicturesAre + " is read"));
    if (!picture.unreadChannels.empty())
        report.warning(sentence(input, channelsText(picture.unreadChannels) + " left out"));
    if (const auto source = colorSource(picture)) report.note(sentence(input, *source + " taken"));
    for (const std::string& mended : picture.notes) report.note(sentence(input, mended));
    const bool isEncoded = picture.transfer == Transfer::Unknown && picture.find("ICCProfile");
    if (srgb && isEncoded)
        report.warning(sentence(input,
                                "its color profile is not sRGB and is not undone, so --srgb encodes it again",
                                "Convert it to sRGB first, or leave out --srgb"));
}

void tellOfValueLoss(Report& report, const std::string& input, const ValueLoss& loss, PixelDepth stored,
                     PixelDepth written) {
    if (loss.overflows > 0)
        report.warning(sentence(input, std::to_string(loss.overflows) +
                                           " values are too large for a half, the largest " +
                                           numberText(loss.largest) + ", and became 65504"));
    const bool keepsMore = written == PixelDepth::UInt16 || written == PixelDepth::Float;
    const float scale = stored == PixelDepth::Float ? std::min(loss.largest, 65504.0F) : 1;
    constexpr float HalfStepOf12Bits = 1.0F / 8192;
    if (keepsMore && loss.rounding > scale * HalfStepOf12Bits)
        report.warning(sentence(input, "its values were rounded by up to " + numberText(loss.rounding) +
                                           ", because modules work on halves, which have 11 bits"));
}

void tellOfChangedAlpha(Report& report, const std::string& output) {
    report.note(sentence(output,
                         "the modules changed alpha, which is no coverage then, so colors were neither "
                         "multiplied by it nor divided"));
}

void tellOfNegatives(Report& report, const std::string& input, std::uint64_t count, std::uint64_t pixels) {
    if (count == 0) return;
    const Diagnostic message =
        sentence(input,
                 std::to_string(count) + " pixels became no numbers because they have values below 0, as a "
                                         "power makes of them",
                 "--clip-negative makes values below 0 to 0 before the modules");
    constexpr std::uint64_t Noticeable = 1000; // one of so many pixels
    if (count > pixels / Noticeable)
        report.warning(message);
    else
        report.note(message);
}

} // namespace workbench
