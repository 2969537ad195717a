// A frame of 70,000 quads at 1280 x 720, shaded and lined, beside a program that does nothing but draw the same buffers
// with the same shaders, one call for the surface and one for its lines; and a thousand objects beside one object with
// as many polygons; and the frame with a Skia overlay beside the one without. All wait for the picture to be done, as a
// viewer's swap of buffers would. What counts is processor time, of all threads of the software renderer together.

#include "bench/BenchMeshes.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "host/LightRig.h"
#include "host/Preview.h"
#include "host/gl/Framebuffer.h"
#include "host/gl/Program.h"
#include "host/gl/ShaderText.h"
#include "host/gl/VXGLDrawEngine.h"
#include "mesh/VXGeom.h"
#include "tests/support/Meshes.h"

#include <GL/glew.h>
#include <benchmark/benchmark.h>

#ifdef VELMAR_WITH_SKIA
#include "host/overlay/Overlay.h"
#include "host/text/FontFolders.h"

#include <SkCanvas.h>
#include <SkFontMgr.h>
#include <SkTypeface.h>
#endif

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

using namespace vx;

namespace
{
constexpr int kWidth = 1280, kHeight = 720;

PreviewOptions Options()
{
    PreviewOptions options;
    options.width = kWidth;
    options.height = kHeight;
    options.mode = DrawMode::SmoothLined;
    options.shadows = false; // the bare program has none
    return options;
}

bool AddObject(Preview& preview, const TestMesh& mesh)
{
    VXGeom geom;
    auto* const object = new VXObject;
    const bool made = geom.SetGeom(mesh.Record().get(), true) == 0 && object->SetGeom(&geom, true) == 0;
    preview.Scene().AddObject(object);
    return made;
}

/// Everything that draws one scene again and again.
struct Stage
{
    Preview preview;
    Framebuffer target;
    View view;
    PreviewOptions options = Options();

    BString Open()
    {
        if (!preview.PrepareContext())
            return preview.Error();
        view = preview.FitToScene(options);
        return target.Create(kWidth, kHeight, 4);
    }
    bool Frame()
    {
        target.Bind();
        const bool drawn = preview.DrawFrame(options, view);
        glFinish();
        return drawn;
    }
};

void Run(benchmark::State& state, Stage& stage)
{
    const BString problem = stage.Open();
    if (!problem.IsEmpty())
        return state.SkipWithError(problem.CString());
    stage.Frame(); // compiles and uploads
    const std::int64_t before = GpuArray::UploadedBytes();
    bool drawn = true;
    for (auto _ : state)
        state.SetIterationTime(SecondsOf([&] { drawn = stage.Frame() && drawn; }));
    if (!drawn)
        return state.SkipWithError(stage.preview.Error().CString());
    if (GpuArray::UploadedBytes() != before)
        state.SkipWithError("a still scene was uploaded");
}

// --- One model

TestMesh Model() { return Torus(280, 250); }

void Ours(benchmark::State& state)
{
    Stage stage;
    AddObject(stage.preview, Model());
    Run(state, stage);
}

/// The program that draws and nothing else.
class Bare
{
public:
    BString Build(const VXGeom& geom, const View& view)
    {
        const std::string head = vx::text::Common();
        BString problem = mSurface.Build("bare surface", "#define SHADE_LIT\n#define FAR_LIGHTS 3\n" + head,
                                         vx::text::kSurfaceVertex, vx::text::SurfaceFragment().c_str());
        if (problem.IsEmpty())
            problem = mLines.Build("bare lines", head, vx::text::kLineVertex, vx::text::kLineFragment);
        if (!problem.IsEmpty())
            return problem;
        MakeBuffers(geom);
        MakeFrameBlock(view);
        SetUniforms(view);
        return {};
    }

    void Draw() const
    {
        glBindVertexArray(mVertexArray);
        glBindBufferBase(GL_UNIFORM_BUFFER, 0, mBlock);
        glClearColor(0.7f, 0.72f, 0.75f, 1);
        glEnable(GL_DEPTH_TEST);
        glDepthMask(GL_TRUE);
        glDepthFunc(GL_LEQUAL);
        glDisable(GL_BLEND);
        glEnable(GL_POLYGON_OFFSET_FILL);
        glPolygonOffset(1.25f, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glUseProgram(mSurface.Id());
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, mIndices);
        glDrawElements(GL_TRIANGLES, mNumIndices, GL_UNSIGNED_INT, nullptr);
        glDisable(GL_POLYGON_OFFSET_FILL);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glDepthMask(GL_FALSE);
        glUseProgram(mLines.Id());
        for (GLenum k = 0; k < 2; ++k)
        {
            glActiveTexture(GL_TEXTURE1 + 2 * k);
            glBindTexture(GL_TEXTURE_BUFFER, mTextures[k]);
        }
        glActiveTexture(GL_TEXTURE0);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, mLineIndices);
        glDrawElements(GL_TRIANGLES, mNumLineIndices, GL_UNSIGNED_INT, nullptr);
        glDepthMask(GL_TRUE);
        glFinish();
    }

private:
    template <class T>
    static GLuint Buffer(GLenum target, const std::vector<T>& data)
    {
        GLuint name = 0;
        glGenBuffers(1, &name);
        glBindBuffer(target, name);
        glBufferData(target, GLsizeiptr(data.size() * sizeof(T)), data.data(), GL_STATIC_DRAW);
        return name;
    }

    static GLuint BufferTexture(GLenum format, GLuint buffer)
    {
        GLuint name = 0;
        glGenTextures(1, &name);
        glBindTexture(GL_TEXTURE_BUFFER, name);
        glTexBuffer(GL_TEXTURE_BUFFER, format, buffer);
        return name;
    }

    void MakeBuffers(const VXGeom& geom)
    {
        const GEOM& record = *geom.Geom();
        const std::size_t count = std::size_t(geom.NumVerts(true));
        const std::vector<VERTEX> verts(geom.Verts(), geom.Verts() + count),
            normals(geom.VertNormals(), geom.VertNormals() + count);
        const std::int32_t* const corners = geom.Sets(true);
        std::vector<std::int32_t> triangles, pairs, quads;
        for (std::int32_t p = 0; p < record.numPolys; ++p)
            for (std::int32_t k = 0; k + 2 < record.Poly(p)->length; ++k)
                for (const std::int32_t corner : {0, k + 1, k + 2})
                    triangles.push_back(corners[record.Poly(p)->start + corner]);
        for (std::int32_t e = 0; e < geom.EdgeList().GetEdgeCount(); ++e)
        {
            pairs.insert(pairs.end(),
                         {geom.EdgeList().GetEdge(e).VertIndex1(), geom.EdgeList().GetEdge(e).VertIndex2()});
            for (const std::int32_t corner : {0, 1, 2, 2, 1, 3})
                quads.push_back(4 * e + corner);
        }
        glGenVertexArrays(1, &mVertexArray);
        glBindVertexArray(mVertexArray);
        const GLuint positions = Buffer(GL_ARRAY_BUFFER, verts);
        glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
        Buffer(GL_ARRAY_BUFFER, normals);
        glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
        glEnableVertexAttribArray(0);
        glEnableVertexAttribArray(1);
        mIndices = Buffer(GL_ELEMENT_ARRAY_BUFFER, triangles);
        mLineIndices = Buffer(GL_ELEMENT_ARRAY_BUFFER, quads);
        mNumIndices = GLsizei(triangles.size());
        mNumLineIndices = GLsizei(quads.size());
        mTextures[0] = BufferTexture(GL_R32F, positions);
        mTextures[1] = BufferTexture(GL_RG32I, Buffer(GL_TEXTURE_BUFFER, pairs));
    }

    // Values by name, wherever the block has them.
    void MakeFrameBlock(const View& view)
    {
        GLint size = 0;
        glGetActiveUniformBlockiv(mSurface.Id(), 0, GL_UNIFORM_BLOCK_DATA_SIZE, &size);
        std::vector<float> block(std::size_t(size) / sizeof(float));
        const auto set = [&](const std::string& name, const std::vector<float>& values)
        {
            const char* const text = name.c_str();
            GLuint index = 0;
            GLint offset = -1;
            glGetUniformIndices(mSurface.Id(), 1, &text, &index);
            if (index != GL_INVALID_INDEX)
                glGetActiveUniformsiv(mSurface.Id(), 1, &index, GL_UNIFORM_OFFSET, &offset);
            if (offset >= 0)
                std::memcpy(block.data() + offset / 4, values.data(), values.size() * sizeof(float));
        };
        set("uProjection", {view.projection[0], view.projection[0] + 16});
        set("uViewport", {kWidth, kHeight, 1, 0});
        set("uUp", {0, 1, 0, 3});
        set("uSky", {0.12f, 0.125f, 0.135f, 0});
        set("uFloor", {0.068f, 0.064f, 0.06f, 0});
        set("uTile", {1, 1, 0, 0});
        for (int i = 0; i < 3; ++i)
        {
            const std::string light = "uLights[" + std::to_string(i) + "].";
            const VERTEX to = kLightRig[i].toLight * (1 / Length(kLightRig[i].toLight)), color = kLightRig[i].color;
            VERTEX halfway = to + VERTEX{0, 0, 1};
            halfway = halfway * (1 / Length(halfway));
            set(light + "position", {to.x, to.y, to.z, 0});
            set(light + "color", {color.x, color.y, color.z, 0});
            set(light + "axis", {halfway.x, halfway.y, halfway.z, -2});
        }
        mBlock = Buffer(GL_UNIFORM_BUFFER, block);
    }

    void SetUniforms(const View& view)
    {
        Mat44 modelView, toClip;
        MAT_Copy(view.toView, modelView);
        MAT_Concat4x4(modelView, view.projection, toClip);
        float normal[9];
        for (int i = 0; i < 9; ++i)
            normal[i] = modelView[i / 3][i % 3];
        for (Program* const program : {&mSurface, &mLines})
        {
            glUseProgram(program->Id());
            glUniformMatrix4fv(program->Uniform("uModelView"), 1, GL_FALSE, modelView[0]);
            glUniformMatrix4fv(program->Uniform("uToClip"), 1, GL_FALSE, toClip[0]);
            glUniformMatrix3fv(program->Uniform("uNormalMatrix"), 1, GL_FALSE, normal);
            glUniform1i(program->Uniform("uBackPicture"), 15);
        }
        glUseProgram(mSurface.Id());
        glUniform3f(mSurface.Uniform("uKd"), 0.45f, 0.44f, 0.42f);
        glUniform3f(mSurface.Uniform("uKs"), 0.02f, 0.02f, 0.02f);
        glUniform3f(mSurface.Uniform("uBack"), 0.35f, 0.15f, 0.11f);
        glUniform1f(mSurface.Uniform("uNs"), 50);
        glUseProgram(mLines.Id());
        glUniform1i(mLines.Uniform("uPositions"), 1);
        glUniform1i(mLines.Uniform("uSegments"), 3);
        glUniform1f(mLines.Uniform("uWidth"), 1.25f);
        glUniform1f(mLines.Uniform("uBias"), 4e-4f);
        glUniform4f(mLines.Uniform("uLineColor"), 0, 0, 0, 0.8f);
        glUniform4f(mLines.Uniform("uFade"), 9, 0.22f, 0, 0);
    }

    Program mSurface, mLines;
    GLuint mVertexArray = 0, mIndices = 0, mLineIndices = 0, mTextures[2] = {}, mBlock = 0;
    GLsizei mNumIndices = 0, mNumLineIndices = 0;
};

void BareProgram(benchmark::State& state)
{
    Stage stage; // for its context, its target and the mesh as it is derived
    AddObject(stage.preview, Model());
    BString problem = stage.Open();
    Bare bare;
    if (problem.IsEmpty())
        problem = bare.Build(*stage.preview.Scene().Object(0)->Geom(), stage.view);
    if (!problem.IsEmpty())
        return state.SkipWithError(problem.CString());
    stage.target.Bind();
    bare.Draw(); // the driver compiles
    for (auto _ : state)
        state.SetIterationTime(SecondsOf([&] { bare.Draw(); }));
}

#ifdef VELMAR_WITH_SKIA
/// Fifty shapes and ten lines of text.
class Panel : public Overlay
{
protected:
    Size Measure(const OverlayFrame&) override { return {640, 400}; }
    void Paint(SkCanvas& canvas, const OverlayFrame&, const Size& size) override
    {
        SkPaint paint;
        paint.setAntiAlias(true);
        paint.setTypeface(mFace);
        paint.setTextSize(16);
        for (int i = 0; i < 50; ++i)
        {
            paint.setColor(SkColorSetARGB(160, 40 + 4 * i, 90, 220 - 3 * i));
            const float x = float(i * 37 % (size.width - 60)), y = float(i * 53 % (size.height - 40));
            if (i % 2 == 0)
                canvas.drawCircle(x + 20, y + 20, 18, paint);
            else
                canvas.drawRoundRect(SkRect::MakeXYWH(x, y, 58, 34), 6, 6, paint);
        }
        paint.setColor(SK_ColorBLACK);
        for (int i = 0; i < 10; ++i)
        {
            const std::string words = "Line " + std::to_string(i) + ": what an overlay of a preview tells";
            canvas.drawText(words.data(), words.size(), 20, float(40 + 36 * i), paint);
        }
    }

private:
    static sk_sp<SkTypeface> Face()
    {
        const BArray<BPath> fonts = SystemSansFonts();
        const sk_sp<SkFontMgr> manager(SkFontMgr::RefDefault());
        return sk_sp<SkTypeface>(fonts.IsEmpty() ? nullptr : manager->createFromFile(fonts[0].FullPath().CString()));
    }
    sk_sp<SkTypeface> mFace = Face();
};

void WithOverlay(benchmark::State& state)
{
    Stage stage;
    AddObject(stage.preview, Model());
    stage.preview.Scene().AddObject2D(new Panel);
    Run(state, stage);
}
BENCHMARK(WithOverlay)->Name("Frame/with-overlay")->Unit(benchmark::kMillisecond)->UseManualTime();
#endif

// --- Many objects

constexpr int kSide = 10, kNumObjects = kSide * kSide * kSide;

TestMesh Part(int i)
{
    const VERTEX place = {float(i % kSide), float(i / kSide % kSide), float(i / kSide / kSide)};
    return Moved(Torus(25, 20), place * 3.0f);
}

void Thousand(benchmark::State& state)
{
    Stage stage;
    for (int i = 0; i < kNumObjects; ++i)
        AddObject(stage.preview, Part(i));
    Run(state, stage);
}

void One(benchmark::State& state)
{
    TestMesh all;
    for (int i = 0; i < kNumObjects; ++i)
    {
        const TestMesh part = Part(i);
        const int first = int(all.verts.size());
        all.verts.insert(all.verts.end(), part.verts.begin(), part.verts.end());
        for (std::vector<int> face : part.faces)
        {
            for (int& v : face)
                v += first;
            all.faces.push_back(std::move(face));
        }
    }
    Stage stage;
    AddObject(stage.preview, all);
    Run(state, stage);
}
} // namespace

BENCHMARK(Ours)->Name("Frame/velmar")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(BareProgram)->Name("Frame/bare")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(Thousand)->Name("Objects/thousand")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(One)->Name("Objects/one")->Unit(benchmark::kMillisecond)->UseManualTime();
