#include "mesh/kernel/Refiner.h"

#include "base/BArray.h"

#include <opensubdiv/far/primvarRefiner.h>
#include <opensubdiv/far/topologyDescriptor.h>
#include <opensubdiv/far/topologyRefinerFactory.h>

#include <algorithm>
#include <vector>

namespace Far = OpenSubdiv::Far;
namespace Sdc = OpenSubdiv::Sdc;

namespace vx
{

namespace
{
constexpr std::int32_t kSharp = -1; // in place of a face, or of a valence

/// Where the point of an edge comes from.
struct EdgeSource
{
    std::int32_t verts[2];
    std::int32_t faces[2]; ///< kSharp: from the two ends alone, as at borders and where more than two faces meet
};

/// One level of refinement as far as positions need it: OpenSubdiv's tables copied into streams that are read from
/// front to back, without the weights, which are few. Meshes without creases of their own have three kinds of vertices:
/// smooth ones, those on a sharp line, and corners.
struct Step
{
    std::int32_t numVerts = 0, numFaces = 0;                     ///< of the coarser level
    std::int32_t facePoints = 0, edgePoints = 0, vertPoints = 0; ///< where each kind begins in the finer level
    BArray<std::int32_t> lengths;                                ///< corners of each face; empty when all have four
    BArray<std::int32_t> corners;                                ///< vertex of each corner
    BArray<EdgeSource> edges;
    /// For each vertex: its valence, its faces and the vertices across its edges; or kSharp and the two neighbours on
    /// the sharp line; or 0, for a corner.
    BArray<std::int32_t> rings;

    /// False when memory ran out, or when some vertex has no mask.
    bool Fill(const Far::TopologyLevel& level);
    std::size_t MemoryUsed() const
    {
        return std::size_t(lengths.Capacity() + corners.Capacity() + rings.Capacity()) * sizeof(std::int32_t) +
               std::size_t(edges.Capacity()) * sizeof(EdgeSource);
    }
};

void FillFaces(const Far::TopologyLevel& level, Step& step)
{
    std::int32_t* corner = step.corners.Data();
    bool allQuads = true;
    for (Far::Index f = 0; f < step.numFaces; ++f)
    {
        const Far::ConstIndexArray verts = level.GetFaceVertices(f);
        corner = std::copy(verts.begin(), verts.end(), corner);
        step.lengths.Data()[f] = verts.size();
        allQuads = allQuads && verts.size() == 4;
    }
    if (allQuads)
        step.lengths.Release();
}

void FillEdges(const Far::TopologyLevel& level, Step& step)
{
    for (Far::Index e = 0; e < level.GetNumEdges(); ++e)
    {
        const Far::ConstIndexArray verts = level.GetEdgeVertices(e), faces = level.GetEdgeFaces(e);
        const bool sharp = level.GetEdgeSharpness(e) > 0 || faces.size() != 2;
        step.edges.Data()[e] = {{verts[0], verts[1]}, {sharp ? kSharp : faces[0], sharp ? kSharp : faces[1]}};
    }
}

// Whether there is a mask for what lies around a vertex. Where a polygon runs over one vertex or edge more than once
// there may be none; OpenSubdiv asserts that this does not happen, and then interpolates with weights that nobody has
// set.
bool HasMask(const Far::TopologyLevel& level, Far::Index v)
{
    const Far::ConstIndexArray edges = level.GetVertexEdges(v);
    switch (level.GetVertexRule(v))
    {
    case Sdc::Crease::RULE_CORNER:
        return true;
    case Sdc::Crease::RULE_CREASE:
        return std::count_if(edges.begin(), edges.end(),
                             [&level](Far::Index e) { return level.GetEdgeSharpness(e) > 0; }) == 2;
    default:
        return edges.size() > 0 && level.GetVertexFaces(v).size() == edges.size();
    }
}

// For a vertex that has a mask. Returns the end of what was written.
std::int32_t* FillRing(const Far::TopologyLevel& level, Far::Index v, std::int32_t* out)
{
    const Far::ConstIndexArray faces = level.GetVertexFaces(v), edges = level.GetVertexEdges(v);
    const Sdc::Crease::Rule rule = level.GetVertexRule(v);
    if (rule == Sdc::Crease::RULE_CORNER)
    {
        *out++ = 0;
        return out;
    }
    const bool sharpOnly = rule == Sdc::Crease::RULE_CREASE;
    *out++ = sharpOnly ? kSharp : faces.size();
    if (!sharpOnly)
        out = std::copy(faces.begin(), faces.end(), out);
    for (const Far::Index e : edges)
        if (!sharpOnly || level.GetEdgeSharpness(e) > 0)
        {
            const Far::ConstIndexArray verts = level.GetEdgeVertices(e);
            *out++ = verts[0] == v ? verts[1] : verts[0];
        }
    return out;
}

bool Step::Fill(const Far::TopologyLevel& level)
{
    numVerts = level.GetNumVertices();
    numFaces = level.GetNumFaces();
    facePoints = level.GetFaceChildVertex(0); // the points of each kind lie in the order of what they come from
    edgePoints = level.GetEdgeChildVertex(0);
    vertPoints = level.GetVertexChildVertex(0);
    const std::int64_t numCorners = level.GetNumFaceVertices(), numEdges = level.GetNumEdges();
    const std::int64_t ringEntries = numVerts + numCorners + 2 * numEdges; // at most
    if (!lengths.SetCountForWriting(numFaces) || !corners.SetCountForWriting(numCorners) ||
        !edges.SetCountForWriting(numEdges) || !rings.SetCountForWriting(ringEntries))
        return false;
    FillFaces(level, *this);
    FillEdges(level, *this);
    std::int32_t* out = rings.Data();
    for (Far::Index v = 0; v < numVerts; ++v)
    {
        if (!HasMask(level, v))
            return false;
        out = FillRing(level, v, out);
    }
    return true;
}
} // namespace

struct Refiner::Tables
{
    std::unique_ptr<Far::TopologyRefiner> far;
    bool hasUVs = false;
    std::vector<Step> steps; ///< from each level to the next

    const Far::TopologyLevel& Level(int i) const { return far->GetLevel(i); }
    const Far::TopologyLevel& Last() const { return far->GetLevel(far->GetMaxLevel()); }
};

namespace
{
// A plain array as OpenSubdiv's interpolation wants to see it.
struct UVs
{
    struct Slot
    {
        T_VERTEX& uv;
        void Clear() { uv = {}; }
        void AddWithWeight(const Slot& from, float weight)
        {
            uv.u += from.uv.u * weight;
            uv.v += from.uv.v * weight;
        }
    };
    Slot operator[](Far::Index i) const { return {first[i]}; }

    T_VERTEX* first;
};

Sdc::Options Rules()
{
    Sdc::Options options;
    options.SetVtxBoundaryInterpolation(Sdc::Options::VTX_BOUNDARY_EDGE_AND_CORNER);
    options.SetFVarLinearInterpolation(Sdc::Options::FVAR_LINEAR_NONE);
    options.SetCreasingMethod(Sdc::Options::CREASE_UNIFORM);
    options.SetTriangleSubdivision(Sdc::Options::TRI_SUB_CATMARK);
    return options;
}

std::unique_ptr<Far::TopologyRefiner> BaseLevel(const ControlTopology& control)
{
    Far::TopologyDescriptor descriptor;
    descriptor.numVertices = control.numVerts;
    descriptor.numFaces = int(control.lengths.size());
    descriptor.numVertsPerFace = control.lengths.data();
    descriptor.vertIndicesPerFace = control.corners.data();
    Far::TopologyDescriptor::FVarChannel uvs;
    if (!control.uvCorners.empty())
    {
        uvs.numValues = control.numUVs;
        uvs.valueIndices = control.uvCorners.data();
        descriptor.numFVarChannels = 1;
        descriptor.fvarChannels = &uvs;
    }
    using Factory = Far::TopologyRefinerFactory<Far::TopologyDescriptor>;
    const Factory::Options rules(Sdc::SCHEME_CATMARK, Rules());
    std::unique_ptr<Far::TopologyRefiner> refiner(Factory::Create(descriptor, rules));

    // Vertices without a mask stay where they are, as corners do. Finer levels then have a mask for every vertex.
    std::vector<Far::Index> corners;
    for (Far::Index v = 0; refiner && v < control.numVerts; ++v)
        if (!HasMask(refiner->GetLevel(0), v))
            corners.push_back(v);
    if (corners.empty())
        return refiner;
    const std::vector<float> weights(corners.size(), Sdc::Crease::SHARPNESS_INFINITE);
    descriptor.numCorners = int(corners.size());
    descriptor.cornerVertexIndices = corners.data();
    descriptor.cornerWeights = weights.data();
    return std::unique_ptr<Far::TopologyRefiner>(Factory::Create(descriptor, rules));
}
} // namespace

std::unique_ptr<Refiner> Refiner::Make(const ControlTopology& control, int level) noexcept
{
    try
    {
        auto tables = std::make_unique<Tables>();
        tables->far = BaseLevel(control);
        if (!tables->far)
            return nullptr;
        tables->hasUVs = !control.uvCorners.empty();
        // Faces and parents of the last level are there either way, and interpolation reads the surroundings in the
        // level before, so the result is the same bit for bit. The full topology of the last level would add
        // surroundings that nobody reads, and cost as much time and memory as all the rest together.
        Far::TopologyRefiner::UniformOptions options(level);
        options.fullTopologyInLastLevel = false;
        tables->far->RefineUniform(options);
        tables->steps.resize(std::size_t(level));
        for (int i = 0; i < level; ++i)
            if (!tables->steps[std::size_t(i)].Fill(tables->Level(i)))
                return nullptr;
        return std::unique_ptr<Refiner>(new Refiner(std::move(tables)));
    }
    catch (...) // memory, or a limit of OpenSubdiv
    {
        return nullptr;
    }
}

Refiner::Refiner(std::unique_ptr<Tables> tables) : mTables(std::move(tables)) {}
Refiner::~Refiner() = default;

// --- Sizes

std::int32_t Refiner::NumVertsTotal() const { return mTables->far->GetNumVerticesTotal(); }
std::int32_t Refiner::NumVerts() const { return mTables->Last().GetNumVertices(); }
std::int32_t Refiner::NumFaces() const { return mTables->Last().GetNumFaces(); }
std::int32_t Refiner::NumUVsTotal() const { return mTables->hasUVs ? mTables->far->GetNumFVarValuesTotal() : 0; }
std::int32_t Refiner::NumUVs() const { return mTables->hasUVs ? mTables->Last().GetNumFVarValues() : 0; }

// --- Interpolation

// What Far::PrimvarRefiner does, the same sums in the same order and so the same bits.

namespace
{
void FacePoints(const Step& step, const VERTEX* from, VERTEX* to)
{
    const std::int32_t* corner = step.corners.Data();
    if (step.lengths.IsEmpty())
    {
        for (std::int32_t f = 0; f < step.numFaces; ++f, corner += 4)
        {
            VERTEX sum;
            for (int k = 0; k < 4; ++k)
                sum += from[corner[k]] * 0.25f;
            to[f] = sum;
        }
        return;
    }
    for (const std::int32_t length : step.lengths)
    {
        const float weight = 1.0f / float(length);
        VERTEX sum;
        for (const std::int32_t* const end = corner + length; corner < end; ++corner)
            sum += from[*corner] * weight;
        *to++ = sum;
    }
}

void EdgePoints(const Step& step, const VERTEX* from, const VERTEX* faces, VERTEX* to)
{
    for (const EdgeSource& edge : step.edges)
    {
        const bool sharp = edge.faces[0] == kSharp;
        const float weight = sharp ? 0.5f : 0.25f;
        VERTEX sum;
        sum += from[edge.verts[0]] * weight;
        sum += from[edge.verts[1]] * weight;
        if (!sharp)
        {
            sum += faces[edge.faces[0]] * weight;
            sum += faces[edge.faces[1]] * weight;
        }
        *to++ = sum;
    }
}

void VertexPoints(const Step& step, const VERTEX* from, const VERTEX* faces, VERTEX* to)
{
    const std::int32_t* ring = step.rings.Data();
    for (std::int32_t v = 0; v < step.numVerts; ++v)
    {
        const std::int32_t valence = *ring++;
        VERTEX sum;
        float own = 1;
        if (valence > 0)
        {
            const float weight = 1.0f / float(valence * valence);
            for (const std::int32_t* const end = ring + valence; ring < end; ++ring)
                sum += faces[*ring] * weight;
            for (const std::int32_t* const end = ring + valence; ring < end; ++ring)
                sum += from[*ring] * weight;
            own = float(valence - 2) / float(valence);
        }
        else if (valence == kSharp)
        {
            sum += from[*ring++] * 0.125f;
            sum += from[*ring++] * 0.125f;
            own = 0.75f;
        }
        sum += from[v] * own;
        to[v] = sum;
    }
}
} // namespace

void Refiner::Interpolate(VERTEX* positions) const
{
    for (const Step& step : mTables->steps)
    {
        VERTEX* const children = positions + step.numVerts;
        VERTEX* const facePoints = children + step.facePoints;
        FacePoints(step, positions, facePoints);
        EdgePoints(step, positions, facePoints, children + step.edgePoints);
        VertexPoints(step, positions, facePoints, children + step.vertPoints);
        positions = children;
    }
}

bool Refiner::InterpolateUVs(T_VERTEX* uvs) const noexcept
{
    try
    {
        const Far::PrimvarRefiner primvars(*mTables->far);
        for (int i = 1; mTables->hasUVs && i <= mTables->far->GetMaxLevel(); ++i)
        {
            const UVs parent{uvs};
            uvs += mTables->Level(i - 1).GetNumFVarValues();
            UVs child{uvs};
            primvars.InterpolateFaceVarying(i, parent, child);
        }
        return true;
    }
    catch (...)
    {
        return false;
    }
}

// --- Topology

void Refiner::Corners(std::int32_t* out) const
{
    const Far::TopologyLevel& last = mTables->Last();
    for (Far::Index f = 0; f < last.GetNumFaces(); ++f, out += 4)
        std::copy_n(last.GetFaceVertices(f).begin(), 4, out);
}

void Refiner::UVCorners(std::int32_t* out) const
{
    const Far::TopologyLevel& last = mTables->Last();
    for (Far::Index f = 0; f < last.GetNumFaces(); ++f, out += 4)
        std::copy_n(last.GetFaceFVarValues(f).begin(), 4, out);
}

void Refiner::FaceParents(std::int32_t* out) const
{
    const Far::TopologyLevel& first = mTables->Level(1);
    for (Far::Index f = 0; f < first.GetNumFaces(); ++f)
        out[f] = first.GetFaceParentFace(f);
    // Composed in place, from behind: no face lies before its parent, so what is read is still the table before.
    for (int i = 2; i <= mTables->far->GetMaxLevel(); ++i)
    {
        const Far::TopologyLevel& level = mTables->Level(i);
        for (Far::Index f = level.GetNumFaces() - 1; f >= 0; --f)
            out[f] = out[level.GetFaceParentFace(f)];
    }
}

void Refiner::VertChildren(std::int32_t* out) const
{
    for (Far::Index v = 0; v < mTables->Level(0).GetNumVertices(); ++v)
    {
        Far::Index child = v;
        for (int i = 0; i < mTables->far->GetMaxLevel(); ++i)
            child = mTables->Level(i).GetVertexChildVertex(child);
        out[v] = child;
    }
}

std::size_t Refiner::MemoryUsed() const
{
    // OpenSubdiv's own part as measured on tori of 10,000 faces at levels 1 to 3, where it varies by 5 bytes.
    constexpr std::size_t kPerFace = 110, kPerFaceOfUVs = 68;
    const std::size_t perFace = kPerFace + (mTables->hasUVs ? kPerFaceOfUVs : 0);
    std::size_t bytes = std::size_t(mTables->far->GetNumFacesTotal()) * perFace;
    for (const Step& step : mTables->steps)
        bytes += step.MemoryUsed();
    return bytes;
}

} // namespace vx
