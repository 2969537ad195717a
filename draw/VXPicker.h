// VelmarBase: drawing.
#pragma once

#include "VelmarExport.h"
#include "base/MAT.h"
#include "draw/VXPickBuffer.h"

class VXGeom;
class VXScene;

/// Answers what stands at a place of the picture, by the scene's pick flags, from a pick buffer in which polygons have
/// names. Edges and vertices are found on the polygons that the buffer shows around the place, so that only those that
/// are seen are found, and what covers them hides them, all to within a pixel and a half.
///
/// Buffer and scene are borrowed and must be as they were when the buffer was filled; the scene must be current.
class VELMAR_EXPORT VXPicker
{
public:
    /// @param toView, projection world to view and view to clip space, of the whole picture
    /// @param width, height of the whole picture in pixels
    VXPicker(const VXPickBuffer& buffer, const VXScene& scene, const Mat44 toView, const Mat44 projection, int width,
             int height);

    /// What the scene's flags let be picked at pixel (x, y): a vertex, else an edge, within `radius` pixels of its
    /// middle, else the polygon, else the object that the pixel shows.
    VXPickHit At(int x, int y, float radius) const;

    // --- The closest to the middle of pixel (x, y), within `radius` pixels, up to kMostRadius. Of those equally close,
    // the one nearest to the viewer.
    VXPickHit EdgeAt(int x, int y, float radius) const;
    VXPickHit VertexAt(int x, int y, float radius) const;
    static constexpr float kMostRadius = 64;
    /// How far from the place the buffer must reach for a radius, in pixels.
    static int ReachOf(float radius);

    VERTEX PositionOf(const VXPickHit& hit) const; ///< in the world; of a vertex, its own
    float DistanceOf(const VXPickHit& hit) const;  ///< in front of the eye, along the view
    VXGeom* GeomOf(const VXPickHit& hit) const;    ///< null for names of objects

private:
    struct Seen;
    struct Place;
    struct Point
    {
        double x, y, depth;
    };
    class Surface;

    bool GatherSeen(int x, int y, float radius, BArray<Seen>& seen) const;
    bool Shows(const Point& point, const VXGeom& geom, const VXPickHit& on, std::int32_t a, std::int32_t b) const;
    void SearchEdges(const Seen* from, const Seen* to, Place& place) const;
    void SearchVertices(const Seen* from, const Seen* to, Place& place) const;
    VXPickHit Search(int x, int y, float radius, void (VXPicker::*step)(const Seen*, const Seen*, Place&) const) const;
    VERTEX SeenFromEye(const VXPickHit& hit) const;

    const VXPickBuffer& mBuffer;
    const VXScene& mScene;
    Mat44 mToView, mProjection;
    int mWidth, mHeight;
};
