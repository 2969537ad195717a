// Records and comparisons that the tests of edges, creases and normals share.
#pragma once

#include "mesh/VXEdgeList.h"
#include "mesh/VXGeom.h"
#include "tests/support/Meshes.h"

#include <array>
#include <cmath>
#include <random>
#include <vector>

/// A polygon of any type as plain lists.
struct TestPoly
{
    std::uint8_t type;
    std::vector<int> corners;
};

inline GeomPtr RecordOf(int numVerts, const std::vector<TestPoly>& polys)
{
    int corners = 0;
    for (const TestPoly& poly : polys)
        corners += int(poly.corners.size());
    GeomPtr g(GEOM_Alloc());
    g->SetSize(int(polys.size()), numVerts, corners, 0, 0, 0);
    std::int32_t start = 0;
    for (std::size_t i = 0; i < polys.size(); ++i)
    {
        ELEMENT* const e = g->Poly(std::int64_t(i));
        e->start = start;
        e->length = std::int32_t(polys[i].corners.size());
        e->type = polys[i].type;
        std::copy(polys[i].corners.begin(), polys[i].corners.end(), g->sets + start);
        start += e->length;
    }
    return g;
}

/// Polygons of every type with few vertices, so that edges have none, one, two or many polygons, corners repeat, and
/// polygons pass the same edge more than once.
inline std::vector<TestPoly> RandomPolys(std::mt19937& random, int numVerts, int count)
{
    constexpr std::uint8_t kTypes[] = {kElementFace, kElementFace, kElementFaceAlso, kElementLine, kElementPoint, 4};
    std::vector<TestPoly> polys(static_cast<std::size_t>(count));
    for (TestPoly& poly : polys)
    {
        poly.type = kTypes[random() % std::size(kTypes)];
        poly.corners.resize(random() % 7);
        for (int& v : poly.corners)
            v = int(random() % unsigned(numVerts));
    }
    return polys;
}

/// All that an edge holds, crease data apart.
using EdgeRow = std::array<std::int64_t, 10>;

inline EdgeRow RowOf(const VXEdge& e)
{
    return {e.PolyIndex1(),   e.PolyIndex2(),   e.VertIndex1(),   e.VertIndex2(), e.RelIndexP1V1(),
            e.RelIndexP1V2(), e.RelIndexP2V1(), e.RelIndexP2V2(), e.Flags(),      e.EdgeIndex()};
}

inline std::vector<EdgeRow> RowsOf(const VXEdgeList& list)
{
    std::vector<EdgeRow> rows;
    for (std::int32_t e = 0; e < list.GetEdgeCount(); ++e)
        rows.push_back(RowOf(list.GetEdge(e)));
    return rows;
}

/// The edges on each vertex's chain, newest first.
inline std::vector<std::vector<std::int32_t>> ChainsOf(const VXEdgeList& list)
{
    std::vector<std::vector<std::int32_t>> chains(std::size_t(list.GetVertexLinkCount()));
    for (std::size_t v = 0; v < chains.size(); ++v)
        for (std::int32_t l = list.GetFirstVertexLink(std::int32_t(v)); l >= 0; l = list.GetNextVertexLink(l))
            chains[v].push_back(list.GetEdgefromVertexLink(l));
    return chains;
}

/// The list that adding edge by edge gives.
inline VXEdgeList AddedOneByOne(const GEOM& g)
{
    VXEdgeList list;
    list.Begin(g.numVerts);
    for (int p = 0; p < g.numPolys; ++p)
    {
        const ELEMENT& e = *g.Poly(p);
        const std::int32_t* const ring = g.sets + e.start;
        if (e.length < 2)
            continue;
        for (int k = 0; k + 1 < e.length; ++k)
            list.AddEdge(std::uint32_t(ring[k]), std::uint32_t(ring[k + 1]), std::uint32_t(p), 0, 0, k, k + 1,
                         e.IsFace());
        if (e.IsFace())
            list.AddEdge(std::uint32_t(ring[e.length - 1]), std::uint32_t(ring[0]), std::uint32_t(p), 0, 0,
                         e.length - 1, 0, true);
    }
    list.End();
    return list;
}

/// A grid of n * n quads whose vertices have random heights, so that some of its edges are hard and others are not.
/// Every third quad is wound the other way when `mixedWinding` is set.
inline TestMesh RoughGrid(int n, unsigned seed, float height, bool mixedWinding = false)
{
    TestMesh mesh = Grid(n, n);
    std::mt19937 random(seed);
    for (VERTEX& v : mesh.verts)
        v.z = height * float(random() % 1000) / 1000;
    for (std::size_t f = 0; mixedWinding && f < mesh.faces.size(); f += 3)
    {
        std::reverse(mesh.faces[f].begin(), mesh.faces[f].end());
        if (!mesh.uvs.empty())
            std::reverse(mesh.uvs.begin() + std::ptrdiff_t(4 * f), mesh.uvs.begin() + std::ptrdiff_t(4 * f + 4));
    }
    return mesh;
}

inline float Distance(const VERTEX& a, const VERTEX& b) { return Length(a - b); }
