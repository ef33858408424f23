// SPDX-License-Identifier: Apache-2.0
// What the program may take, and what its user lets it have.
#include "tests/app/PictureProgram.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <sys/wait.h>

namespace {

namespace fs = std::filesystem;

const Words Gamma = {"--with", "Hollywood/GammaCorrection"};
const Words Colours = {"--with", "Hollywood/ColorGammaCorrection", "-p", "red=-0.5"};

class PlimeLimits : public PictureProgramTest {
protected:
    /// Work of all kinds, each with its libraries.
    [[nodiscard]] std::vector<Words> works() const {
        const std::string exr = picture("in.exr", gradient(40, 30)),
                          tif = picture("in.tif", gradient(40, 30));
        return {{"render", "demo:knot", "--size", "64x48", "--gpu", "software", "-o", at("out.exr")},
                {"render", tif, "--size", "64x48", "--gpu", "software", "-o", at("out.exr")},
                Words{"process", exr, "-o", at("out.exr"), "--gpu", "software"} + Colours,
                Words{"process", exr, "-o", at("out.tif")} + Gamma,
                Words{"process", tif, "-o", at("out.exr")} + Gamma,
                {"info", write("in.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n").string()}};
    }
    /// Within the limit that an option of the shell's ulimit sets, the program succeeds or says in one sentence
    /// that it is too low; no library ends it.
    [[nodiscard]] bool succeeds(const Words& words, const std::string& option, int limit) const {
        SCOPED_TRACE(words[0] + ' ' + words[1] + " with ulimit " + option + ' ' + std::to_string(limit));
        std::string line = "export XDG_CACHE_HOME=" PLIME ".cache; exec > /dev/null 2> " + at("said") +
                           "; ulimit " + option + ' ' + std::to_string(limit) + "; exec " PLIME;
        for (const std::string& word : words) line += " '" + word + '\'';
        const int status = std::system(line.c_str());
        if (status == 0) return true;
        const std::string said = read(at("said"));
        EXPECT_EQ(WEXITSTATUS(status), 4) << said;
        EXPECT_EQ(occurrences(said, "\n"), 1U) << said;
        expectHas(said, "because a limit of this process is too low — expected at least ");
        expectHas(said, "Allow it with: ulimit " + option + ' ');
        return false;
    }
};

/// The importer, which is a copy of the program, and 0 while there is none.
int importerOf(int program) {
    const std::string number = std::to_string(program);
    std::ifstream children("/proc/" + number + "/task/" + number + "/children");
    for (int child = 0; children >> child;) {
        std::error_code error;
        if (fs::read_symlink("/proc/" + std::to_string(child) + "/exe", error) == PLIME) return child;
    }
    return 0;
}

} // namespace

#ifdef ADDRESSES_ARE_LIMITED
TEST_F(PlimeLimits, littleAddressSpace_isOneSentence) {
    for (const Words& words : works())
        for (int kilobytes = 300000; kilobytes <= 900000; kilobytes += 100000)
            static_cast<void>(succeeds(words, "-v", kilobytes));
}
#endif

TEST_F(PlimeLimits, fewOpenFiles_areOneSentence) {
    for (const Words& words : works()) {
        bool enough = false;
        for (const int files : {8, 10, 12, 16, 20, 24, 32, 48, 64}) {
            const bool succeeded = succeeds(words, "-n", files);
            EXPECT_TRUE(succeeded || !enough) << "fewer than " << files << " were enough";
            enough = succeeded;
        }
        EXPECT_TRUE(enough) << words[0] << ' ' << words[1] << ": 64 are not enough";
    }
}

/// A picture that breaks off cannot be read to its end, so that the memory is asked for before.
TEST_F(PlimeLimits, memoryForAPicture_isAskedForBeforeItIsDecoded) {
    const std::string path = picture("large.exr", gradient(3000, 3000));
    fs::resize_file(path, fs::file_size(path) / 2);
    const Words words = {"render", path, "-o", at("out.exr"), "--size", "64x48"};
    expectFailure(4,
                  at("out.exr") +
                      ": needs more memory than is allowed — expected at most 200M, got 258M. Allow it with "
                      "--memory 258M.",
                  words + Words{"--memory", "200M"});
    const Result read = run(words);
    EXPECT_EQ(read.code, 3) << read.error;
    expectHas(read.error, path + ": cannot be read at the rows ");
}

TEST_F(PlimeLimits, interruptionWhileAModelIsRead_isNoDamage) {
    std::string model;
    constexpr int Side = 300;
    for (int i = 0; i < Side * Side; ++i)
        model += "v " + std::to_string(i % Side) + ' ' + std::to_string(i / Side) + " 0\n";
    for (int i = Side + 2; i < Side * Side; ++i)
        model +=
            "f " + std::to_string(i) + ' ' + std::to_string(i - 1) + ' ' + std::to_string(i - Side) + '\n';
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        Call call{{"render", write("large.obj", model).string(), "-o", at("out.exr"), "--size", "64x48"}};
        call.meanwhile = [signal](int program) { // as a terminal does: to both
            int importer = 0;
            while (importer == 0) importer = importerOf(program);
            ::kill(program, signal);
            ::kill(importer, signal);
        };
        expectFailure(130, "interrupted.", call);
    }
}
