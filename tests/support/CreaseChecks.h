// What the tests of creases share.
#pragma once

#include "tests/support/EdgeMeshes.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>

struct CreaseOptions
{
    float angle = 80;
    bool useAngle = true;
};

inline std::unique_ptr<VXGeom> CreasedGeom(const GEOM& record, const CreaseOptions& options = {})
{
    auto geom = std::make_unique<VXGeom>();
    geom->SetCreaseAngle(options.angle);
    geom->SetUseCreaseAngle(options.useAngle);
    EXPECT_EQ(geom->SetGeom(const_cast<GEOM*>(&record), true), 0);
    return geom;
}

/// What holds of every mesh: crease vertices copy their originals, are all used, and the edges name them.
inline void ExpectConsistent(const VXGeom& geom)
{
    const GEOM& g = *geom.Geom();
    std::set<int> used;
    for (std::int64_t c = 0; c < g.NumCorners(); ++c)
    {
        ASSERT_LT(geom.CreaseSets()[c], geom.NumVerts(true));
        ASSERT_EQ(geom.OrigVertIndex(geom.CreaseSets()[c]), g.sets[c]) << "corner " << c;
        used.insert(geom.CreaseSets()[c]);
    }
    for (int v = g.numVerts; v < geom.NumVerts(true); ++v)
    {
        EXPECT_TRUE(used.contains(v)) << v;
        EXPECT_EQ(g.verts[v], g.verts[geom.OrigVertIndex(v)]) << v;
    }
    for (int e = 0; e < geom.EdgeList().GetEdgeCount(); ++e)
    {
        const VXEdge& edge = geom.EdgeList().GetEdge(e);
        const std::int32_t* const ring1 = geom.CreaseSets() + g.Poly(edge.PolyIndex1())->start;
        EXPECT_EQ(edge.CreaseVertexP1V1(false), ring1[edge.RelIndexP1V1()]) << e;
        EXPECT_EQ(edge.CreaseVertexP1V2(false), ring1[edge.RelIndexP1V2()]) << e;
        if (edge.IsOpenEdge())
            continue;
        const std::int32_t* const ring2 = geom.CreaseSets() + g.Poly(edge.PolyIndex2())->start;
        EXPECT_EQ(edge.CreaseVertexP2V1(false), ring2[edge.RelIndexP2V1()]) << e;
        EXPECT_EQ(edge.CreaseVertexP2V2(false), ring2[edge.RelIndexP2V2()]) << e;
    }
}
