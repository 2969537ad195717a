// A page of 2,000 characters as a mesh, beside what FreeType and the GLU tessellator need for its distinct glyphs
// alone, and beside FTGL's polygon font, which draws the page into an OpenGL context.

#include "base/BText.h"
#include "host/gl/Framebuffer.h"
#include "host/window/OffscreenContext.h"
#include "mesh/VXGeom.h"
#include "text/VXFTFace.h"
#include "text/detail/Glu.h"
#include "text/detail/TextPage.h"

#include <FTGL/ftgl.h>
#include <benchmark/benchmark.h>

#include <set>
#include <string>
#include <vector>

namespace
{
constexpr const char* kFont = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

// Lines of 80 characters in which every printable one of ASCII comes up as often as any other.
const std::string& Page()
{
    static const std::string page = []
    {
        std::string text;
        for (int i = 0; i < 2000; ++i)
            text += i % 80 == 79 ? '\n' : char(33 + (i * 37 + i / 94) % 94);
        return text;
    }();
    return page;
}

VXFTFace& Face()
{
    static VXFTFace face(kFont);
    VXGeom::SetupFreeType();
    face.GetFTFace();
    return face;
}

void Velmar(benchmark::State& state)
{
    VXFTFace& face = Face();
    for (auto _ : state)
    {
        VXGeom mesh;
        mesh.BuildStrGlyphs(Page().c_str(), &face, 1, "Text", false, false);
        if (mesh.NumPolys() < 10000)
            state.SkipWithError("the page is not there");
        benchmark::DoNotOptimize(mesh.Geom());
    }
}
BENCHMARK(Velmar)->Name("Text/velmar")->Unit(benchmark::kMillisecond);

// Without edges and normals, which nobody beside makes.
void VelmarMesh(benchmark::State& state)
{
    const FT_Face face = Face().GetFTFace();
    BArray<std::uint32_t> codes;
    ConvertUTF8toUTF32(Page().data(), std::int64_t(Page().size()), codes);
    for (auto _ : state)
    {
        const vx::PagePtr page = vx::WriteTextPage(codes, face, 1, false, nullptr, nullptr);
        benchmark::DoNotOptimize(page->verts);
    }
}
BENCHMARK(VelmarMesh)->Name("Text/velmar-mesh")->Unit(benchmark::kMillisecond);

// --- FreeType and GLU alone

/// The least that makes triangles of an outline: contours by FreeType, five pieces for each curve, points by pointer.
struct Bare
{
    struct Point
    {
        double at[3];
    };
    std::vector<Point> points;
    std::vector<std::size_t> ends;
    std::vector<Point*> crossings;
    std::size_t given = 0;

    static Point Of(const FT_Vector* v) { return {{double(v->x) / 2, double(v->y) / 2, 0}}; }
    static int Move(const FT_Vector* to, void* user)
    {
        Bare& self = *static_cast<Bare*>(user);
        if (!self.points.empty())
            self.ends.push_back(self.points.size());
        self.points.push_back(Of(to));
        return 0;
    }
    static int Line(const FT_Vector* to, void* user)
    {
        static_cast<Bare*>(user)->points.push_back(Of(to));
        return 0;
    }
    static int Conic(const FT_Vector* control, const FT_Vector* to, void* user)
    {
        Bare& self = *static_cast<Bare*>(user);
        const Point a = self.points.back(), b = Of(control), c = Of(to);
        for (int i = 1; i <= 5; ++i)
        {
            const double t = i / 5.0, s = 1 - t;
            self.points.push_back({{s * s * a.at[0] + 2 * s * t * b.at[0] + t * t * c.at[0],
                                    s * s * a.at[1] + 2 * s * t * b.at[1] + t * t * c.at[1], 0}});
        }
        return 0;
    }
    static int Cubic(const FT_Vector*, const FT_Vector*, const FT_Vector*, void*) { return 1; } // not in this font

    static void VELMAR_GLU_CALL Begin(GLenum, void*) {}
    static void VELMAR_GLU_CALL Vertex(void*, void* user) { ++static_cast<Bare*>(user)->given; }
    static void VELMAR_GLU_CALL End(void*) {}
    static void VELMAR_GLU_CALL Combine(GLdouble at[3], void* [4], GLfloat[4], void** out, void* user)
    {
        Point* const point = new Point{{at[0], at[1], 0}};
        static_cast<Bare*>(user)->crossings.push_back(point);
        *out = point;
    }

    void Make(FT_Face face, FT_UInt glyph, GLUtesselator* tess)
    {
        points.clear();
        ends.clear();
        FT_Load_Glyph(face, glyph, FT_LOAD_NO_SCALE | FT_LOAD_NO_BITMAP);
        FT_Outline_Funcs calls{Move, Line, Conic, Cubic, 1, 0};
        FT_Outline_Decompose(&face->glyph->outline, &calls, this);
        ends.push_back(points.size());
        gluTessBeginPolygon(tess, this);
        std::size_t i = 0;
        for (const std::size_t end : ends)
        {
            gluTessBeginContour(tess);
            for (; i < end; ++i)
                gluTessVertex(tess, points[i].at, &points[i]);
            gluTessEndContour(tess);
        }
        gluTessEndPolygon(tess);
        for (const Point* const point : crossings)
            delete point;
        crossings.clear();
    }
};

void FreeTypeAndGlu(benchmark::State& state)
{
    const FT_Face face = Face().GetFTFace();
    std::set<FT_UInt> glyphs;
    for (const char c : Page())
        if (c != '\n')
            glyphs.insert(FT_Get_Char_Index(face, FT_ULong(c)));
    GLUtesselator* const tess = gluNewTess();
    gluTessCallback(tess, GLU_TESS_BEGIN_DATA, reinterpret_cast<vx::GluCall>(Bare::Begin));
    gluTessCallback(tess, GLU_TESS_VERTEX_DATA, reinterpret_cast<vx::GluCall>(Bare::Vertex));
    gluTessCallback(tess, GLU_TESS_END_DATA, reinterpret_cast<vx::GluCall>(Bare::End));
    gluTessCallback(tess, GLU_TESS_COMBINE_DATA, reinterpret_cast<vx::GluCall>(Bare::Combine));
    gluTessProperty(tess, GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_NONZERO);
    gluTessNormal(tess, 0, 0, 1);
    for (auto _ : state)
    {
        Bare bare;
        for (const FT_UInt glyph : glyphs)
            bare.Make(face, glyph, tess);
        benchmark::DoNotOptimize(bare.given);
    }
    gluDeleteTess(tess);
}
BENCHMARK(FreeTypeAndGlu)->Name("Text/freetype-glu")->Unit(benchmark::kMillisecond);

// --- FTGL

// A font of its own for each page, as the mesh has nothing kept either.
void Ftgl(benchmark::State& state)
{
    vx::OffscreenContext context;
    vx::Framebuffer target;
    if (!context.Create() || !target.Create(256, 256, 1).IsEmpty())
    {
        state.SkipWithError("no OpenGL");
        return;
    }
    target.Bind();
    for (auto _ : state)
    {
        FTPolygonFont font(kFont);
        font.FaceSize(72);
        double y = 0;
        for (std::size_t at = 0; at < Page().size(); at += 80, y -= 84)
            font.Render(Page().substr(at, 79).c_str(), -1, FTPoint(0, y));
        glFinish();
    }
}
BENCHMARK(Ftgl)->Name("Text/ftgl")->Unit(benchmark::kMillisecond);
} // namespace
