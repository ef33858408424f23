// SPDX-License-Identifier: Apache-2.0
// Shader processors on image tiles.
#include "GlFixture.h"

#include "workbench/gl/ProgramCache.h"
#include "workbench/gl/RenderTarget.h"
#include "workbench/report/Failure.h"

#include "host/gl/GLError.h"
#include "host/gl/GLImageTileProcessor.h"

#include <epoxy/gl.h>

#include <bit>
#include <cstdint>

namespace workbench::test {
namespace {

using half_float::half;
using krod::Chunk;
using krod::ImageTile;
using krod::RGBAHalf;
using krod::StrongPtr;

constexpr char PassThrough[] =
    "uniform sampler2D frame;\nvoid main (void)\n{\n"
    "vec4 Color = texture2D(frame, gl_TexCoord[0].xy);\n\tgl_FragColor = Color;\n}\n";

class Processor : public krod::GLImageTileProcessor {
public:
    explicit Processor(std::string text) : text(std::move(text)) {}
    [[nodiscard]] std::string shaderCode() const override {
        ++asked;
        return text;
    }

    std::string text;
    mutable int asked = 0;
};

half fromBits(std::uint16_t bits) { return std::bit_cast<half>(bits); }
std::uint16_t bitsOf(half value) { return std::bit_cast<std::uint16_t>(value); }
bool isNaN(std::uint16_t bits) { return (bits & 0x7FFFU) > 0x7C00U; }

class Tiles : public GlTest {
protected:
    using GlTest::GlTest;
    static StrongPtr<Chunk<RGBAHalf>> chunk(int count) {
        return StrongPtr<Chunk<RGBAHalf>>(new Chunk<RGBAHalf>(static_cast<std::size_t>(count)));
    }
    void process(Processor& processor, int width, int height, const StrongPtr<krod::ChunkBase>& store) {
        ImageTile tile(width, height, store);
        processor.process(krod::VRenderContext(pool), tile);
    }
};

TEST_F(Tiles, Pass_through_keeps_all_65536_patterns) {
    const auto store = chunk(256 * 256);
    for (int i = 0; i < 256 * 256; ++i) {
        const auto bits = static_cast<std::uint16_t>(i);
        const auto other = static_cast<std::uint16_t>(static_cast<unsigned>(i) * 40503U);
        store->data()[i] = {fromBits(bits), fromBits(other), fromBits(static_cast<std::uint16_t>(~bits)),
                            fromBits(static_cast<std::uint16_t>(bits ^ 0x8000U))};
    }
    const std::vector<RGBAHalf> before(store->data(), store->data() + store->elements());
    Processor processor(PassThrough);
    process(processor, 256, 256, store);
    int different = 0;
    const auto compare = [&](half was, half is) {
        const bool same = isNaN(bitsOf(was)) ? isNaN(bitsOf(is)) : bitsOf(was) == bitsOf(is);
        if (!same && ++different < 10) ADD_FAILURE() << std::hex << bitsOf(was) << " became " << bitsOf(is);
    };
    for (std::size_t i = 0; i < before.size(); ++i) {
        compare(before[i].r, store->data()[i].r);
        compare(before[i].g, store->data()[i].g);
        compare(before[i].b, store->data()[i].b);
        compare(before[i].a, store->data()[i].a);
    }
    EXPECT_EQ(different, 0);
}

TEST_F(Tiles, Top_row_lies_at_one) {
    const auto store = chunk(4 * 200);
    Processor processor("void main() { gl_FragColor = vec4(gl_TexCoord[0].st, 0.0, 1.0); }\n");
    process(processor, 4, 200, store);
    EXPECT_NEAR(store->data()[0].g, 1 - 0.5 / 200, 1e-3);
    EXPECT_NEAR(store->data()[799].g, 0.5 / 200, 1e-3);
    EXPECT_NEAR(store->data()[0].r, 0.125, 1e-3);
}

TEST_F(Tiles, Neighbour_above_is_above) {
    const auto store = chunk(2 * 100);
    for (int i = 0; i < 200; ++i) store->data()[i].r = half(static_cast<float>(i / 2));
    Processor processor(
        "uniform sampler2D frame;\n"
        "void main() { gl_FragColor = texture2D(frame, gl_TexCoord[0].xy + vec2(0.0, 0.01)); }\n");
    process(processor, 2, 100, store);
    EXPECT_EQ(static_cast<float>(store->data()[2 * 50].r), 49);
    EXPECT_EQ(static_cast<float>(store->data()[0].r), 0) << "the edge is clamped";
}

TEST_F(Tiles, Rows_that_do_not_fill_a_strip_survive) {
    for (const int height : {1, 63, 64, 65, 129}) {
        const auto store = chunk(3 * height);
        for (int i = 0; i < 3 * height; ++i) store->data()[i].r = half(static_cast<float>(i));
        Processor processor(PassThrough);
        process(processor, 3, height, store);
        for (int i = 0; i < 3 * height; ++i)
            ASSERT_EQ(static_cast<float>(store->data()[i].r), static_cast<float>(i));
    }
}

TEST_F(Tiles, Text_is_asked_for_at_each_tile) {
    const auto store = chunk(4);
    Processor processor(PassThrough);
    process(processor, 2, 2, store);
    processor.text = "void main() { gl_FragColor = vec4(0.5); }\n";
    process(processor, 2, 2, store);
    EXPECT_EQ(processor.asked, 2);
    EXPECT_EQ(static_cast<float>(store->data()[3].b), 0.5F);
}

TEST_F(Tiles, Result_is_neither_blended_nor_clamped) {
    const auto store = chunk(4);
    for (int i = 0; i < 4; ++i) store->data()[i] = {half(7.F), half(7.F), half(7.F), half(7.F)};
    Processor processor("void main() { gl_FragColor = vec4(300.0, -2.0, 0.25, 0.5); }\n");
    process(processor, 2, 2, store);
    EXPECT_EQ(static_cast<float>(store->data()[0].r), 300);
    EXPECT_EQ(static_cast<float>(store->data()[0].g), -2);
    EXPECT_EQ(static_cast<float>(store->data()[0].a), 0.5F);
}

TEST_F(Tiles, Tile_of_another_kind_stays_as_it_is) {
    class OtherStore : public krod::ChunkBase {
    public:
        [[nodiscard]] std::size_t bytes() const noexcept override { return 32; }
    };
    Processor processor(PassThrough);
    process(processor, 2, 2, StrongPtr<krod::ChunkBase>(new OtherStore));
    process(processor, 2, 2, {});
    process(processor, 2, 2, chunk(3));
    process(processor, 0, 0, chunk(0));
    EXPECT_EQ(processor.asked, 0);
    EXPECT_TRUE(warnings.heard.empty());
}

TEST_F(Tiles, Shader_that_does_not_compile_leaves_the_tile) {
    const auto store = chunk(4);
    store->data()[2].g = half(3.F);
    Processor processor("void main() { nonsense; }\n");
    try {
        process(processor, 2, 2, store);
        FAIL() << "nothing was thrown";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.fault(), Fault::Shader);
        EXPECT_EQ(failure.diagnostic().who, "* Tile Fragment Shader *");
    }
    EXPECT_EQ(static_cast<float>(store->data()[2].g), 3);
}

TEST_F(Tiles, Good_text_works_again_after_a_refused_one) {
    const auto store = chunk(4);
    Processor processor("void main() { gl_FragColor = vec4(1.0); }\n");
    process(processor, 2, 2, store);
    processor.text = "void main() { nonsense; }\n";
    EXPECT_THROW(process(processor, 2, 2, store), Failure);
    EXPECT_EQ(static_cast<float>(store->data()[0].r), 1);
    processor.text = "void main() { gl_FragColor = vec4(2.0); }\n";
    process(processor, 2, 2, store);
    EXPECT_EQ(static_cast<float>(store->data()[0].r), 2);
}

class RunningHost : public Tiles {
protected:
    RunningHost() : Tiles(SessionOptions{.keepLastGoodProgram = true}) {}

    static constexpr char Doubling[] =
        "uniform sampler2D frame;\n"
        "void main() { gl_FragColor = 2.0 * texture2D(frame, gl_TexCoord[0].xy); }\n";
    static constexpr char Nonsense[] = "void main() { nonsense; }\n";
};

TEST_F(RunningHost, Last_good_text_goes_on_and_the_refused_one_is_told_once) {
    const auto store = chunk(4);
    store->data()[0].r = half(1.F);
    Processor processor(Doubling);
    process(processor, 2, 2, store);
    processor.text = Nonsense;
    process(processor, 2, 2, store);
    process(processor, 2, 2, store);
    EXPECT_EQ(static_cast<float>(store->data()[0].r), 8);
    EXPECT_EQ(warnings.count("does not compile as a fragment shader — got text line 1"), 1);
    EXPECT_EQ(warnings.heard.size(), 1U);
    processor.text = "void main() { gl_FragColor = vec4(0.5); }\n";
    process(processor, 2, 2, store);
    EXPECT_EQ(static_cast<float>(store->data()[0].r), 0.5F);
    EXPECT_EQ(warnings.heard.size(), 1U);
    processor.text = Nonsense;
    process(processor, 2, 2, store);
    EXPECT_EQ(static_cast<float>(store->data()[0].r), 0.5F) << "drawn by the good text before it";
    EXPECT_EQ(warnings.heard.size(), 2U) << "a mistake that comes back is told again";
}

TEST_F(RunningHost, Text_that_was_never_good_is_an_error) {
    Processor processor(Nonsense);
    EXPECT_THROW(process(processor, 2, 2, chunk(4)), Failure);
    Processor other(Doubling);
    process(other, 2, 2, chunk(4));
    EXPECT_THROW(process(processor, 2, 2, chunk(4)), Failure) << "good texts belong to their processor";
}

TEST_F(Tiles, Empty_text_is_called_empty) {
    for (const std::string text : {"", " \r\n\t"}) {
        Processor processor(text);
        try {
            process(processor, 2, 2, chunk(4));
            FAIL() << "nothing was thrown";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.diagnostic().what.find("does not compile as a fragment shader, because the "
                                                     "program is empty"),
                      0U)
                << failure.what();
        }
    }
}

TEST_F(Tiles, Texture_is_used_again_for_the_same_size) {
    Processor processor(PassThrough);
    const auto first = processor.createFrameTexture(8, 4);
    EXPECT_EQ(processor.createFrameTexture(8, 4), first);
    EXPECT_FALSE(processor.createFrameTexture(4, 8) == first);
}

TEST_F(Tiles, Target_and_program_are_used_again_for_the_next_tile) {
    Processor processor(PassThrough);
    for (int i = 0; i < 3; ++i) process(processor, 8, 4, chunk(32));
    EXPECT_EQ(session.targets().idleCount(), 1U);
    EXPECT_EQ(session.programs().statistics().compiles, 1U);
}

TEST_F(Tiles, Texture_is_made_anew_in_another_session) {
    Processor processor(PassThrough);
    const auto store = chunk(4);
    process(processor, 2, 2, store);
    RenderSession other(session.options());
    EXPECT_NO_THROW(process(processor, 2, 2, store));
}

TEST_F(Tiles, State_is_restored_and_errors_of_others_are_reported) {
    glViewport(1, 2, 3, 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 2);
    glEnable(GL_BLEND);
    glEnable(0xFFFF);
    Processor processor(PassThrough);
    process(processor, 2, 2, chunk(4));
    GLint viewport[4], alignment = 0, framebuffer = -1, program = -1;
    glGetIntegerv(GL_VIEWPORT, viewport);
    glGetIntegerv(GL_PACK_ALIGNMENT, &alignment);
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &framebuffer);
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    EXPECT_EQ(viewport[2], 3);
    EXPECT_EQ(alignment, 2);
    EXPECT_EQ(framebuffer, 0);
    EXPECT_EQ(program, 0);
    EXPECT_TRUE(glIsEnabled(GL_BLEND));
    EXPECT_EQ(warnings.count("image tile: OpenGL error GL_INVALID_ENUM (0x0500) was pending"), 1);
}

TEST_F(Tiles, Texture_larger_than_the_driver_allows_is_an_error) {
    EXPECT_THROW(static_cast<void>(krod::GLTexture2D(1 << 20, 1)), krod::GLError);
    const auto store = chunk(1 << 20);
    Processor processor(PassThrough);
    EXPECT_THROW(process(processor, 1 << 20, 1, store), Failure);
}

} // namespace
} // namespace workbench::test
