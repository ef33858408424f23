// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/reader/UprightReader.h"

#include "workbench/report/Failure.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

namespace workbench {
namespace {

constexpr int StepRows = 64;
constexpr std::size_t PixelBytes = sizeof(krod::RGBAHalf);

bool isOneOf(int orientation, std::initializer_list<int> all) {
    return std::find(all.begin(), all.end(), orientation) != all.end();
}

/// A file that is gone when it is closed.
Descriptor temporaryFile() {
    const std::filesystem::path folder = std::filesystem::temp_directory_path();
    Descriptor file(::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
    if (file.get() >= 0) return file;
    std::string name = (folder / "plime-turned-XXXXXX").string(); // the file system needs a name
    Descriptor named(::mkostemp(name.data(), O_CLOEXEC));
    if (named.get() >= 0) ::unlink(name.c_str());
    return named;
}

/// The name of the head's entry in all formats.
constexpr std::string_view OrientationName = "Orientation";

} // namespace

UprightReader::UprightReader(std::unique_ptr<PictureReader> stored)
    : PictureReader(stored->path()),
      source(std::move(stored)),
      storedWidth(source->description().width),
      storedHeight(source->description().height),
      isTransposed(source->description().orientation >= 5),
      turnsRows(isOneOf(source->description().orientation, {3, 4, 6, 7})),
      turnsColumns(isOneOf(source->description().orientation, {2, 3, 7, 8})) {
    turnDescription();
}

/// Size, windows, aspect and the head's entry, as they are once the picture is upright.
void UprightReader::turnDescription() {
    about = source->description();
    about.orientation = 1;
    const PixelWindow data{about.dataX, about.dataY, about.width, about.height};
    PixelWindow whole = about.displayWindow.value_or(data);
    std::int64_t x = std::int64_t{data.x} - whole.x, y = std::int64_t{data.y} - whole.y;
    if (turnsColumns) x = std::int64_t{whole.width} - x - data.width;
    if (turnsRows) y = std::int64_t{whole.height} - y - data.height;
    if (isTransposed) {
        std::swap(x, y);
        std::swap(whole.width, whole.height);
        std::swap(about.width, about.height);
        about.pixelAspect = 1 / about.pixelAspect;
    }
    constexpr std::int64_t Far = std::numeric_limits<int>::max() / 2;
    const bool isPlaced = about.displayWindow && std::abs(x) < Far && std::abs(y) < Far;
    about.dataX = isPlaced ? static_cast<int>(x) : 0;
    about.dataY = isPlaced ? static_cast<int>(y) : 0;
    about.displayWindow.reset();
    if (isPlaced) about.displayWindow = {0, 0, whole.width, whole.height};
    about.readerBytes +=
        2 * StepRows * static_cast<std::uint64_t>(std::max(about.width, about.height)) * PixelBytes;
    for (Metadatum& entry : about.metadata) {
        if (entry.name != OrientationName || entry.bytes.empty()) continue;
        entry.bytes.assign(entry.bytes.size(), '\0');
        entry.bytes[0] = 1; // little-endian, whatever its size
        entry.text = "1";
    }
}

void UprightReader::failStoring(int cause) {
    const std::uint64_t bytes =
        static_cast<std::uint64_t>(storedWidth) * static_cast<std::uint64_t>(storedHeight) * PixelBytes;
    throw Failure(Fault::Output, {file.string(),
                                  "is stored on its side and cannot be turned",
                                  "room for a temporary file of " + std::to_string(bytes >> 20U) +
                                      " MiB in " + std::filesystem::temp_directory_path().string(),
                                  std::generic_category().message(cause),
                                  "Name another folder in TMPDIR",
                                  {}});
}

void UprightReader::writeStored(const std::vector<krod::RGBAHalf>& pixels) {
    const auto* bytes = reinterpret_cast<const char*>(pixels.data());
    for (std::size_t left = pixels.size() * PixelBytes; left > 0;) {
        const ssize_t written = ::write(temporary.get(), bytes, left);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) failStoring(errno);
        bytes += written;
        left -= static_cast<std::size_t>(written);
    }
}

void UprightReader::readStored(std::size_t firstPixel, krod::RGBAHalf* out, std::size_t count) {
    auto* bytes = reinterpret_cast<char*>(out);
    auto place = static_cast<off_t>(firstPixel * PixelBytes);
    for (std::size_t left = count * PixelBytes; left > 0;) {
        const ssize_t got = ::pread(temporary.get(), bytes, left, place);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) failStoring(got < 0 ? errno : EIO);
        bytes += got;
        place += got;
        left -= static_cast<std::size_t>(got);
    }
}

/// Transposed pictures are stored in steps of rows, and each step column by column.
void UprightReader::store() {
    temporary = temporaryFile();
    if (temporary.get() < 0) failStoring(errno);
    const auto width = static_cast<std::size_t>(storedWidth);
    std::vector<krod::RGBAHalf> rows, columns;
    for (int first = 0; first < storedHeight; first += StepRows) {
        const int count = std::min(StepRows, storedHeight - first);
        const auto height = static_cast<std::size_t>(count);
        rows.resize(width * height);
        source->readRows(first, count, rows.data());
        if (!isTransposed) {
            writeStored(rows);
            continue;
        }
        columns.resize(rows.size());
        for (std::size_t y = 0; y < height; ++y)
            for (std::size_t x = 0; x < width; ++x) columns[x * height + y] = rows[y * width + x];
        writeStored(columns);
    }
}

void UprightReader::decodeMirrored(int first, int count, krod::RGBAHalf* out) {
    source->readRows(first, count, out);
    for (int row = 0; row < count; ++row, out += storedWidth) {
        std::reverse(out, out + storedWidth);
        countLoss(first + row, source->lossByRow()[static_cast<std::size_t>(row)]);
    }
}

void UprightReader::decodeTurned(int first, int count, krod::RGBAHalf* out) {
    const auto width = static_cast<std::size_t>(storedWidth);
    for (int row = first; row < first + count; ++row, out += width) {
        const auto from = static_cast<std::size_t>(turnsRows ? storedHeight - 1 - row : row);
        readStored(from * width, out, width);
        if (turnsColumns) std::reverse(out, out + width);
    }
}

void UprightReader::decodeTransposed(int first, int count, krod::RGBAHalf* out) {
    const auto width = static_cast<std::size_t>(about.width), rows = static_cast<std::size_t>(count);
    const int left =
        turnsColumns ? storedWidth - first - count : first; // of the stored columns that become rows
    std::vector<krod::RGBAHalf> columns;
    for (int step = 0; step < storedHeight; step += StepRows) {
        const auto height = static_cast<std::size_t>(std::min(StepRows, storedHeight - step));
        columns.resize(rows * height);
        const auto before = static_cast<std::size_t>(step) * static_cast<std::size_t>(storedWidth);
        readStored(before + static_cast<std::size_t>(left) * height, columns.data(), columns.size());
        for (std::size_t row = 0; row < rows; ++row) {
            const krod::RGBAHalf* const from =
                columns.data() + (turnsColumns ? rows - 1 - row : row) * height;
            krod::RGBAHalf* const line = out + row * width;
            const auto start = static_cast<std::size_t>(step);
            if (turnsRows)
                std::reverse_copy(from, from + height, line + width - start - height);
            else
                std::copy_n(from, height, line + start);
        }
    }
}

void UprightReader::decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows*) {
    if (!isTransposed && !turnsRows) return decodeMirrored(first, count, out);
    if (temporary.get() < 0) {
        store();
        countLoss(first, source->loss());
    }
    if (isTransposed)
        decodeTransposed(first, count, out);
    else
        decodeTurned(first, count, out);
}

} // namespace workbench
