// SPDX-License-Identifier: Apache-2.0
// What the tests of files share: a folder of their own, and failures as values.
#pragma once

#include "workbench/files/Picture.h"
#include "workbench/report/Failure.h"

#include <gtest/gtest.h>

#include <bit>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include <stdlib.h>

/// A test with an empty folder, removed afterwards.
class FilesTest : public testing::Test {
protected:
    FilesTest() {
        std::string pattern = (std::filesystem::temp_directory_path() / "files-test-XXXXXX").string();
        folder = ::mkdtemp(pattern.data());
    }
    ~FilesTest() override {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    std::filesystem::path write(const std::string& name, const std::string& bytes) const {
        std::ofstream(folder / name, std::ios::binary) << bytes;
        return folder / name;
    }
    static std::string read(const std::filesystem::path& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    /// How many files lie in the folder, hidden ones too.
    [[nodiscard]] std::ptrdiff_t filesInFolder() const {
        return std::distance(std::filesystem::directory_iterator(folder),
                             std::filesystem::directory_iterator());
    }

    std::filesystem::path folder;
};

/// The failure that `work` ends with; a test failure when there is none.
template <typename Work>
workbench::Failure failureOf(Work work) {
    try {
        static_cast<void>(work());
    } catch (const workbench::Failure& failure) {
        return failure;
    }
    ADD_FAILURE() << "no failure was thrown";
    return {workbench::Fault::Partial, {}};
}

/// The sentence of the failure, which must be of that fault.
template <typename Work>
std::string sentenceOf(workbench::Fault fault, Work work) {
    const workbench::Failure failure = failureOf(work);
    EXPECT_EQ(failure.fault(), fault) << failure.what();
    return failure.what();
}

/// Expects that a text holds another.
inline void expectHas(const std::string& text, const std::string& part) {
    EXPECT_NE(text.find(part), std::string::npos) << "\"" << part << "\" is not in \"" << text << "\"";
}

/// The path of a file from an installed package; a test failure that names the package when it is missing.
inline std::filesystem::path packaged(const std::string& path, const std::string& package) {
    EXPECT_TRUE(std::filesystem::exists(path)) << "this test needs the package " << package;
    return path;
}

inline std::uint16_t bitsOf(half_float::half value) { return std::bit_cast<std::uint16_t>(value); }

inline krod::RGBAHalf pixel(float r, float g, float b, float a = 1) {
    return {half_float::half(r), half_float::half(g), half_float::half(b), half_float::half(a)};
}

/// A pixel whose four halves have these bits.
inline krod::RGBAHalf pixelOfBits(std::uint16_t r, std::uint16_t g, std::uint16_t b, std::uint16_t a) {
    const auto half = [](std::uint16_t bits) { return std::bit_cast<half_float::half>(bits); };
    return {half(r), half(g), half(b), half(a)};
}

/// A picture in which every value differs a little from its neighbours, between 0 and 1.
inline workbench::Picture gradient(int width, int height, bool alpha = true) {
    workbench::Picture picture;
    picture.description.width = width;
    picture.description.height = height;
    picture.description.hasAlpha = alpha;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const float across = static_cast<float>(x) / static_cast<float>(width);
            const float down = static_cast<float>(y) / static_cast<float>(height);
            picture.pixels.push_back(pixel(across, down, (across + down) / 2, alpha ? 1 - across * down : 1));
        }
    return picture;
}

/// The same as EXR means it: colors are multiplied by alpha already.
inline workbench::Picture associatedGradient(int width, int height) {
    workbench::Picture picture = gradient(width, height);
    picture.description.alphaIsAssociated = true;
    return picture;
}

/// Expects the same bits in every pixel.
inline void expectSameBits(const std::vector<krod::RGBAHalf>& got,
                           const std::vector<krod::RGBAHalf>& expected) {
    ASSERT_EQ(got.size(), expected.size());
    for (std::size_t i = 0; i < got.size(); ++i) {
        const auto all = [](const krod::RGBAHalf& p) { return std::bit_cast<std::uint64_t>(p); };
        ASSERT_EQ(all(got[i]), all(expected[i])) << "pixel " << i;
    }
}

/// Expects values that differ by no more than `margin`.
inline void expectNear(const std::vector<krod::RGBAHalf>& got, const std::vector<krod::RGBAHalf>& expected,
                       float margin) {
    ASSERT_EQ(got.size(), expected.size());
    for (std::size_t i = 0; i < got.size(); ++i) {
        ASSERT_NEAR(got[i].r, expected[i].r, margin) << "pixel " << i;
        ASSERT_NEAR(got[i].g, expected[i].g, margin) << "pixel " << i;
        ASSERT_NEAR(got[i].b, expected[i].b, margin) << "pixel " << i;
        ASSERT_NEAR(got[i].a, expected[i].a, margin) << "pixel " << i;
    }
}
