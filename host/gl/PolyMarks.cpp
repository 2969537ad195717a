#include "host/gl/PolyMarks.h"

#include "mesh/VXGeom.h"

namespace vx
{
bool PolyMarks::UpdatePolys(const VXGeom& geom, const BBitArray& marked)
{
    const auto isMarked = [&](std::int32_t p)
    { return p >= 0 && p < geom.NumPolys() && marked[p] && !geom.Polygon(p)->IsHidden(); };
    BArray<std::int32_t> polys, border;
    if (!polys.SetCountForWriting(geom.NumPolys()))
        return false;
    bool any = false;
    for (std::int32_t p = 0; p < geom.NumPolys(); ++p)
    {
        polys[p] = isMarked(p);
        any = any || polys[p] != 0;
    }
    const VXEdgeList& edges = geom.EdgeList();
    for (std::int32_t e = 0; any && e < edges.GetEdgeCount(); ++e)
    {
        const VXEdge& edge = edges.GetEdge(e);
        if (isMarked(edge.PolyIndex1()) != isMarked(edge.PolyIndex2()) &&
            (!border.Append(edge.VertIndex1()) || !border.Append(edge.VertIndex2())))
            return false;
    }
    mPolys.Upload(polys.Data(), std::size_t(polys.Count()) * sizeof(std::int32_t));
    mBorder.Upload(border.Data(), std::size_t(border.Count()) * sizeof(std::int32_t));
    return any;
}

bool PolyMarks::UpdateVerts(const VXGeom& geom, const BBitArray& marked)
{
    const GEOM& record = *geom.Geom();
    BBitArray used;
    BArray<std::int32_t> verts;
    if (!used.SetCount(record.numVerts))
        return false;
    for (std::int64_t p = marked.NextSet(0); p >= 0 && p < record.numPolys; p = marked.NextSet(p + 1))
    {
        const ELEMENT& poly = *record.Poly(p);
        for (std::int32_t k = 0; !poly.IsHidden() && k < poly.length; ++k)
            if (const std::int32_t v = record.sets[poly.start + k]; v < record.numVerts)
                used.Set(v);
    }
    for (std::int64_t v = used.NextSet(0); v >= 0; v = used.NextSet(v + 1))
        if (!verts.Append(std::int32_t(v)))
            return false;

    double sum = 0;
    std::int64_t count = 0;
    const VXEdgeList& edges = geom.EdgeList();
    for (std::int32_t e = 0; e < edges.GetEdgeCount(); ++e)
    {
        const std::int32_t a = edges.GetEdge(e).VertIndex1(), b = edges.GetEdge(e).VertIndex2();
        if (!used[a] || !used[b] || std::max(a, b) >= record.numVerts)
            continue;
        sum += double(Length(record.verts[a] - record.verts[b]));
        ++count;
    }
    mMeanEdge = count > 0 ? float(sum / double(count)) : 0.0f;
    mVerts.Upload(verts.Data(), std::size_t(verts.Count()) * sizeof(std::int32_t));
    return !verts.IsEmpty();
}
} // namespace vx
