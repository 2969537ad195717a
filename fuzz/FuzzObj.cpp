// Any bytes given to the OBJ reader end in an error with its reason, or in a record whose indices hold and from which
// everything can be derived.
#include "mesh/VXGeom.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

static void Require(bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "broken promise: %s\n", what);
    std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    GEOM_ReadReport report;
    GEOM* const geom = GEOM_ReadObjText(reinterpret_cast<const char*>(data), size, nullptr, &report);
    Require((geom == nullptr) == !report.error.IsEmpty(), "an error has a reason, a record has none");
    Require(report.errorLine <= report.lines + 1, "the error's line is a line of the file");
    if (!geom)
        return 0;

    int repairs = 0;
    Require(GEOM_VerifyAndFix(geom, &repairs) == 0 && repairs == 0, "a record needs no repair");

    VXGeom mesh;
    Require(mesh.SetGeom(geom, false) == 0, "derives edges and normals");
    mesh.SetGeomShared(false); // the mesh frees the record
    mesh.GenerateCreaseData();
    mesh.SortGeomData();
    for (int i = 0; i < mesh.NumPolys(); ++i)
    {
        int corners = 0;
        for (mesh.BeginPolyVertexLoop(i); mesh.NextPolyVert();)
            ++corners;
        Require(corners == mesh.PolyLength(i), "the cursor visits every corner");
    }
    return 0;
}
