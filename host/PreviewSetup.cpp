#include "host/PreviewSetup.h"

#include "engine/VXCamera.h"
#include "engine/VXLight.h"
#include "engine/VXScene.h"
#include "host/LightRig.h"
#include "mesh/VXGeom.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace vx
{
static constexpr float kRadians = 0.017453293f;

VERTEX UpOf(UpAxis axis) { return axis == UpAxis::Z ? VERTEX{0, 0, 1} : VERTEX{0, 1, 0}; }

// Made of the angles directly, so that there is no direction in which the axes are not known.
ViewAxes::ViewAxes(float azimuth, float elevation, UpAxis axis)
{
    const float a = azimuth * kRadians, e = elevation * kRadians;
    right = {std::cos(a), 0, -std::sin(a)};
    back = {std::sin(a) * std::cos(e), std::sin(e), std::cos(a) * std::cos(e)};
    up = {-std::sin(a) * std::sin(e), std::cos(e), -std::cos(a) * std::sin(e)};
    if (axis == UpAxis::Z)
        for (VERTEX* const v : {&right, &up, &back})
            *v = {v->x, -v->z, v->y};
}

// --- Fitting

namespace
{
struct Extent
{
    double low = INFINITY, high = -INFINITY;
    void Add(double v)
    {
        low = std::min(low, v);
        high = std::max(high, v);
    }
    double Middle() const { return (low + high) / 2; }
    double Size() const { return high - low; }
};

// Where a perspective camera must stand, as seen along its own axes, for all points to lie within half angles of
// tangents tx and ty. For each of the four side planes only the outermost point matters.
struct Stand
{
    double x = 0, y = 0, z = 0;
};

// @param least how far before the nearest point it must stand
Stand FitPerspective(std::span<const VERTEX> seen, double tx, double ty, double least)
{
    Extent right, left, top, bottom, depth;
    for (const VERTEX& p : seen)
    {
        right.Add(p.x + tx * p.z);
        left.Add(-p.x + tx * p.z);
        top.Add(p.y + ty * p.z);
        bottom.Add(-p.y + ty * p.z);
        depth.Add(p.z);
    }
    const double zx = (right.high + left.high) / (2 * tx), zy = (top.high + bottom.high) / (2 * ty);
    // Never inside: a point, or a line along the view, would bring the camera to it.
    Stand stand{(right.high - left.high) / 2, (top.high - bottom.high) / 2, std::max({zx, zy, depth.high + least})};

    // The side that does not decide has room to spare: share it evenly. Moving the camera sideways moves near points
    // more than far ones, hence the repetition.
    for (int round = 0; round < 12; ++round)
    {
        Extent x, y;
        double nearest = 0;
        for (const VERTEX& p : seen)
        {
            const double away = 1 / (stand.z - p.z);
            x.Add((p.x - stand.x) * away);
            y.Add((p.y - stand.y) * away);
            nearest = std::max(nearest, away);
        }
        stand.x += x.Middle() / std::max(nearest, 1e-30);
        stand.y += y.Middle() / std::max(nearest, 1e-30);
        if (std::fabs(x.Middle()) < 1e-5 * tx && std::fabs(y.Middle()) < 1e-5 * ty)
            break;
    }
    return stand;
}

// Empty, too, when memory ran out: a view of the unit box is better than none.
BArray<VERTEX> Seen(std::span<const VERTEX> points, const ViewAxes& axes)
{
    BArray<VERTEX> seen;
    if (!seen.Reserve(std::int64_t(points.size())))
        return seen;
    for (const VERTEX& p : points)
        if (IsFinite(p))
            seen.Append(axes.Seen(p));
    return seen;
}
// World to view, for a camera that stands there along its own axes.
void LookFrom(const Stand& stand, const ViewAxes& axes, View& view)
{
    const VERTEX columns[3] = {axes.right, axes.up, axes.back};
    MAT_Identity(view.toView);
    for (int c = 0; c < 3; ++c)
    {
        view.toView[0][c] = columns[c].x;
        view.toView[1][c] = columns[c].y;
        view.toView[2][c] = columns[c].z;
    }
    view.toView[3][0] = float(-stand.x);
    view.toView[3][1] = float(-stand.y);
    view.toView[3][2] = float(-stand.z);
}
} // namespace

View FitView(std::span<const VERTEX> points, std::span<const VERTEX> around, float aspect, const ViewOptions& options)
{
    const ViewAxes axes(options.azimuth, options.elevation, options.up);
    BArray<VERTEX> seen = Seen(points, axes);
    const bool nothing = seen.IsEmpty();
    for (int corner = 0; nothing && corner < 8; ++corner)
        seen.Append(axes.Seen({corner & 1 ? 1.f : -1.f, corner & 2 ? 1.f : -1.f, corner & 4 ? 1.f : -1.f}));
    Extent x, y, z;
    for (const VERTEX& p : seen)
    {
        x.Add(p.x);
        y.Add(p.y);
        z.Add(p.z);
    }
    double size = std::max({x.Size(), y.Size(), z.Size()});
    if (!(size > 1e-15))
        size = 1; // a single point: as good as any
    const double fill = std::clamp(options.fill, 0.05f, 1.0f), zoom = std::clamp(options.zoom, 1e-3f, 1e3f);
    const double wide = aspect > 0 && std::isfinite(aspect) ? double(aspect) : 1;
    const double tangent = std::tan(std::clamp(options.fov, 1.0f, 150.0f) * double(kRadians) / 2);

    View view;
    Stand stand;
    double halfHeight;
    if (options.ortho)
    {
        halfHeight = std::max({y.Size() / (2 * fill), x.Size() / (2 * fill * wide), 1e-3 * size});
        // Silhouettes are found as seen from the camera's place, so it stands far away.
        stand = {x.Middle(), y.Middle(), z.high + 100 * size};
    }
    else
    {
        stand = FitPerspective({seen.Data(), std::size_t(seen.Count())}, tangent * fill * wide, tangent * fill,
                               0.05 * size);
        halfHeight = tangent * (stand.z - z.Middle());
    }
    Extent depth = z;
    for (const VERTEX& p : Seen(around, axes))
        depth.Add(p.z);
    const double nearest = stand.z - depth.high, farthest = stand.z - depth.low, margin = 0.02 * size;
    // What stands closer than a hundredth of the way to the content is cut off, or depth would have no digits left.
    const double least = options.ortho ? 0.5 * size : 0.01 * (stand.z - z.high);
    view.nearest = float(std::max(nearest - margin, least));
    view.farthest = float(std::max(farthest + margin, double(view.nearest) * 1.01 + margin));
    view.distance = float(stand.z - z.Middle());
    view.halfHeight = float(halfHeight / zoom);
    const VERTEX middle = axes.right * float(stand.x) + axes.up * float(stand.y);
    view.target = middle + axes.back * float(z.Middle());

    LookFrom(stand, axes, view);
    if (options.ortho)
        MAT_Ortho(view.projection, float(halfHeight * wide / zoom), view.halfHeight, view.nearest, view.farthest);
    else
        MAT_Perspective(view.projection, float(2 * std::atan(tangent / zoom)), float(wide), view.nearest,
                        view.farthest);
    return view;
}

View ViewOf(const VERTEX& target, float halfHeight, std::span<const VERTEX> points, float aspect,
            const ViewOptions& options)
{
    const ViewAxes axes(options.azimuth, options.elevation, options.up);
    const VERTEX middle = axes.Seen(target);
    const double wide = aspect > 0 && std::isfinite(aspect) ? double(aspect) : 1;
    const double half = std::isfinite(halfHeight) && halfHeight > 1e-15f ? double(halfHeight) : 1;
    const double tangent = std::tan(std::clamp(options.fov, 1.0f, 150.0f) * double(kRadians) / 2);
    Extent depth;
    depth.Add(middle.z);
    for (const VERTEX& p : Seen(points, axes))
        depth.Add(p.z);
    const double size = std::max(depth.Size(), half), margin = 0.02 * size;

    View view;
    Stand stand{middle.x, middle.y, middle.z + half / tangent};
    if (options.ortho)
        stand.z = depth.high + 100 * size; // outside of everything, and as far away as for FitView
    view.target = target;
    view.distance = float(stand.z - middle.z);
    view.halfHeight = float(half);
    // From inside a model, or close to a small part of it, what is nearer than a fiftieth of the way is cut off.
    view.nearest = float(std::max(stand.z - depth.high - margin, options.ortho ? size : 0.02 * half / tangent));
    view.farthest = float(std::max(stand.z - depth.low + margin, double(view.nearest) * 1.01 + margin));
    LookFrom(stand, axes, view);
    if (options.ortho)
        MAT_Ortho(view.projection, float(half * wide), view.halfHeight, view.nearest, view.farthest);
    else
        MAT_Perspective(view.projection, float(2 * std::atan(tangent)), float(wide), view.nearest, view.farthest);
    return view;
}

void TileProjection(const Mat44 whole, float x, float y, float width, float height, Mat44 out)
{
    Mat44 tile;
    MAT_Identity(tile);
    tile[0][0] = 1 / width;
    tile[1][1] = 1 / height;
    // Clip space runs from -1 to 1; the shift is by w, which stands in the fourth component.
    tile[3][0] = (1 - 2 * x - width) / width;
    tile[3][1] = (1 - 2 * y - height) / height;
    MAT_Concat4x4(whole, tile, out);
}

// Vertices that a polygon shows, in world space.
static bool AppendPoints(const VXGeom& mesh, const Mat44 toWorld, BArray<VERTEX>& points)
{
    const GEOM& record = *mesh.Geom();
    BArray<std::uint8_t> used;
    if (!used.SetCount(record.numVerts))
        return false;
    for (std::int32_t p = 0; p < record.numPolys; ++p)
    {
        const ELEMENT& poly = *record.Poly(p);
        for (std::int32_t k = 0; !poly.IsHidden() && k < poly.length; ++k)
            used[record.sets[poly.start + k]] = 1;
    }
    for (std::int32_t v = 0; v < record.numVerts; ++v)
    {
        VERTEX world;
        MAT_VertTransform(record.verts + v, &world, 1, toWorld);
        if (used[v] && !points.Append(world))
            return false;
    }
    return true;
}

bool VisiblePoints(const VXScene& scene, BArray<VERTEX>& points, bool cages)
{
    points.Empty();
    for (std::int64_t i = 0; i < scene.NumObjects(); ++i)
    {
        const VXObject* const object = scene.Object(int(i));
        if (!object || !object->Visible() || object->InternalName() == "GROUND")
            continue;
        const VXGeom* const control = object->Geom();
        const VXGeom* const shown = object->CurSubdivGeom(true) ? object->CurSubdivGeom(true) : control;
        for (const VXGeom* const mesh : {shown, cages && control != shown ? control : nullptr})
            if (mesh && mesh->NumVerts(false) > 0 && !AppendPoints(*mesh, object->GetTransform(), points))
                return false;
    }
    return true;
}

// --- Camera and lights

void PlaceCamera(VXScene& scene, const View& view)
{
    if (scene.NumCameras() == 0)
        scene.InitDefaultCameras();
    if (scene.CurCameraIndex() < 0 || scene.CurCameraIndex() >= scene.NumCameras())
        scene.SetCurCamera(0);
    VXCamera& camera = *scene.CurCamera();
    const bool ortho = view.projection[3][3] != 0;
    // The focal length is in film widths: half a film over the tangent of half the angle.
    camera.SetFocal(ortho ? 0 : 0.5f * view.projection[1][1]);
    camera.SetPerspectiveMat(view.projection);
    Mat44 m;
    MAT_Concat4x4(view.toView, view.projection, m);
    camera.SetFullCameraMat(m);
    MAT_Inverse(view.toView, m);
    camera.SetInverseViewMat(m);
    camera.SetWorldMat(m);
    camera.SetTransform(m);
    camera.SetModelDistance(view.distance);
    camera.SetLocalOrigin(view.target.x, view.target.y, view.target.z);
    camera.SetHither(view.nearest);
    camera.SetYon(view.farthest);
    m[3][0] = m[3][1] = m[3][2] = 0;
    camera.SetRotMat(m);
}

static VXLight* LightNamed(VXScene& scene, const BString& name)
{
    for (std::int64_t i = 0; i < scene.NumLights(); ++i)
        if (scene.Light(int(i)) && scene.Light(int(i))->InternalName() == name)
            return scene.Light(int(i));
    VXLight* const light = new VXLight;
    light->SetInternalName(name.CString());
    scene.AddLight(light);
    return light;
}

void PlaceLights(VXScene& scene, const View& view)
{
    Mat44 toWorld;
    MAT_Inverse(view.toView, toWorld);
    for (const RigLight& rig : kLightRig)
    {
        VXLight& light = *LightNamed(scene, BString("Preview ") + rig.name);
        light.SetExternalName(rig.name);
        light.SetLightType(VXLight::kLightInfinite);
        light.SetLightColor(rig.color.x, rig.color.y, rig.color.z, 1);
        // Its z axis leads to where the light comes from; the other two only have to be square to it.
        const VERTEX z = rig.toLight * (1 / Length(rig.toLight));
        VERTEX x = Cross(VERTEX{0, 1, 0}, z);
        x = x * (1 / Length(x));
        const VERTEX y = Cross(z, x);
        Mat44 m = {{x.x, x.y, x.z, 0}, {y.x, y.y, y.z, 0}, {z.x, z.y, z.z, 0}, {0, 0, 0, 1}};
        MAT_Concat4x4(m, toWorld, m);
        light.SetTransform(m);
    }
}

// --- Ground

void RemoveGround(VXScene& scene)
{
    VXObject* const ground = scene.ObjectByInternalName("GROUND");
    if (!ground)
        return;
    if (scene.GroundObject() == ground)
        scene.SetGroundObject(nullptr);
    scene.RemoveObject(ground);
    delete ground;
}

VXObject* AddGround(VXScene& scene, UpAxis up)
{
    RemoveGround(scene);
    BArray<VERTEX> points;
    if (!VisiblePoints(scene, points) || points.IsEmpty())
        return nullptr;
    VXBBox box;
    box.Extend(points.Data(), int(points.Count()));
    const VERTEX size = box.Max() - box.Min(), middle = (box.Max() + box.Min()) * 0.5f;
    const float radius = 2.4f * std::max({size.x, size.y, size.z});

    constexpr int kSides = 64;
    GEOM* const record = GEOM_Alloc();
    if (!record || record->SetSize(1, kSides, kSides, 0, 0, 0) || GEOM_MakeDefaultMaterial(record))
    {
        GEOM_Free(record);
        return nullptr;
    }
    for (int k = 0; k < kSides; ++k)
    {
        const float a = float(k) * 6.2831853f / kSides, c = radius * std::cos(a), s = radius * std::sin(a);
        record->verts[k] = up == UpAxis::Z ? VERTEX{middle.x + c, middle.y + s, box.Min().z}
                                           : VERTEX{middle.x + s, box.Min().y, middle.z + c};
        record->sets[k] = k;
    }
    record->Poly(0)->start = 0;
    record->Poly(0)->length = kSides;
    VXGeom mesh;
    VXObject* const ground = new VXObject;
    const bool made = mesh.SetGeom(record, false) == 0 && ground->SetGeom(&mesh, true) == 0;
    mesh.SetGeomShared(false);
    if (!made)
    {
        delete ground;
        return nullptr;
    }
    ground->SetInternalName("GROUND");
    ground->SetExternalName("Ground");
    ground->DefaultMaterial()->SetSmoothMode();
    ground->DefaultMaterial()->SetFlagInheritStyleFromScene(false);
    // Clear at its rim, so it belongs to the second half of the polygons.
    scene.AddObject(ground);
    scene.SetGroundObject(ground);
    return ground;
}

void SetStandardColors(VXScene& scene, const VERTEX& backgroundTop, const VERTEX& backgroundBottom)
{
    const VERTEX middle = (backgroundTop + backgroundBottom) * 0.5f;
    scene.SetBackgroundColor(middle.x, middle.y, middle.z, 1);
    // Lines stand out against the background: dark on light, light on dark.
    const bool dark = 0.2126f * middle.x + 0.7152f * middle.y + 0.0722f * middle.z < 0.36f;
    if (dark)
        scene.SetWireframeColor(0.88f, 0.90f, 0.92f, 1);
    else
        scene.SetWireframeColor(0.07f, 0.08f, 0.10f, 1);
    // Cages lie over surfaces of any colour, and must not be taken for the wires of these.
    scene.ControlMeshMaterial()->SetLineColor(0.95f, 0.42f, 0.05f, 1);
}
} // namespace vx
