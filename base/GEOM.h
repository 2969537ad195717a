// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"
#include "base/BArray.h"
#include "base/BMutex.h"
#include "base/BString.h"
#include "base/Vertex.h"

#include <cstdint>
#include <cstring>

/// @file
/// The polygon mesh record: vertices, polygons of any number of corners, texture coordinates, materials and groups, all
/// in flat arrays, and the functions that work on a record alone. Arrays are memory handles (MEM.h) that the record
/// owns. A record belongs to one thread at a time, apart from its access mutex.

/// What kind a polygon record is. 0 and 2 are both faces: 2 is what imported and subdivided faces carry.
enum GEOM_ElementType : std::uint8_t
{
    kElementFace = 0,
    kElementLine = 1,
    kElementFaceAlso = 2,
    kElementPoint = 3, ///< 4 and above: not drawn and not sorted
};

inline constexpr std::uint8_t kElementHidden = 0x20; ///< ELEMENT::flags: a hidden polygon

#pragma pack(push, 1)
/// One polygon. Records are packed without padding and of a width that depends on the number of groups, so they are
/// reached through GEOM::Poly(i), never by indexing an array of ELEMENT.
struct ELEMENT
{
    std::int32_t start;        ///< index of the first corner in GEOM::sets
    std::int32_t length;       ///< number of corners
    std::uint8_t flags;        ///< kElementHidden
    std::uint8_t reserved[3];  ///< carried along, never read
    std::uint8_t type;         ///< GEOM_ElementType
    std::uint16_t material;    ///< index into the record's materials
    std::uint8_t groupBits[4]; ///< the first of (number of groups / 32 + 1) words; unaligned, read with GroupWord

    /// Word w of the group bits. Word 0 holds the smoothing groups: bit k is smoothing group k+1, 0 is smoothing off.
    std::uint32_t GroupWord(std::int64_t w) const
    {
        std::uint32_t word;
        std::memcpy(&word, reinterpret_cast<const std::uint8_t*>(this) + 15 + 4 * w, 4); // groupBits, past its end
        return word;
    }
    void SetGroupWord(std::int64_t w, std::uint32_t word)
    {
        std::memcpy(reinterpret_cast<std::uint8_t*>(this) + 15 + 4 * w, &word, 4);
    }
    bool IsFace() const { return type == kElementFace || type == kElementFaceAlso; }
    bool IsHidden() const { return (flags & kElementHidden) != 0; }
};
#pragma pack(pop)
static_assert(sizeof(ELEMENT) == 19, "15 bytes and one group word");

/// Start and length of a polygon's run of texture corners.
struct GEOM_TexPoly
{
    std::int32_t start, length;
};

/// Texture coordinates of a record. A polygon has some only when `sets` is there, numCorners is at least 1 and the
/// polygon's index is below numPolys.
struct GEOM_Texture
{
    T_VERTEX* verts = nullptr;    ///< numVerts entries
    std::int32_t* sets = nullptr; ///< numCorners entries: texture vertex of each texture corner
    std::int32_t numCorners = 0;
    GEOM_TexPoly* polys = nullptr; ///< numPolys entries
    std::int32_t numPolys = 0;
    std::int32_t numVerts = 0;
};

/// A material slot: the host's material (a VXMaterial, stored untyped; not owned) and its name.
struct GEOM_Material
{
    void* material = nullptr;
    BString name;
};

/// An "o" statement: the object of this name starts at this polygon.
struct GEOM_ObjectName
{
    std::int32_t firstPoly = 0;
    BString name;
};

/// The mesh record. Fields are public: mesh code walks them as raw arrays.
class FENWICK_EXPORT GEOM
{
public:
    GEOM();
    virtual ~GEOM();
    GEOM(const GEOM&) = delete;
    GEOM& operator=(const GEOM&) = delete;

    /// Gives every array its length; kept entries keep their values, new ones are zero (new faces have no corners).
    /// Texture data is created when a texture count is positive; otherwise it is left as it is (GEOM_TexFree drops it).
    /// When texture corners are asked for, the texture polygon table gets `polys` entries.
    /// @return 0, or -1 when memory ran out or a count is negative; the record is then unchanged or holds larger arrays
    ///         with the old counts
    virtual int SetSize(int polys, int verts, int corners, int reserved, int texCorners, int texVerts);
    virtual void Empty(); ///< drops everything: vertices, polygons, texture, normals, groups, materials, names
    virtual GEOM_Material* Materials() { return materials.Data(); }
    virtual int NumMaterials() const { return int(materials.Count()); }
    virtual void SetMaterialPointer(int i, void* material); ///< nothing for an index out of range

    std::int64_t PolyStride() const { return 15 + 4 * GroupWords(); } ///< bytes of one polygon record
    std::int64_t GroupWords() const { return numGroups / 32 + 1; }    ///< 32-bit group words of one polygon
    std::int64_t NumCorners() const { return std::int64_t(MEM_Count(sets)); }

    /// Polygon record i: stride arithmetic, unchecked. Stale after anything that changes the polygon or group count.
    ELEMENT* Poly(std::int64_t i) { return reinterpret_cast<ELEMENT*>(polys + i * PolyStride()); }
    const ELEMENT* Poly(std::int64_t i) const { return reinterpret_cast<const ELEMENT*>(polys + i * PolyStride()); }

    bool PolyHasTexture(std::int64_t i) const
    {
        return tex && tex->sets && tex->numCorners >= 1 && i >= 0 && i < tex->numPolys;
    }

    VERTEX* verts = nullptr; ///< positions; may hold more than numVerts entries (crease vertices follow)
    std::int32_t numVerts = 0;
    std::int32_t* sets = nullptr;  ///< vertex index of each polygon corner; a polygon's corners lie in a row
    std::uint8_t* polys = nullptr; ///< packed ELEMENT records, numPolys * PolyStride() bytes (a byte handle)
    std::int32_t numPolys = 0;
    GEOM_Texture* tex = nullptr; ///< owned; null without texture coordinates
    std::int32_t numGroups = 0;  ///< 0, or 32 + the number of named groups (0..31 are smoothing groups)
    std::int32_t numNormals = 0;
    std::int32_t* normalSets = nullptr; ///< per corner, aligned with sets: index into normals; null without normals
    VERTEX* normals = nullptr;          ///< corner normals read from a file
    BMutex accessMutex;                 ///< held while a temporary vertex array is installed

    // --- Beyond what the mesh wrapper reads
    BArray<GEOM_Material> materials;
    BArray<BString> groupNames;          ///< name of group slot 32 + i
    VERTEX* vertColors = nullptr;        ///< numVerts colours read with the vertices, or null
    BArray<GEOM_ObjectName> objectNames; ///< ascending firstPoly
    BArray<BString> materialFiles;       ///< the names of "mtllib" statements, in order, unique
};

// --- Life and copies

FENWICK_EXPORT GEOM* GEOM_Alloc();      ///< an empty record, null when memory ran out
FENWICK_EXPORT void GEOM_Free(GEOM* g); ///< null-safe

/// A deep copy. mode 0 and 2: everything; mode 1: without groups, materials and names (every polygon uses material 0).
/// Null when g is null or memory ran out. Vertices beyond numVerts are not copied.
FENWICK_EXPORT GEOM* GEOM_Copy(const GEOM* g, int mode);

/// Makes `to` a deep copy of `from`, keeping the record itself (its address and mutex). 0, or -1 on failure, which
/// leaves `to` empty. The same record: 0, nothing done.
FENWICK_EXPORT int GEOM_Clone(const GEOM* from, GEOM* to);

/// One record of `count` others, in order: vertices, polygons, texture coordinates, normals appended; groups and
/// materials of equal name become one. Where only some have texture coordinates, the polygons of the others get empty
/// texture runs. Null entries are skipped. Null when memory ran out or a 32-bit count would overflow.
FENWICK_EXPORT GEOM* GEOM_CreateUniMesh(const GEOM* const* geoms, int count);

/// Checks a record so that everything else may trust its indices, and repairs it in place:
/// - a polygon with a negative start or length, or whose run reaches past the corner array, becomes empty (start 0,
///   length 0);
/// - a corner index outside 0 .. numVerts-1 becomes 0 (a polygon of a record without vertices becomes empty);
/// - the same two rules hold for texture polygons, texture corners and corner normal indices;
/// - a material index at or past the number of materials becomes 0, when there are materials;
/// - a NaN position component becomes 0.
/// @param repairs out, may be null: how many values were changed
/// @return 0 (also when something was repaired), -1 for a null record or counts that their arrays do not reach
FENWICK_EXPORT int GEOM_VerifyAndFix(GEOM* g, int* repairs = nullptr);

/// Bytes held by the record and all its arrays, capacities included.
FENWICK_EXPORT std::size_t GEOM_MemoryUsed(const GEOM* g);

// --- Measures and placing

/// Bounds in the order min x y z, max x y z, centre x y z; null outputs are skipped. Not finite coordinates are
/// ignored; without any finite vertex all are 0.
/// @param all true: every vertex; false: only vertices that a polygon uses
FENWICK_EXPORT void GEOM_Bounds(const GEOM* g, float* minX, float* minY, float* minZ, float* maxX, float* maxY,
                                float* maxZ, float* midX, float* midY, float* midZ, bool all);

/// The same nine numbers as an array: min x y z, max x y z, centre x y z, of all vertices.
FENWICK_EXPORT void GEOM_Stats(const GEOM* g, float stats[9]);

FENWICK_EXPORT void GEOM_Center(GEOM* g);              ///< moves the box's centre to the origin
FENWICK_EXPORT void GEOM_Scale(GEOM* g, float factor); ///< about the origin
FENWICK_EXPORT void GEOM_Offset(GEOM* g, float dx, float dy, float dz);

/// Unit normal of each polygon from Newell's sum relative to its first corner (M. E. Newell, in Sutherland, Sproull and
/// Schumacker, A Characterization of Ten Hidden-Surface Algorithms, 1974), so that a bent polygon gets the normal of
/// its best-fit plane. Zero for polygons without area, NaN or infinite points, and fewer than 3 corners.
/// @param out numPolys entries, the caller's
/// @return 0, or -1 for a null record or output
FENWICK_EXPORT int GEOM_CalcPolyNormals(const GEOM* g, VERTEX* out);

/// The same for `count` polygons from `first` on, into out[first] and so on: for callers that use the normals while
/// they are still in the cache. The range is the caller's to keep right.
FENWICK_EXPORT void GEOM_CalcPolyNormalsOf(const GEOM* g, VERTEX* out, std::int32_t first, std::int32_t count);

/// Mean corner position and mean texture corner of each polygon; zero for polygons without corners.
/// @param out numPolys entries, or null  @param texOut numPolys entries, or null
FENWICK_EXPORT int GEOM_CalcPolyCentroids(const GEOM* g, VERTEX* out, T_VERTEX* texOut);

// --- Welding

FENWICK_EXPORT float GEOM_WeldTolerance(); ///< process-wide, model units; 0.00001 at start
FENWICK_EXPORT void GEOM_SetWeldTolerance(float tolerance);

/// Merges vertices that lie within the weld tolerance of each other. Going through the vertices in index order, a
/// vertex joins the lowest-indexed surviving vertex within the tolerance (Euclidean distance, at most), or survives;
/// so the lowest index of each cluster survives, and clusters do not creep along chains. Vertices that are not finite
/// survive. Vertices are compacted in order; all polygons are kept, repeated corners included. A negative or NaN
/// tolerance is read as 0, which merges equal positions only. Expected linear time, deterministic.
/// @param remap out, may be null: for each old vertex its index in the welded record
/// @return 0, or -1 when memory ran out (record unchanged)
FENWICK_EXPORT int GEOM_Weld(GEOM* g, std::int32_t* remap);

// --- Texture coordinates, groups and materials

FENWICK_EXPORT void GEOM_TexFree(GEOM* g); ///< drops all texture coordinates

/// Puts a polygon into the named group, creating the group when needed. A new group can widen every polygon record:
/// ELEMENT pointers and cursors are stale afterwards. Creating a group without putting a polygon in: poly -1.
/// @return 0, or -1 for an empty name, a polygon out of range, or when memory ran out
FENWICK_EXPORT int GEOM_GroupAddElem(GEOM* g, const char* name, int poly);

/// Where a named group's bit lies in a polygon's group words. Never word 0: that word is the smoothing groups.
/// @param word out: index of the 32-bit word  @param mask out: the bit inside it
/// @return true when the group exists
FENWICK_EXPORT bool GEOM_GetGroupBit(const GEOM* g, const char* name, std::int32_t* word, std::uint32_t* mask);

FENWICK_EXPORT int GEOM_SetNumGroups(GEOM* g, int numGroups); ///< rewrites the records; new bits are clear; 0 or -1
FENWICK_EXPORT int GEOM_AddMaterialName(GEOM* g,
                                        const char* name); ///< slot of that name, appended if new; -1 on failure
FENWICK_EXPORT int GEOM_MakeDefaultMaterial(GEOM* g);  ///< one slot named "Default" that every polygon uses; 0 or -1
FENWICK_EXPORT int GEOM_PurgeUnusedMaterials(GEOM* g); ///< drops slots that no polygon uses, keeping order; 0 or -1
