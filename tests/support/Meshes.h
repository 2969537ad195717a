// Small meshes that tests and benchmarks build by hand.
#pragma once

#include "base/GEOM.h"

#include <memory>
#include <string>
#include <vector>

/// Frees a record at the end of its owner's life.
struct GeomDeleter
{
    void operator()(GEOM* g) const { GEOM_Free(g); }
};
using GeomPtr = std::unique_ptr<GEOM, GeomDeleter>;

/// A named mesh as plain lists: what a test writes down. Face corners index verts; uvs, when given, has one entry per
/// corner in the same order.
struct TestMesh
{
    std::string name;
    std::vector<VERTEX> verts;
    std::vector<std::vector<int>> faces;
    std::vector<T_VERTEX> uvs = {};

    GeomPtr Record() const; ///< as a mesh record; every face of type 0, smoothing word 0, material 0 named "Default"
};

TestMesh Cube();                  ///< side 2 about the origin, six quads wound outwards
TestMesh OpenBox();               ///< the cube without its top
TestMesh Fan(int n);              ///< n triangles around vertex 0, closed
TestMesh ConcaveL();              ///< one six-cornered polygon in the plane z = 0
TestMesh BentQuad();              ///< one quad whose corners are not in a plane
TestMesh MoebiusStrip(int n);     ///< n quads, one boundary, no consistent winding
TestMesh TwoCubesSharingAnEdge(); ///< one edge with four faces
TestMesh Sliver();                ///< a triangle without area beside a good one
TestMesh EmptyMesh();
TestMesh Grid(int nx, int ny);                   ///< nx * ny unit quads in the plane z = 0, with UVs
TestMesh Torus(int nu, int nv, bool uvs = true); ///< nu * nv quads, closed; UV seams where u and v wrap

TestMesh Moved(TestMesh mesh, const VERTEX& by);
TestMesh Scaled(TestMesh mesh, float factor);
TestMesh Mirrored(TestMesh mesh); ///< x negated, winding reversed: still outwards
TestMesh Repeated(const TestMesh& mesh, int copies, const VERTEX& step); ///< separate shells
TestMesh Shuffled(TestMesh mesh, unsigned seed);                         ///< polygons and vertices in random order
