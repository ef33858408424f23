// SPDX-License-Identifier: Apache-2.0
// Codec libraries that are not where they should be; in a child, since an opened library stays open.
#include "FilesTest.h"

#include "workbench/files/Model.h"

#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

using namespace workbench;

namespace {

class CodecTest : public FilesTest {
protected:
    /// What the work fails with in a fresh state of the library, as the whole text of the failure and its
    /// details.
    template <typename Work>
    std::string inChild(Work work) {
        const pid_t child = ::fork();
        if (child == 0) {
            try {
                work();
            } catch (const Failure& failure) {
                std::ofstream out(folder / "message");
                out << static_cast<int>(failure.fault()) << ' ' << failure.what();
                for (const auto& line : failure.diagnostic().details) out << '\n' << line;
            }
            ::_exit(0);
        }
        ::waitpid(child, nullptr, 0);
        return read(folder / "message");
    }
};

} // namespace

TEST_F(CodecTest, PictureCodec_missing_namesLibraryAndPackage) {
    const auto path = write("a.tif", "II*");
    const std::string text = inChild([&] {
        ::setenv("KROD_CODEC_PATH", (folder.string() + ":/nowhere").c_str(), 1);
        static_cast<void>(readPicture(path));
    });
    EXPECT_EQ(text, "3 krod_picture_codec.so: this codec library cannot be opened. Install the package "
                    "libopenimageio2.4, "
                    "which it needs, or name the library's folder in KROD_CODEC_PATH.\n" +
                        (folder / "krod_picture_codec.so").string() +
                        ": not there\n/nowhere/krod_picture_codec.so: not there");
}

TEST_F(CodecTest, ModelCodec_broken_saysWhy) {
    const auto path = write("a.obj", "v 0 0 0\n");
    write("krod_model_codec.so", "no library");
    const std::string text = inChild([&] {
        ::setenv("KROD_CODEC_PATH", folder.c_str(), 1);
        static_cast<void>(readModel(path));
    });
    expectHas(text,
              "3 krod_model_codec.so: this codec library cannot be opened. Install the package libassimp5,");
    expectHas(text, "file too short");
}
