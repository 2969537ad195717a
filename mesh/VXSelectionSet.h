// VelmarBase: mesh processing.
#pragma once

#include "base/BBitArray.h"
#include "base/BString.h"

/// A named selection of a mesh's elements, by index. Knows no mesh: indices that it has not are simply not used.
class VXSelectionSet
{
public:
    BString& Name() { return mName; }
    const BString& Name() const { return mName; }
    const BBitArray& Verts() const { return mVerts; }
    const BBitArray& Polys() const { return mPolys; }
    const BBitArray& Edges() const { return mEdges; }
    BBitArray& Verts() { return mVerts; }
    BBitArray& Polys() { return mPolys; }
    BBitArray& Edges() { return mEdges; }

    void IncludeVert(int i) { mVerts.Set(i); }
    void IncludePoly(int i) { mPolys.Set(i); }
    void IncludeEdge(int i) { mEdges.Set(i); }
    void RemoveVert(int i) { mVerts.Set(i, false); }
    void RemovePoly(int i) { mPolys.Set(i, false); }
    void RemoveEdge(int i) { mEdges.Set(i, false); }
    bool ContainsVert(int i) const { return mVerts[i]; }
    bool ContainsPoly(int i) const { return mPolys[i]; }
    bool ContainsEdge(int i) const { return mEdges[i]; }

    /// A word of the host's; the library only carries it along.
    std::int32_t UserWord() const { return mUserWord; }
    void SetUserWord(std::int32_t word) { mUserWord = word; }

private:
    std::int32_t mUserWord = 0;
    BString mName = "Nameless";
    BBitArray mVerts, mPolys, mEdges;
};
