// SPDX-License-Identifier: Apache-2.0
// What the host does with programs that the check lets pass: here it is turned off. On both software drivers.
#include "tests/shadercheck/HostileTexts.h"
#include "workbench/core/ActionListener.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/gl/ShaderGuard.h"
#include "workbench/gl/worker/WorkerProcess.h"
#include "workbench/report/Failure.h"

#include "host/gl/GLImageTileProcessor.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace workbench;
using namespace workbench::test;
using Kind = TrialOutcome::Kind;

constexpr char Good[] = "uniform sampler2D frame;\nvoid main() { gl_FragColor = vec4(0.25); }\n";
constexpr char Endless[] =
    "void main()\n{\nfloat s = 0.0;\nwhile (s < 2.0) s = fract(s + 0.1);\ngl_FragColor = vec4(s);\n}\n";

bool onSoftpipe() {
    const char* const driver = std::getenv("GALLIUM_DRIVER");
    return driver && driver == std::string("softpipe");
}

/// Draws one pixel with a text, and gives its alpha.
float drawnWith(const std::string& text) {
    class Processor : public krod::GLImageTileProcessor {
    public:
        explicit Processor(std::string program) : program(std::move(program)) {}
        [[nodiscard]] std::string shaderCode() const override { return program; }

    private:
        std::string program;
    };
    const krod::StrongPtr<krod::Chunk<krod::RGBAHalf>> store(new krod::Chunk<krod::RGBAHalf>(1));
    krod::ImageTile tile(1, 1, store);
    const krod::VValuePool pool;
    Processor(text).process(krod::VRenderContext(pool), tile);
    return static_cast<float>(store->data()[0].a);
}

class ShaderWorker : public testing::Test, public ActionListener {
protected:
    ShaderWorker() { setShaderGuard({.checkTexts = false, .worker = SHADER_WORKER}); }
    ~ShaderWorker() override {
        setShaderGuard({});
        setActionListener(before);
        std::filesystem::remove_all(folder);
    }

    void warning(const std::string& text) override { warnings.push_back(text); }

    /// The host lives on, says that, and draws a good program afterwards.
    static void expectRefusal(const std::string& text, const std::string& sentence) {
        try {
            static_cast<void>(drawnWith(text));
            ADD_FAILURE() << "is drawn";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.fault(), Fault::Shader);
            EXPECT_EQ(failure.what(), sentence);
        }
        EXPECT_EQ(drawnWith(Good), 0.25F);
    }

    /// A worker that is a shell script.
    std::filesystem::path script(const std::string& lines) {
        const auto path = folder / "worker";
        std::ofstream(path) << "#!/bin/sh\n" << lines << '\n';
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        return path;
    }
    [[nodiscard]] std::string read(const std::string& name) const {
        std::ifstream file(folder / name);
        return {(std::istreambuf_iterator<char>(file)), {}};
    }
    static std::filesystem::path newFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "shader-worker-XXXXXX").string();
        if (!::mkdtemp(name.data())) throw std::runtime_error("no folder for the test");
        return name;
    }

    const std::filesystem::path folder = newFolder();
    ActionListener* const before = setActionListener(this);
    std::vector<std::string> warnings;
    RenderSession session;
};

TEST_F(ShaderWorker, goodProgram_isDrawn) {
    EXPECT_EQ(drawnWith(Good), 0.25F);
    EXPECT_TRUE(warnings.empty()) << warnings[0];
}

TEST_F(ShaderWorker, wrongProgram_getsTheCompilersWords) {
    expectRefusal("void main() { oops; }",
                  "* Tile Fragment Shader *: does not compile as a fragment shader — got "
                  "text line 1, column 15: `oops' undeclared.");
}

TEST_F(ShaderWorker, hugeArray_endsTheWorkerOnly) {
    expectRefusal(hostileText("variableArray2000000000"),
                  "* Tile Fragment Shader *: its program ended the shader compiler (signal 11).");
}

TEST_F(ShaderWorker, longSum_endsTheWorkerOnly) {
    expectRefusal(hostileText("sumOf50000"),
                  "* Tile Fragment Shader *: its program ended the shader compiler (signal 11).");
}

TEST_F(ShaderWorker, callDoubling_takesTooLong) {
    setShaderGuard({.checkTexts = false, .worker = SHADER_WORKER, .time = std::chrono::seconds(4)});
    expectRefusal(
        hostileText("callDoubling30"),
        "* Tile Fragment Shader *: its program took longer than 4 s. KROD_SHADER_SECONDS can allow more.");
}

TEST_F(ShaderWorker, macroDoubling_isSurvived) {
    setShaderGuard({.checkTexts = false, .worker = SHADER_WORKER, .time = std::chrono::seconds(4)});
    EXPECT_THROW(static_cast<void>(drawnWith(hostileText("macroDoubling30"))), Failure);
    EXPECT_EQ(drawnWith(Good), 0.25F);
}

/// llvmpipe ends every loop after 65,535 rounds by itself.
TEST_F(ShaderWorker, endlessLoop_isEndedOnSoftpipe) {
    if (!onSoftpipe()) {
        EXPECT_NO_THROW(static_cast<void>(drawnWith(Endless)));
        return;
    }
    setShaderGuard({.checkTexts = false, .worker = SHADER_WORKER, .time = std::chrono::seconds(4)});
    expectRefusal(
        Endless,
        "* Tile Fragment Shader *: its program took longer than 4 s. KROD_SHADER_SECONDS can allow more.");
}

/// Light of a sun: a loop that is long for it must be long in the trial, too.
TEST_F(ShaderWorker, loopThatIsEndlessForBrightPixels_isEndedOnSoftpipe) {
    if (!onSoftpipe()) return; // see above
    setShaderGuard({.checkTexts = false, .worker = SHADER_WORKER, .time = std::chrono::seconds(4)});
    for (const std::string threshold : {"1.5", "60000.0"})
        expectRefusal("uniform sampler2D frame; void main() { float s = 0.0; "
                      "if (texture2D(frame, gl_TexCoord[0].xy).r > " +
                          threshold + ") while (s < 2.0) s = fract(s + 0.1); gl_FragColor = vec4(s); }",
                      "* Tile Fragment Shader *: its program took longer than 4 s. KROD_SHADER_SECONDS can "
                      "allow more.");
}

TEST_F(ShaderWorker, time_isThatOfTheEnvironment) {
    const auto timeWith = [](const char* seconds) {
        ::setenv("KROD_SHADER_SECONDS", seconds, 1);
        const ShaderGuardSettings settings;
        ::unsetenv("KROD_SHADER_SECONDS");
        return settings.time;
    };
    EXPECT_EQ(ShaderGuardSettings().time, std::chrono::seconds(8));
    EXPECT_EQ(timeWith("20"), std::chrono::seconds(20));
    for (const char* const wrong : {"", "0", "-4", "3601", "many"})
        EXPECT_EQ(timeWith(wrong), std::chrono::seconds(8));
}

TEST_F(ShaderWorker, program_isTriedOncePerText) {
    const auto trial = script("echo x >> " + (folder / "starts").string() + "\nkill -SEGV $$");
    setShaderGuard({.checkTexts = true, .worker = trial});
    for (int i = 0; i < 3; ++i) EXPECT_THROW(static_cast<void>(drawnWith(Good)), Failure);
    EXPECT_EQ(read("starts"), "x\n");
    EXPECT_THROW(static_cast<void>(drawnWith(Endless)), Failure);
    EXPECT_EQ(read("starts"), "x\nx\n");
}

TEST_F(ShaderWorker, checkedProgram_isNotTried) {
    setShaderGuard({.worker = script("touch " + (folder / "started").string() + "\nkill -SEGV $$")});
    EXPECT_THROW(static_cast<void>(drawnWith(hostileText("variableArray1000000"))), Failure);
    EXPECT_FALSE(std::filesystem::exists(folder / "started"));
}

TEST_F(ShaderWorker, workerThatIsNotThere_isToldOnceAndPasses) {
    setShaderGuard({.worker = folder / "nothing"});
    EXPECT_EQ(drawnWith(Good), 0.25F);
    EXPECT_EQ(drawnWith(std::string(Good) + "\n"), 0.25F);
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_EQ(warnings[0],
              "programs of users are compiled without a trial, because the shader worker does not "
              "work: " +
                  (folder / "nothing").string() + ": No such file or directory");
}

/// What a child says, and how it ends. Needs no OpenGL.
class TrialOutcomes : public ShaderWorker {
protected:
    TrialOutcome of(const std::string& lines) {
        return tryInWorker(script(lines), {}, {.time = std::chrono::seconds(1)});
    }
};

TEST_F(TrialOutcomes, answers_areUnderstood) {
    EXPECT_EQ(of("printf d").kind, Kind::Drawn);
    EXPECT_EQ(of("printf r").kind, Kind::Refused);
    EXPECT_EQ(of("printf 'nno screen'").kind, Kind::NotStarted);
    EXPECT_EQ(of("printf 'nno screen'").reason, "no screen");
}

TEST_F(TrialOutcomes, timeOfAPixel_isPassedOn) {
    EXPECT_EQ(of("printf d1500").secondsPerPixel, 1e-9 * 1500);
    EXPECT_EQ(of("printf 'd-x'").secondsPerPixel, 0);
    EXPECT_EQ(of("printf d-1500").secondsPerPixel, 0);
    EXPECT_EQ(of("printf d9000000000000000000").secondsPerPixel, 1) << "more than the trial itself took";
    const ShaderTrial trial{.vertexText = "void main() { gl_Position = ftransform(); }", .fragmentText = Good};
    const TrialOutcome real = tryInWorker(SHADER_WORKER, trial, {.time = std::chrono::seconds(60)});
    ASSERT_EQ(real.kind, Kind::Drawn) << real.reason;
    EXPECT_GT(real.secondsPerPixel, 0);
    EXPECT_LT(real.secondsPerPixel, 60.0 / (128 * 128));
}

TEST_F(TrialOutcomes, endWithoutAnswer_isADeath) {
    EXPECT_EQ(of("kill -ABRT $$").reason, "signal 6");
    EXPECT_EQ(of("kill -ABRT $$").kind, Kind::Killed);
    EXPECT_EQ(of("exit 3").reason, "exit code 3");
    EXPECT_EQ(of("exit 0").kind, Kind::Killed);
    EXPECT_EQ(of("printf x").kind, Kind::Killed);
    EXPECT_EQ(of("kill -XCPU $$").kind, Kind::TooLong);
    EXPECT_EQ(of("kill -XCPU $$").reason, "0 s of processor time");
}

/// The state letter of a process; '-' if it is gone.
char stateOf(const std::string& process) {
    std::ifstream stat("/proc/" + process + "/stat");
    std::string number, name;
    char state = '-';
    stat >> number >> name >> state;
    return state;
}

TEST_F(TrialOutcomes, endlessWorker_isEndedWithItsChildren) {
    EXPECT_EQ(of("sleep 1000 &\necho $! > " + (folder / "child").string() + "\nwait").kind, Kind::TooLong);
    const std::string line = read("child");
    const std::string child = line.substr(0, line.find('\n'));
    char state = stateOf(child);
    for (int i = 0; i < 1000000 && std::string("-ZX").find(state) == std::string::npos;
         ++i) // it is on its way
        state = stateOf(child);
    EXPECT_NE(std::string("-ZX").find(state), std::string::npos) << state;
}

TEST_F(TrialOutcomes, openFilesOfTheHost_stayWithTheHost) {
    const int mine = ::fcntl(0, F_DUPFD, 50);
    ASSERT_GE(mine, 50);
    EXPECT_EQ(of("[ -e /proc/$$/fd/" + std::to_string(mine) + " ] && exit 3; printf d").kind, Kind::Drawn);
    ::close(mine);
}

TEST_F(TrialOutcomes, garbageInsteadOfATrial_isNone) {
    EXPECT_THROW(static_cast<void>(unpacked({})), std::runtime_error);
    std::vector<char> bytes = packed({.vertexText = "v", .fragmentText = "f"});
    EXPECT_EQ(unpacked(bytes).fragmentText, "f");
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_THROW(
            static_cast<void>(unpacked({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)})),
            std::runtime_error);
    bytes.push_back('x');
    EXPECT_THROW(static_cast<void>(unpacked(bytes)), std::runtime_error);
}

} // namespace
