// VelmarBase: command line.
#include "Subdivision.h"

#include "base/GEOM.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "engine/VXSwitches.h"
#include "host/import/ElementParts.h"
#include "mesh/VXGeom.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace vx::cli
{

// Faces of the last level have four corners each, and edges, corners and their tables are counted with 32 bits.
static constexpr std::int64_t kMostPolygons = INT32_MAX / 8;
static constexpr std::int64_t kBytesPerPolygon = 300; // record, edges and normals

// What the library refines with OpenSubdiv: corners of a polygon, and polygons at a vertex.
static constexpr std::int32_t kMostAtOnce = 32767;

const std::vector<std::string>& SchemeNames()
{
    // The switch begins on where OpenSubdiv is compiled in.
    static const std::vector<std::string> names = VXSwitches::OpenSubdivOn()
                                                      ? std::vector<std::string>{kOpenSubdiv, kOwnScheme}
                                                      : std::vector<std::string>{kOwnScheme};
    return names;
}

CLI::Option* AddScheme(CLI::App& verb, std::string& scheme)
{
    const auto check = [](const std::string& text)
    {
        const bool lacking = text == kOpenSubdiv && SchemeNames().front() != kOpenSubdiv;
        return lacking ? "this program was built without OpenSubdiv, expected " + Listed(SchemeNames()) : "";
    };
    scheme = SchemeNames().front();
    return verb
        .add_option("--scheme", scheme,
                    "Rules of subdivision: OpenSubdiv's, or the library's own, which keep "
                    "borders where they are")
        ->type_name(std::string(kOpenSubdiv) + "|" + kOwnScheme)
        ->check(CLI::Validator(check, ""))
        ->check(Choice("scheme of subdivision", {kOpenSubdiv, kOwnScheme}))
        ->capture_default_str();
}

BString SubdivisionProblem(const GEOM& record, int levels, bool ownScheme)
{
    std::int64_t polygons = 0;
    std::int32_t mostCorners = 0;
    std::vector<std::int32_t> faces(std::size_t(record.numVerts));
    for (std::int32_t i = 0; i < record.numPolys; ++i)
    {
        const ELEMENT& poly = *record.Poly(i);
        mostCorners = std::max(mostCorners, std::int32_t(poly.length)); // a copy: packed fields have no address
        polygons += poly.length;
        for (std::int32_t k = 0; k < poly.length; ++k)
            ++faces[std::size_t(record.sets[poly.start + k])];
    }
    int most = 0; // the last level that fits
    std::int64_t there = polygons;
    while (there <= kMostPolygons && ++most < levels)
        there *= 4;
    if (most < levels)
        return BString::Format("level %d would make more than %lld polygons, expected a level up to %d", levels,
                               static_cast<long long>(kMostPolygons), most);
    if (!ownScheme && mostCorners > kMostAtOnce)
        return BString::Format("a polygon has %d corners, expected at most %d with OpenSubdiv; --scheme %s takes more",
                               mostCorners, kMostAtOnce, kOwnScheme);
    const std::int32_t mostFaces = faces.empty() ? 0 : *std::max_element(faces.begin(), faces.end());
    if (!ownScheme && mostFaces > kMostAtOnce)
        return BString::Format(
            "a vertex is in %d polygons, expected at most %d with OpenSubdiv; --scheme %s takes more", mostFaces,
            kMostAtOnce, kOwnScheme);
    // What the system could never give, it refuses when asked for it at once.
    void* const probe = MEM_Alloc(1, std::size_t(there * kBytesPerPolygon));
    MEM_Free(probe);
    return probe ? BString() : BString::Format("level %d does not fit into memory, expected a lower one", levels);
}

BString SubdivisionProblem(const VXScene& scene, int levels, bool ownScheme)
{
    for (std::int64_t i = 0; levels > 0 && i < scene.NumObjects(); ++i)
    {
        const VXObject* const object = scene.Object(int(i));
        if (!object || !object->Geom() || !object->Geom()->Geom() || object->InternalName() == "GROUND" ||
            !HasElements(*object->Geom()->Geom(), ElementPart::Faces))
            continue;
        const BString problem = SubdivisionProblem(*object->Geom()->Geom(), levels, ownScheme);
        if (!problem.IsEmpty())
            return object->ExternalName() + ": " + problem;
    }
    return {};
}

} // namespace vx::cli
