// VelmarBase: sample models.
#pragma once

#include <array>
#include <string>
#include <vector>

struct Vec3
{
    double x = 0, y = 0, z = 0;
    friend Vec3 operator+(Vec3 a, Vec3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
    friend Vec3 operator-(Vec3 a, Vec3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
    friend Vec3 operator*(double s, Vec3 a) { return {s * a.x, s * a.y, s * a.z}; }
};
Vec3 Cross(Vec3 a, Vec3 b);
Vec3 Unit(Vec3 a); ///< zero stays zero

struct Vec2
{
    double x = 0, y = 0;
};

/// Cubic Bezier curve at t.
Vec2 Bezier(Vec2 a, Vec2 b, Vec2 c, Vec2 d, double t);

/// A model under construction: vertices, texture coordinates, and the statements of the file in their order. Indices
/// count from 0. Text() is the whole file; equal models give equal bytes on every machine, since numbers are rounded
/// to four decimals with exact ties always going up.
class ObjModel
{
public:
    ObjModel(std::string title, std::string materialFile)
        : mTitle(std::move(title)), mMaterialFile(std::move(materialFile))
    {
    }

    /// Puts the vertices that follow into a frame of their own, given by its origin and axes; without arguments back
    /// into the model's.
    void Place(Vec3 origin = {}, Vec3 x = {1, 0, 0}, Vec3 y = {0, 1, 0}, Vec3 z = {0, 0, 1});

    int Vert(Vec3 p);
    int Uv(double u, double v);

    // State for the polygons that follow. Repeating the present state writes nothing.
    void Object(const std::string& name);
    void Group(const std::string& names); ///< several names are separated by spaces
    void Material(const std::string& name);
    void Smooth(int group); ///< 0 is off

    void Face(const std::vector<int>& verts, const std::vector<int>& uvs = {}); ///< uvs: none, or one per corner
    void Line(const std::vector<int>& verts);
    void Points(const std::vector<int>& verts);

    /// Writes the corners of faces backwards while on: one loop then builds both sides of a mirrored part.
    void SetReversed(bool on) { mReversed = on; }

    std::string Text() const;

private:
    void State(std::string& slot, const std::string& statement);

    std::string mTitle, mMaterialFile;
    std::string mVerts, mUvs, mBody;
    std::string mObject, mGroup, mMaterial, mSmooth;
    int mNumVerts = 0, mNumUvs = 0;
    Vec3 mOrigin, mX{1, 0, 0}, mY{0, 1, 0}, mZ{0, 0, 1};
    bool mReversed = false;
};

// --- Shapes that several models use. Polygons are wound counter-clockwise seen from outside.

/// A stretch of a lathe's profile: from the point before it to this point.
struct LathePoint
{
    double r = 0, y = 0;
    const char* material = nullptr; ///< material of the band that ends here; null goes on with the one before
    double v = -1;                  ///< texture coordinate along the profile; bands between two that have one get UVs
};

enum class LatheEnds
{
    Capped, ///< the first and the last ring are closed by one polygon each
    Joined, ///< the last ring is followed by the first: a tube
};

/// Turns a profile about the y axis of the present frame. The profile goes up the outside and down the inside.
/// @param uRepeat texture repeats around
void AddLathe(ObjModel& model, const std::vector<LathePoint>& profile, int segments, LatheEnds ends,
              double uRepeat = 1);

/// Quads between two closed rings of equal length; `upper` lies to the left of `lower` when walking along it, seen from
/// outside.
void AddBand(ObjModel& model, const std::vector<int>& lower, const std::vector<int>& upper);

/// A tube of elliptic section along a path that lies in a plane, closed at both ends.
/// @param across  unit normal of the path's plane  @param radii in the plane and across it, one for each path point
void AddTube(ObjModel& model, const std::vector<Vec3>& path, Vec3 across, const std::vector<Vec2>& radii, int segments);

/// A straight round bar whose radius goes from r0 to r1, closed at both ends.
void AddBar(ObjModel& model, Vec3 from, Vec3 to, double r0, double r1, int segments);

/// A box about the present frame's origin, with chamfered edges and corners.
void AddChamferedBox(ObjModel& model, Vec3 halfSize, double chamfer);

/// A 16-colour picture as PNG bytes. Stored without compression, so that the bytes do not depend on a zlib version.
/// @param pixels width * height palette indices, top row first
std::string PngBytes(int width, int height, const std::vector<unsigned char>& pixels,
                     const std::array<std::array<unsigned char, 3>, 16>& palette);

/// A file of a sample.
struct SampleFile
{
    std::string name, bytes;
};

std::vector<SampleFile> TeacupFiles();
std::vector<SampleFile> BracketFiles();
std::vector<SampleFile> SailboatFiles();
std::vector<SampleFile> MaterialPictures(); ///< of the materials in the folder materials
