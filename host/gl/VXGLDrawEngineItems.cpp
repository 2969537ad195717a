#include "draw/VXObject2D.h"
#include "engine/VXScene.h"
#include "host/gl/VXGLDrawEngine.h"
#include "host/overlay/OverlayPainter.h"

#include <cmath>

// What 2D objects are told of the frame. The viewport may show a part of the picture only.
vx::OverlayFrame VXGLDrawEngine::ItemFrame(const VXScene& scene) const
{
    vx::OverlayFrame frame;
    frame.scene = &scene;
    MAT_Copy(Camera(), frame.camera);
    frame.viewWidth = mTargetViewport[2];
    frame.viewHeight = mTargetViewport[3];
    frame.scale = mPixelScale;
    float whole[2];
    WholeSize(whole);
    frame.left = std::round(mTile[2] * whole[0]);
    frame.top = std::round((1 - mTile[3] - mTile[1]) * whole[1]);
    frame.width = int(std::lround(whole[0] / mPixelScale));
    frame.height = int(std::lround(whole[1] / mPixelScale));
    frame.milliseconds = mFrameMilliseconds;
    return frame;
}

void VXGLDrawEngine::DrawBitMaps(VXScene* scene)
{
    mItemTextures.erase(mItemTextures.lower_bound(int(scene->NumObject2Ds())), mItemTextures.end());
    if (!mReady || scene->NumObject2Ds() == 0)
        return;
    const vx::OverlayFrame frame = ItemFrame(*scene);
    for (std::int64_t i = 0; i < scene->NumObject2Ds(); ++i)
    {
        VXObject2D* const item = scene->Object2D(int(i));
        if (!item)
            continue;
        if (vx::OverlayPainter::Draws(*item)) // left to itself it would draw into the window's framebuffer
        {
            if (!mPainter->Draw(*item, frame))
                Fail("a 2D object could not be drawn with Skia");
            continue;
        }
        item->PrepareForDrawing(frame.width, frame.height);
        item->Draw();
        if (item->Offscreen())
            DrawBitmapItem(*item, mItemTextures[int(i)], frame);
        item->EndDrawing(frame.width, frame.height);
    }
}

// The bitmap of a 2D object at its pins, a pixel of it for each of the picture. Looked at in every frame: the host may
// paint into it without telling.
void VXGLDrawEngine::DrawBitmapItem(const VXObject2D& item, vx::PictureTexture& texture, const vx::OverlayFrame& frame)
{
    const CPB_Offscreen& picture = *item.Offscreen();
    if (const BString problem = texture.Upload(picture); !problem.IsEmpty())
        return Fail(problem);
    const CPB_Rect place = vx::PlaceByPins(item, picture.Width(), picture.Height(), frame);
    float whole[2];
    WholeSize(whole);
    DrawPictureAt(texture, float(place.x1) * frame.scale, whole[1] - float(place.y2) * frame.scale,
                  float(picture.Width()) * frame.scale, float(picture.Height()) * frame.scale, 1);
}
