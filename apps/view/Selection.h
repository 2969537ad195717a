// VelmarBase: viewer.
#pragma once

#include "base/BBitArray.h"
#include "base/Vertex.h"
#include "mesh/VXGeom.h"

#include <string>
#include <vector>

class VXObject;
class VXScene;

namespace vx::view
{

/// What is selected in a scene: polygons of control meshes, held as a group that all of them get for it, so that the
/// library's operations on selections apply, and so that it is shown as groups are. Subdivided surfaces get the group
/// too: each of their polygons goes with the one that it was made of.
class Selection
{
public:
    /// Takes over the objects of a scene, with nothing selected. False when memory ran out.
    bool Attach(VXScene& scene);
    const std::string& Group() const { return mGroup; } ///< its name; empty before Attach
    bool HoldsGroup(const std::string& name) const { return name == mGroup; }

    std::int64_t Count() const { return mCount; } ///< of selected polygons
    bool IsEmpty() const { return mCount == 0; }
    bool Has(int object, int poly) const;

    enum class Step
    {
        Grow,
        Shrink,
        GrowLoop,
        ShrinkLoop,
    };
    void Apply(Step step, int times = 1);
    void SelectOnly(int object, int poly); ///< -1 for none at all
    void Toggle(int object, int poly);
    void SelectAll(bool on);
    void Invert();
    void SelectGroup(const std::string& name); ///< the polygons of a group of the models
    void Mirror(E_MirrorDirection side);       ///< what mirrors the selection on that side is selected as well

    /// Brings the group of subdivided surfaces up to date, where anything has changed since the last call.
    void UpdateSurfaces();
    void SurfacesWereMade() { mSurfacesStale = true; } ///< to be told after subdividing

    int ControlPoly(int object, int shownPoly) const;     ///< from which a polygon of the shown mesh came; -1 for none
    void AppendPoints(std::vector<VERTEX>& points) const; ///< corners of the selected polygons as shown, world space

    /// The selection by itself, for putting it back on a model that was read anew: nothing happens to an object whose
    /// number of polygons is another one.
    std::vector<BBitArray> Bits() const;
    void TakeBits(const std::vector<BBitArray>& bits);

private:
    struct Part
    {
        VXObject* object;
        int index; ///< in the scene
    };
    VXGeom* MeshOf(int object) const;
    void Replace(VXGeom& mesh, const BBitArray& polys);
    void Changed();

    std::vector<Part> mParts;
    std::string mGroup;
    std::int64_t mCount = 0;
    bool mSurfacesStale = false;
};

} // namespace vx::view
