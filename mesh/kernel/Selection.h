// VelmarBase: mesh processing.
#pragma once

#include "base/BBitArray.h"
#include "mesh/VXEdge.h"
#include "mesh/kernel/Polys.h"

#include <span>

/// @file
/// One step of growing or shrinking a selection of polygons or vertices. A step only reads the selection and says what
/// is to change, so its result does not depend on the order in which the mesh has its elements. Time follows the
/// selection and its surroundings, whatever the valences, apart from clearing one bit for each element; where much is
/// selected, growing reads every polygon's corners instead. The edges must be those of the polygons.

namespace vx
{

/// What the steps walk on. Elements beyond the arrays are passed over.
struct SelectionMesh
{
    PolyView polys; ///< with the record's own corners
    std::span<const VXEdge> edges;
    std::span<const VXVertexLink> links;
    std::span<const std::int32_t> firstLink; ///< per vertex, -1 for none
};

/// Tells what a step changes: false, with `changes` unspecified, when memory ran out.
/// @param selected one bit for each polygon or vertex; missing bits are clear
/// @param changes  out: the elements to select (grow) or to deselect (shrink)
using SelectionStep = bool (*)(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes);

// --- Polygons

/// All unselected polygons with an edge at a vertex of a selected one.
bool GrowPolys(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes);
/// The selected polygons with a vertex at which some closed edge has an unselected polygon. The mesh's border takes
/// nothing away.
bool ShrinkPolys(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes);
/// The polygons across the edges at the ends of selected strips: neighbours of those that have a selected neighbour
/// themselves, unless they touch an edge inside the selection.
bool GrowPolyLoops(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes);
/// The selected polygons with fewer than two edges inside the selection at their vertices: ends of strips, lone ones.
bool ShrinkPolyLoops(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes);

// --- Vertices

bool GrowVerts(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes);   ///< all neighbours
bool ShrinkVerts(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes); ///< those at the rim
/// For each selected vertex the neighbour along the first edge, newest first, that goes on straight: the neighbour is
/// not selected, and both polygons of the edge have exactly one selected corner.
bool GrowVertLoops(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes);
/// The selected vertices with exactly one selected neighbour. One without any stays.
bool ShrinkVertLoops(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes);

// --- Mirroring

/// For each place that is not on the source side, the place on the source side that its mirror image is nearest to, the
/// lowest index of equals; -1 for places on the source side and those without a match.
/// @param axis     0, 1 or 2: the plane through the origin across this axis
/// @param positive which side is the source: that with coordinates strictly above, or strictly below, zero
/// @param match    out, one for each place
/// @return false when memory ran out
bool MirrorMatches(std::span<const VERTEX> places, int axis, bool positive, std::int32_t* match);

} // namespace vx
