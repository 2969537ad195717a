#include "host/Preview.h"

#include "draw/VXPicker.h"
#include "engine/VXScene.h"
#include "engine/VXSwitches.h"
#include "host/gl/VXGLDrawEngine.h"

#include <algorithm>

namespace vx
{
const VXPickBuffer* Preview::PickRegion(const PreviewOptions& options, const View& view, int left, int top, int width,
                                        int height)
{
    mError.Empty();
    if (!PrepareContext())
        return nullptr;
    VXScene::SetCurrentScene(mScene.get());
    Derive(options);
    PlaceCamera(*mScene, view);
    mEngine->SetPickRegion({options.width, options.height, left, top, width, height});
    const VXSwitches::Scoped noCages(VXSwitches::SubdividedDrawing, VXSwitches::SetSubdividedDrawing, !options.cage);
    const bool behind = mScene->PickZObjects();
    mScene->SetPickZObjects(behind || options.backFaces); // else back faces are culled while objects are picked
    Mat44 camera;
    MAT_Copy(view.toView, camera);
    mScene->PickPolygonsAndMore(camera);
    mScene->SetPickZObjects(behind);
    mEngine->SetPickRegion({});
    const bool picked = mEngine->Error().IsEmpty() || Fail(mEngine->Error());
    return picked ? &mEngine->Picked() : nullptr;
}

bool Preview::Pick(const PreviewOptions& options, const View& view, int x, int y, PickResult& result, float radius)
{
    result = {};
    const int reach = mScene->PickEdges() || mScene->PickVerts() ? VXPicker::ReachOf(radius) : 0;
    const auto before = [reach](int at) { return int(std::max<std::int64_t>(std::int64_t(at) - reach, INT32_MIN)); };
    const VXPickBuffer* const buffer = PickRegion(options, view, before(x), before(y), 2 * reach + 1, 2 * reach + 1);
    if (!buffer)
        return false;
    const VXPicker picker(*buffer, *mScene, view.toView, view.projection, options.width, options.height);
    result.hit = picker.At(x, y, radius);
    if (!result.hit)
        return true;
    result.object = mScene->Object(result.hit.object);
    result.geom = picker.GeomOf(result.hit);
    result.position = picker.PositionOf(result.hit);
    result.depth = picker.DistanceOf(result.hit);
    return true;
}
} // namespace vx
