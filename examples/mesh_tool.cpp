// How does a program use the mesh side alone, without a scene and without drawing?
//
// mesh_tool MODEL.obj [CREASE-ANGLE]: reads a model, finds its edges and creases, prints a few numbers.
#include "mesh/VXGeom.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

// Area of a polygon from its corners, half the length of the sum of their cross products. The cursor reads any polygon
// corner by corner, whatever its number of corners.
static double PolygonArea(VXGeom& mesh, int poly)
{
    double sum[3] = {};
    mesh.BeginPolyVertexLoop(poly);
    const VERTEX *first = mesh.NextPolyVert(), *before = mesh.NextPolyVert();
    while (const VERTEX* corner = before ? mesh.NextPolyVert() : nullptr)
    {
        const double a[3] = {double(before->x) - first->x, double(before->y) - first->y, double(before->z) - first->z};
        const double b[3] = {double(corner->x) - first->x, double(corner->y) - first->y, double(corner->z) - first->z};
        for (int k = 0; k < 3; ++k)
            sum[k] += a[(k + 1) % 3] * b[(k + 2) % 3] - a[(k + 2) % 3] * b[(k + 1) % 3];
        before = corner;
    }
    return 0.5 * std::sqrt(sum[0] * sum[0] + sum[1] * sum[1] + sum[2] * sum[2]);
}

int main(int argc, char** argv)
{
    if (argc < 2)
    {
        std::fprintf(stderr, "usage: mesh_tool MODEL.obj [CREASE-ANGLE]\n");
        return 2;
    }

    VXGeom mesh;
    mesh.SetCreaseAngle(argc > 2 ? float(std::atof(argv[2])) : 40); // before reading: creases are derived right away
    GEOM_ReadReport report;
    if (mesh.ReadWavefront(argv[1], nullptr, &report) != 0)
    {
        std::fprintf(stderr, "%s:%lld: %s\n", argv[1], static_cast<long long>(report.errorLine),
                     report.error.CString());
        return 1;
    }

    double area = 0;
    for (int i = 0; i < mesh.NumPolys(); ++i)
        area += mesh.Polygon(i)->IsFace() ? PolygonArea(mesh, i) : 0;

    int open = 0, creases = 0;
    double creaseLength = 0;
    for (const VXEdge *edge = mesh.EdgeList().Edges(), *end = edge + mesh.EdgeList().GetEdgeCount(); edge != end;
         ++edge)
    {
        if (!mesh.Polygon(edge->PolyIndex1())->IsFace())
            continue; // of a line element
        open += edge->IsOpenEdge();
        if (edge->IsCreaseEdge() && !edge->IsSmoothEdge()) // with both, it is the seam of a texture
        {
            const VERTEX &a = *mesh.Vertex(edge->VertIndex1()), &b = *mesh.Vertex(edge->VertIndex2());
            creaseLength += std::hypot(double(a.x) - b.x, double(a.y) - b.y, double(a.z) - b.z);
            ++creases;
        }
    }

    std::printf("polygons %d, area %.4f\n", mesh.NumPolys(), area);
    std::printf("edges %d, open %d, creases %d of length %.4f\n", mesh.EdgeList().GetEdgeCount(), open, creases,
                creaseLength);
    std::printf("vertices %d, and %d more where creases part them\n", mesh.NumVerts(false), mesh.NumbCreaseVerts());
    return 0;
}
