// Any bytes given to the OBJ reader end in an error with its reason, or in a record whose indices hold, from which
// everything can be derived, and which reads back the same from what the writer makes of it.
#include "mesh/VXGeom.h"
#include "tests/base/GeomText.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>

static void Require(bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "broken promise: %s\n", what);
    std::abort();
}

static const BPath& ScratchPath()
{
    static const BPath path = BPath(std::filesystem::temp_directory_path().c_str())
                                  .Joined(Named("velmar-fuzz-", std::int64_t(std::random_device()())).c_str());
    return path;
}

static void RequireRoundTrip(const GEOM* geom)
{
    BFile out(ScratchPath());
    Require(out.Open(BFile::Mode::Write) == 0 && GEOM_WriteObjFile(geom, out) == 0 && out.Close() == 0,
            "a record can be written");
    BFile in(ScratchPath());
    Require(in.Open(BFile::Mode::Read) == 0, "what was written can be opened");
    const GeomPtr back(GEOM_ReadObjFile(in));
    Require(back && RecordText(back.get()) == RecordText(geom), "a record reads back the same");
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    GEOM_ReadReport report;
    GEOM* const geom = GEOM_ReadObjText(reinterpret_cast<const char*>(data), size, nullptr, &report);
    Require((geom == nullptr) == !report.error.IsEmpty(), "an error has a reason, a record has none");
    Require(report.errorLine <= 1 + std::count(data, data + size, '\n'), "the error's line is a line of the file");
    if (!geom)
        return 0;

    int repairs = 0;
    Require(GEOM_VerifyAndFix(geom, &repairs) == 0 && repairs == 0, "a record needs no repair");

    Require(GEOM_MemoryUsed(geom) <= 200 * size + (32u << 20), "memory stays a small multiple of the text");
    if (size % 8 == 0 && report.groupsLeftOut == 0) // files are slow: one input in eight
        RequireRoundTrip(geom);

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
