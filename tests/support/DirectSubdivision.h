// The plainest use of OpenSubdiv's own classes, for tests and benchmarks to stand beside.
#pragma once

#include "base/GEOM.h"

#include <opensubdiv/far/primvarRefiner.h>
#include <opensubdiv/far/topologyDescriptor.h>
#include <opensubdiv/far/topologyRefinerFactory.h>

#include <algorithm>
#include <memory>
#include <vector>

/// A record whose polygons lie in a row, refined uniformly; positions and texture vertices of all levels in a row.
/// Needs a link to OpenSubdiv.
struct DirectSubdivision
{
    template <int N>
    struct Floats
    {
        float f[N];
        void Clear() { std::fill(f, f + N, 0.0f); }
        void AddWithWeight(const Floats& from, float weight)
        {
            for (int i = 0; i < N; ++i)
                f[i] += from.f[i] * weight;
        }
    };

    std::unique_ptr<OpenSubdiv::Far::TopologyRefiner> refiner;
    std::vector<Floats<3>> points;
    std::vector<Floats<2>> uvs; ///< empty without texture coordinates

    /// @param full the whole topology of the last level too, which nothing here needs
    DirectSubdivision(const GEOM& control, int level, bool full = false)
    {
        namespace Far = OpenSubdiv::Far;
        namespace Sdc = OpenSubdiv::Sdc;
        std::vector<int> lengths;
        for (int p = 0; p < control.numPolys; ++p)
            lengths.push_back(int(control.Poly(p)->length));
        Far::TopologyDescriptor descriptor;
        descriptor.numVertices = control.numVerts;
        descriptor.numFaces = control.numPolys;
        descriptor.numVertsPerFace = lengths.data();
        descriptor.vertIndicesPerFace = control.sets;
        Far::TopologyDescriptor::FVarChannel channel;
        if (control.tex)
        {
            channel.numValues = std::max(control.tex->numVerts, control.tex->numCorners);
            channel.valueIndices = control.tex->sets;
            descriptor.numFVarChannels = 1;
            descriptor.fvarChannels = &channel;
        }
        Sdc::Options rules;
        rules.SetVtxBoundaryInterpolation(Sdc::Options::VTX_BOUNDARY_EDGE_AND_CORNER);
        rules.SetFVarLinearInterpolation(Sdc::Options::FVAR_LINEAR_NONE);
        using Factory = Far::TopologyRefinerFactory<Far::TopologyDescriptor>;
        refiner.reset(Factory::Create(descriptor, Factory::Options(Sdc::SCHEME_CATMARK, rules)));
        Far::TopologyRefiner::UniformOptions options(level);
        options.fullTopologyInLastLevel = full;
        refiner->RefineUniform(options);
        points.resize(std::size_t(refiner->GetNumVerticesTotal()));
        uvs.resize(std::size_t(control.tex ? refiner->GetNumFVarValuesTotal() : 0));
        Pose(control.verts);
        if (control.tex)
            Texture(control.tex->verts, control.tex->numVerts);
    }

    void Pose(const VERTEX* verts)
    {
        Floats<3>* from = points.data();
        for (int v = 0; v < refiner->GetLevel(0).GetNumVertices(); ++v)
            from[v] = {{verts[v].x, verts[v].y, verts[v].z}};
        const OpenSubdiv::Far::PrimvarRefiner primvars(*refiner);
        for (int i = 1; i <= refiner->GetMaxLevel(); ++i)
        {
            Floats<3>* to = from + refiner->GetLevel(i - 1).GetNumVertices();
            primvars.Interpolate(i, from, to);
            from = to;
        }
    }

    void Texture(const T_VERTEX* verts, int count)
    {
        Floats<2>* from = uvs.data();
        for (int v = 0; v < count; ++v)
            from[v] = {{verts[v].u, verts[v].v}};
        const OpenSubdiv::Far::PrimvarRefiner primvars(*refiner);
        for (int i = 1; i <= refiner->GetMaxLevel(); ++i)
        {
            Floats<2>* to = from + refiner->GetLevel(i - 1).GetNumFVarValues();
            primvars.InterpolateFaceVarying(i, from, to);
            from = to;
        }
    }

    const OpenSubdiv::Far::TopologyLevel& Last() const { return refiner->GetLevel(refiner->GetMaxLevel()); }
    const Floats<3>* LastPoints() const { return points.data() + points.size() - std::size_t(Last().GetNumVertices()); }
    const Floats<2>* LastUVs() const { return uvs.data() + uvs.size() - std::size_t(Last().GetNumFVarValues()); }
};
