#include "draw/VXSkiaObject2D.h"
#include "engine/VXScene.h"
#include "host/Preview.h"
#include "host/gl/LoadGL.h"
#include "host/gl/VXGLDrawEngine.h"
#include "host/overlay/Overlays.h"
#include "host/window/OffscreenContext.h"
#include "tests/support/Meshes.h"
#include "tests/support/ObjText.h"

#include <GL/glew.h>
#include <GrContext.h>
#include <SkCanvas.h>
#include <SkSurface.h>
#include <gl/GrGLInterface.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>

using namespace vx;

namespace
{
PreviewOptions Small()
{
    PreviewOptions options;
    options.width = 320;
    options.height = 200;
    options.samples = 1;
    return options;
}

/// A preview of a torus, without its overlays and with them.
class Overlays : public testing::Test
{
protected:
    void SetUp() override
    {
        const std::string text = ObjText(Torus(24, 12));
        ASSERT_TRUE(preview.LoadText(text.data(), text.size(), "torus", BPath("."), {}));
        if (!preview.PrepareContext())
            GTEST_SKIP() << preview.Error().CString();
    }

    PicturePtr Drawn(const std::vector<OverlaySpec>& overlays, PreviewOptions options = Small())
    {
        options.overlays = overlays;
        PicturePtr picture = preview.Render(options);
        EXPECT_TRUE(picture) << preview.Error().CString();
        return picture;
    }

    Preview preview;
};

/// The rectangle outside of which two pictures are equal bit for bit; empty when they are equal everywhere.
CPB_Rect Changed(const CPB_Offscreen& a, const CPB_Offscreen& b)
{
    CPB_Rect box{a.Width(), a.Height(), 0, 0};
    for (int y = 0; y < a.Height(); ++y)
        for (int x = 0; x < a.Width(); ++x)
            if (!std::equal(a.Row(y) + 4 * x, a.Row(y) + 4 * x + 4, b.Row(y) + 4 * x))
                box = {std::min(box.x1, x), std::min(box.y1, y), std::max(box.x2, x + 1), std::max(box.y2, y + 1)};
    return box;
}

int NamesInUse()
{
    int used = 0;
    for (GLuint name = 1; name < 20000; ++name)
        used += (glIsTexture(name) ? 1 : 0) + (glIsBuffer(name) ? 1 : 0) + (glIsFramebuffer(name) ? 1 : 0) +
                (glIsRenderbuffer(name) ? 1 : 0) + (glIsProgram(name) ? 1 : 0) + (glIsShader(name) ? 1 : 0) +
                (glIsVertexArray(name) ? 1 : 0);
    return used;
}

/// All that glGet tells of the state that drawing can touch, by what is asked for; texture units by number.
std::map<GLenum, std::vector<double>> StateOfGL()
{
    // clang-format off
    static constexpr GLenum kValues[] = {
        GL_CURRENT_PROGRAM, GL_VERTEX_ARRAY_BINDING, GL_ARRAY_BUFFER_BINDING, GL_ELEMENT_ARRAY_BUFFER_BINDING,
        GL_UNIFORM_BUFFER_BINDING, GL_PIXEL_PACK_BUFFER_BINDING, GL_PIXEL_UNPACK_BUFFER_BINDING,
        GL_DRAW_FRAMEBUFFER_BINDING, GL_READ_FRAMEBUFFER_BINDING, GL_RENDERBUFFER_BINDING, GL_ACTIVE_TEXTURE,
        GL_CLIENT_ACTIVE_TEXTURE, GL_VIEWPORT, GL_SCISSOR_BOX, GL_SCISSOR_TEST, GL_BLEND, GL_BLEND_SRC_RGB,
        GL_BLEND_DST_RGB, GL_BLEND_SRC_ALPHA, GL_BLEND_DST_ALPHA, GL_BLEND_EQUATION_RGB,
        GL_BLEND_EQUATION_ALPHA, GL_BLEND_COLOR, GL_COLOR_WRITEMASK, GL_COLOR_CLEAR_VALUE, GL_DEPTH_TEST,
        GL_DEPTH_FUNC, GL_DEPTH_WRITEMASK, GL_DEPTH_CLEAR_VALUE, GL_DEPTH_RANGE, GL_STENCIL_TEST,
        GL_STENCIL_FUNC, GL_STENCIL_REF, GL_STENCIL_VALUE_MASK, GL_STENCIL_WRITEMASK, GL_STENCIL_FAIL,
        GL_STENCIL_PASS_DEPTH_FAIL, GL_STENCIL_PASS_DEPTH_PASS, GL_STENCIL_CLEAR_VALUE, GL_CULL_FACE,
        GL_CULL_FACE_MODE, GL_FRONT_FACE, GL_POLYGON_MODE, GL_POLYGON_OFFSET_FILL, GL_POLYGON_OFFSET_FACTOR,
        GL_POLYGON_OFFSET_UNITS, GL_LINE_WIDTH, GL_POINT_SIZE, GL_LINE_SMOOTH, GL_DITHER, GL_MULTISAMPLE,
        GL_SAMPLE_ALPHA_TO_COVERAGE, GL_SAMPLE_COVERAGE, GL_COLOR_LOGIC_OP, GL_FRAMEBUFFER_SRGB,
        GL_PRIMITIVE_RESTART, GL_VERTEX_PROGRAM_POINT_SIZE, GL_PACK_ALIGNMENT, GL_PACK_ROW_LENGTH,
        GL_PACK_SKIP_ROWS, GL_PACK_SKIP_PIXELS, GL_UNPACK_ALIGNMENT, GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS,
        GL_UNPACK_SKIP_PIXELS, GL_LIGHTING, GL_FOG, GL_ALPHA_TEST, GL_NORMALIZE, GL_MATRIX_MODE,
        GL_MODELVIEW_MATRIX, GL_PROJECTION_MATRIX, GL_CURRENT_COLOR, GL_ATTRIB_STACK_DEPTH,
        GL_CLIENT_ATTRIB_STACK_DEPTH, GL_VERTEX_ARRAY, GL_NORMAL_ARRAY, GL_COLOR_ARRAY, GL_TEXTURE_COORD_ARRAY,
        GL_PROVOKING_VERTEX};
    // clang-format on
    std::map<GLenum, std::vector<double>> state;
    for (const GLenum value : kValues)
    {
        state[value].resize(16); // a matrix
        glGetDoublev(value, state[value].data());
    }
    GLint unit = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
    for (int i = 0; i < 16; ++i)
    {
        glActiveTexture(GLenum(GL_TEXTURE0 + i));
        for (const GLenum what :
             {GL_TEXTURE_BINDING_1D, GL_TEXTURE_BINDING_2D, GL_TEXTURE_BINDING_3D, GL_TEXTURE_BINDING_CUBE_MAP,
              GL_TEXTURE_BINDING_2D_ARRAY, GL_TEXTURE_BINDING_BUFFER, GL_TEXTURE_BINDING_RECTANGLE, GL_SAMPLER_BINDING})
        {
            GLint bound = 0;
            glGetIntegerv(what, &bound);
            state[GLenum(i)].push_back(bound);
        }
    }
    glActiveTexture(GLenum(unit));
    for (GLuint i = 0; i < 8; ++i)
    {
        GLint enabled = 0;
        glGetVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
        state[GL_VERTEX_ATTRIB_ARRAY_ENABLED].push_back(enabled);
    }
    return state;
}

const OverlaySpec kAll[] = {{OverlayKind::Stats, ""}, {OverlayKind::Title, "Torus"}, {OverlayKind::Axes, ""}};
} // namespace

TEST_F(Overlays, StandAtTheirPinsAndLeaveTheRestOfThePictureAlone)
{
    struct Row
    {
        OverlaySpec spec;
        CPB_Rect within; ///< of a picture of 320 x 200
    };
    const PicturePtr bare = Drawn({});
    for (const Row& row : {Row{kAll[0], {16, 16, 200, 110}}, Row{kAll[1], {100, 16, 220, 60}},
                           Row{kAll[2], {16, 88, 112, 184}}, Row{{OverlayKind::Frame, "", 1}, {0, 0, 320, 200}}})
    {
        const CPB_Rect changed = Changed(*bare, *Drawn({row.spec}));
        EXPECT_GT(changed.x2, changed.x1) << "nothing was drawn";
        EXPECT_TRUE(changed.x1 >= row.within.x1 && changed.y1 >= row.within.y1 && changed.x2 <= row.within.x2 &&
                    changed.y2 <= row.within.y2)
            << int(row.spec.kind) << ": " << changed.x1 << " " << changed.y1 << " " << changed.x2 << " " << changed.y2;
    }
    EXPECT_EQ(Changed(*bare, *Drawn({})).x2, 0) << "gone again";
    // With 16 samples, drawn at twice the size: the same place.
    PreviewOptions options = Small();
    options.samples = 16;
    CPB_Rect changed = Changed(*Drawn({}, options), *Drawn({kAll[2]}, options));
    EXPECT_TRUE(changed.x1 >= 16 && changed.y1 >= 88 && changed.x2 <= 112 && changed.y2 <= 184 && changed.x2 > 90);
    // Across the border of two tiles, at 2048: all of the words.
    options = Small();
    options.width = 4096;
    changed = Changed(*Drawn({}, options), *Drawn({{OverlayKind::Title, "In two tiles"}}, options));
    EXPECT_TRUE(changed.x1 > 1950 && changed.x1 < 2040 && changed.x2 > 2056 && changed.x2 < 2146);
    EXPECT_NEAR(changed.x1 + changed.x2, 4096, 4);
}

namespace
{
using State = std::map<GLenum, std::vector<double>>;

/// Writes the state down where it stands in the scene's list. The first of two leaves nothing at its default.
class Probe : public VXObject2D
{
public:
    Probe(State& state, bool first) : mState(state), mFirst(first) {}
    void Draw() override
    {
        static GLuint buffers[4], texture, sampler, framebuffer;
        if (mFirst)
        {
            glGenBuffers(4, buffers);
            glGenTextures(1, &texture);
            glGenSamplers(1, &sampler);
            glGenFramebuffers(1, &framebuffer);
            for (int i = 0; i < 4; ++i)
                glBindBuffer(kTargets[i], buffers[i]);
            glBindSampler(2, sampler);
            glActiveTexture(GL_TEXTURE3);
            glBindTexture(GL_TEXTURE_3D, texture);
            glPixelStorei(GL_UNPACK_ROW_LENGTH, 7);
            glEnable(GL_SCISSOR_TEST);
            glScissor(1, 2, 3, 4);
            glEnable(GL_STENCIL_TEST);
            glStencilFunc(GL_GREATER, 5, 6);
            glBlendColor(0.1f, 0.2f, 0.3f, 0.4f);
            glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_FALSE);
            glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer);
        }
        mState = StateOfGL();
        if (mFirst)
            return;
        for (const GLenum target : kTargets)
            glBindBuffer(target, 0);
        glBindSampler(2, 0);
        glBindTexture(GL_TEXTURE_3D, 0);
        glActiveTexture(GL_TEXTURE0);
        glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
        glDeleteBuffers(4, buffers);
        glDeleteTextures(1, &texture);
        glDeleteSamplers(1, &sampler);
        glDeleteFramebuffers(1, &framebuffer);
    }

private:
    static constexpr GLenum kTargets[] = {GL_ARRAY_BUFFER, GL_PIXEL_UNPACK_BUFFER, GL_UNIFORM_BUFFER,
                                          GL_TEXTURE_BUFFER};
    State& mState;
    bool mFirst;
};
} // namespace

TEST_F(Overlays, LeaveOpenGLAsItWas)
{
    State before, after;
    preview.Scene().AddObject2D(new Probe(before, true));
    for (const OverlaySpec& spec : kAll)
    {
        BString problem;
        preview.Scene().AddObject2D(MakeOverlay(spec, problem).release());
    }
    preview.Scene().AddObject2D(new Probe(after, false));
    for (int i = 0; i < 2; ++i) // the first frame makes what later ones use
    {
        Drawn({});
        ASSERT_FALSE(before.empty());
        for (const auto& [name, values] : before)
            EXPECT_EQ(values, after.at(name)) << std::hex << name;
    }
    EXPECT_NE(before[GL_VERTEX_ARRAY_BINDING][0], 0);
    EXPECT_NE(before[GL_READ_FRAMEBUFFER_BINDING], before[GL_DRAW_FRAMEBUFFER_BINDING]);
    EXPECT_EQ(PendingGLErrors(), "");
}

TEST_F(Overlays, KeepNothingOfOtherSizes)
{
    PreviewOptions options = Small();
    int names = 0;
    for (int i = 0; i < 200; ++i)
    {
        options.width = 100 + i % 37;
        options.height = 80 + i % 23;
        ASSERT_TRUE(Drawn({kAll[0], kAll[1], kAll[2]}, options));
        if (i == 40)
            names = NamesInUse();
    }
    EXPECT_LE(NamesInUse(), names + 2);
}

TEST_F(Overlays, ThatCannotBeMadeKeepTheOldOnes)
{
    Drawn({kAll[1]});
    PreviewOptions options = Small();
    options.overlays = {{OverlayKind::Stats, ""}, {OverlayKind::Logo, "no-such.png"}};
    EXPECT_FALSE(preview.Render(options));
    options.overlays = {{OverlayKind::Title, "\xF0"}};
    EXPECT_FALSE(preview.Render(options)) << "no UTF-8";
    options.overlays = {{OverlayKind::Logo, "no-such.png"}};
    EXPECT_FALSE(preview.Render(options));
    EXPECT_TRUE(preview.Error().Find("no-such.png") >= 0) << preview.Error().CString();
    EXPECT_EQ(preview.Scene().NumObject2Ds(), 1);
}

TEST_F(Overlays, TakeBitmapsOfOtherItemsToo)
{
    const PicturePtr bare = Drawn({});
    VXObject2D* const item = new VXObject2D;
    item->CreateOffscreen(30, 20);
    std::fill_n(item->Offscreen()->Pixels(), 30 * 20 * 4, std::uint8_t(255));
    item->SetPinX(VXObject2D::kPinRight);
    item->SetPinY(VXObject2D::kPinBottom);
    item->SetOffsetX(-5);
    preview.Scene().AddObject2D(item);
    const PicturePtr marked = Drawn({});
    const CPB_Rect changed = Changed(*bare, *marked);
    EXPECT_TRUE(changed.x1 == 285 && changed.y1 == 180 && changed.x2 == 315 && changed.y2 == 200);
    EXPECT_EQ(marked->Row(190)[4 * 300], 255);
    const std::int64_t uploaded = GpuArray::UploadedBytes();
    Drawn({});
    EXPECT_EQ(GpuArray::UploadedBytes(), uploaded) << "a bitmap that stays";
    item->Offscreen()->Pixels()[0] = 7;
    Drawn({});
    EXPECT_GT(GpuArray::UploadedBytes(), uploaded) << "painted into";
}

// --- The library's own protocol, in framebuffer 0

namespace
{
class SkiaObject : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!context.Create())
            GTEST_SKIP() << context.Error().CString();
    }

    OffscreenContext context;
};

constexpr int kSide = 4; // framebuffer 0 of an offscreen context is of this size

std::uint32_t Pixel()
{
    std::uint32_t pixel = 0;
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glReadPixels(1, 1, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &pixel);
    return pixel;
}
} // namespace

TEST_F(SkiaObject, DrawsIntoTheWindowBetweenPrepareAndEnd)
{
    VXSkiaObject2D item;
    item.Draw(); // before the first prepare: nothing
    item.EndDrawing(kSide, kSide);
    item.PrepareForDrawing(kSide, kSide); // closes what the lone end has opened
    ASSERT_EQ(item.PrepareForDrawing(kSide, kSide), 1);
    EXPECT_EQ(item.PrepareForDrawing(kSide, kSide), 0) << "a nest within";
    ASSERT_TRUE(item.SkiaCanvas());
    item.SkiaCanvas()->clear(SK_ColorGREEN);
    item.SkiaCanvas()->flush();
    item.Draw();
    item.EndDrawing(kSide, kSide);
    item.EndDrawing(kSide, kSide);
    EXPECT_EQ(Pixel(), 0xFF00FF00u);
    GLint program = -1, depth = -1;
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    glGetIntegerv(GL_CLIENT_ATTRIB_STACK_DEPTH, &depth);
    EXPECT_EQ(program, 0);
    EXPECT_EQ(depth, 0);
    EXPECT_EQ(PendingGLErrors(), "");
}

TEST_F(SkiaObject, ReleasesEachReferenceOnce)
{
    VXSkiaObject2D item;
    item.PrepareForDrawing(kSide, kSide);
    item.EndDrawing(kSide, kSide);
    sk_sp<SkSurface> surface = sk_ref_sp(item.SkiaSurface());
    sk_sp<GrContext> context_ = sk_ref_sp(item.CurContext());
    const sk_sp<const GrGLInterface> interface = sk_ref_sp(item.GlInterface());
    ASSERT_TRUE(surface && context_ && interface && item.RenderTarget());
    item.PrepareForDrawing(kSide, kSide);
    EXPECT_EQ(item.SkiaSurface(), surface.get()) << "kept while the size stays";
    item.EndDrawing(kSide, kSide);
    EXPECT_FALSE(surface->unique());
    item.PrepareForDrawing(2, 2); // another size: all anew
    item.EndDrawing(2, 2);
    EXPECT_NE(item.SkiaSurface(), surface.get());
    EXPECT_EQ(item.Width(), 2);
    EXPECT_TRUE(surface->unique()) << "the item has let go, once";
    const sk_sp<SkSurface> second = sk_ref_sp(item.SkiaSurface());
    item.SetSkiaSurface(second.get()); // the same again changes no count
    item.ClearSkia();
    item.ClearSkia();
    EXPECT_TRUE(second->unique());
    EXPECT_TRUE(!item.SkiaCanvas() && !item.CurContext() && !item.RenderTarget() && !item.GlInterface());
    surface.reset();
    EXPECT_TRUE(context_->unique());
    context_.reset();
    EXPECT_TRUE(interface->unique());
}

TEST_F(SkiaObject, DrawsNothingWhereThereIsNothingToDrawOn)
{
    glClearColor(0, 0, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    VXSkiaObject2D item;
    for (const auto& [width, height] : {std::pair{0, kSide}, {kSide, -3}, {-1, -1}})
    {
        EXPECT_EQ(item.PrepareForDrawing(width, height), 0);
        EXPECT_FALSE(item.SkiaCanvas());
        item.Draw();
        item.EndDrawing(width, height);
    }
    EXPECT_EQ(Pixel(), 0xFFFF0000u);
    GLuint names[3];
    glGenTextures(1, &names[0]);
    glGenFramebuffers(1, &names[1]);
    glBindFramebuffer(GL_FRAMEBUFFER, names[1]);
    glBindTexture(GL_TEXTURE_2D, names[0]);
    item.SetTextureID(names[0]);
    item.SetFBOID(names[1]);
    item.PrepareForDrawing(kSide, kSide); // the size differs: the host's objects of the old one go
    GLint bound = -1;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &bound);
    EXPECT_EQ(bound, 0) << "a framebuffer that is not 0 is left";
    EXPECT_TRUE(item.GetFBOID() == 0 && !glIsTexture(names[0]) && !glIsFramebuffer(names[1]));
    item.EndDrawing(kSide, kSide);
    EXPECT_EQ(PendingGLErrors(), "");
}
