#include "draw/VXObject2D.h"
#include "engine/VXScene.h"
#include "host/gl/FrameBlock.h"
#include "host/gl/OverlayText.h"
#include "host/gl/ShaderText.h"
#include "host/gl/VXGLDrawEngine.h"
#include "host/image/Label.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>

// What lies behind and over a picture. All of it is placed in the whole picture, of which the viewport may be a tile.

static constexpr float kWatermarkHeight = 0.034f; // of the picture's height; at least this many pixels:
static constexpr float kSmallestWatermark = 11;
static constexpr float kWatermarkOpacity = 0.82f;
static constexpr float kProductionLine = 1.2f; // pixels

// --- The picture behind

void VXGLDrawEngine::SetBackgroundPicture(std::shared_ptr<const CPB_Offscreen> picture, vx::PictureFit fit)
{
    if (picture != mBackPicture)
        mBackTexture.Release();
    mBackPicture = std::move(picture);
    mBackFit = fit;
}

// Device pixels of the whole picture. Whole numbers: shares of a tile are rounded, and every tile has to find the same.
void VXGLDrawEngine::WholeSize(float size[2]) const
{
    size[0] = std::round(float(mTargetViewport[2]) / mTile[0]);
    size[1] = std::round(float(mTargetViewport[3]) / mTile[1]);
}

// Uploads the picture where that is still to be done, and finds its place: cropped it covers all, fitted all of it is
// seen. What the frame block says of it is left alone where there is none.
void VXGLDrawEngine::PlaceBackPicture(FrameBlock& block)
{
    if (!mBackPicture || ShowsData(Scene()->SceneMaterial()))
        return;
    if (!mBackTexture.IsThere())
        if (const BString problem = mBackTexture.Upload(*mBackPicture); !problem.IsEmpty())
            return Fail(problem);
    float whole[2];
    WholeSize(whole);
    const float wider = float(mBackTexture.Width()) * whole[1] / (float(mBackTexture.Height()) * whole[0]);
    float scale[2] = {1, 1};
    if (mBackFit == vx::PictureFit::Crop)
        (wider > 1 ? scale[0] : scale[1]) = wider > 1 ? 1 / wider : wider;
    else
        (wider > 1 ? scale[1] : scale[0]) = wider > 1 ? wider : 1 / wider;
    for (int axis = 0; axis < 2; ++axis)
    {
        block.picture[axis] = scale[axis];
        block.picture[2 + axis] = 0.5f * (1 - scale[axis]);
    }
    block.cue[3] = 1;
    mBackTexture.Bind(kBackPictureUnit);
}

// --- What lies over

void VXGLDrawEngine::PrepareOverlay()
{
    for (GLuint index = 0; index < 4; ++index)
        glDisableVertexAttribArray(index);
    SetDepthState(false, false);
    SetCullFace(false, true);
    SetBlend(true);
    glDisable(GL_POLYGON_OFFSET_FILL);
}

// @param x,y lower left corner, device pixels of the whole picture
void VXGLDrawEngine::DrawPictureAt(const vx::PictureTexture& picture, float x, float y, float width, float height,
                                   float opacity)
{
    vx::Program* const program =
        Variant(0xB0000010, "picture", "", vx::text::kPictureVertex, vx::text::kPictureFragment);
    if (!program)
        return;
    float whole[2];
    WholeSize(whole);
    PrepareOverlay();
    glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA); // colours come multiplied
    glUniform4f(program->Uniform("uPlace"), x / whole[0], y / whole[1], width / whole[0], height / whole[1]);
    glUniform1f(program->Uniform("uOpacity"), opacity);
    picture.Bind(0);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    ++mNumDrawCalls;
    glBindTexture(GL_TEXTURE_2D, 0);
}

void VXGLDrawEngine::DrawOverlayPicture(VXScene* scene)
{
    if (!mReady)
        return;
    if (const CPB_Offscreen* const image = *GetOverlayImage())
    {
        // The host may paint into its image between frames without telling.
        if (const BString problem = mOverlayTexture.Upload(*image); !problem.IsEmpty())
            return Fail(problem);
        float whole[2];
        WholeSize(whole);
        CPB_Rect place;
        ComputeInset({0, 0, int(whole[0]), int(whole[1])}, {0, 0, image->Width(), image->Height()}, place);
        DrawPictureAt(mOverlayTexture, float(place.x1), whole[1] - float(place.y2), float(place.x2 - place.x1),
                      float(place.y2 - place.y1), 1);
    }
    else
        mOverlayTexture.Release();
    if (scene->WantsProductionFrame())
        DrawProductionFrame(scene->ProductionFrameAspectRatio());
}

// Only what is inside will be in the production's picture.
void VXGLDrawEngine::DrawProductionFrame(float aspect)
{
    vx::Program* const program =
        Variant(0xB0000011, "production frame", "", vx::text::kScreenVertex, vx::text::kProductionFrameFragment);
    if (!program || !(aspect > 0) || !std::isfinite(aspect))
        return;
    float whole[2];
    WholeSize(whole);
    constexpr int kFine = 4096; // whole numbers have to express the ratio
    const CPB_Rect content = {0, 0, int(std::min(aspect, 64.0f) * kFine), kFine};
    CPB_Rect inside;
    ComputeInset({0, 0, int(whole[0]), int(whole[1])}, content, inside);
    PrepareOverlay();
    glUniform4f(program->Uniform("uInside"), float(inside.x1), whole[1] - float(inside.y2), float(inside.x2),
                whole[1] - float(inside.y1));
    glUniform1f(program->Uniform("uWidth"), kProductionLine * mPixelScale);
    glDrawArrays(GL_TRIANGLES, 0, 3);
    ++mNumDrawCalls;
}

// --- The watermark

// The text in white on a dark shadow, which can be read on any picture, cut to its width.
static vx::PicturePtr TextPicture(const BString& text, int pixels, int widest)
{
    const int height = pixels * 3 / 2, shadow = std::max(pixels / 14, 1);
    vx::PicturePtr line(CPB_Offscreen::Create(widest, height));
    vx::LabelStyle dark, light;
    dark.height = light.height = pixels;
    light.red = light.green = light.blue = 255;
    dark.alpha = 170;
    if (!line || !vx::DrawLabel(*line, {shadow, shadow, widest, height + shadow}, text.CString(), dark) ||
        !vx::DrawLabel(*line, {0, 0, widest - shadow, height}, text.CString(), light))
        return nullptr;
    int used = 1;
    for (int y = 0; y < height; ++y)
        for (int x = used; x < widest; ++x)
            if (line->Row(y)[4 * x + 3])
                used = x + 1;
    vx::PicturePtr cut(CPB_Offscreen::Create(used, height));
    for (int y = 0; cut && y < height; ++y)
        std::copy_n(line->Row(y), 4 * used, cut->Row(y));
    return cut;
}

void VXGLDrawEngine::DrawWaterMark(VXScene* /*scene*/)
{
    if (!mReady || !WaterMarkOn() || WatermarkString().IsEmpty())
        return;
    float whole[2];
    WholeSize(whole);
    const int pixels = int(std::max(kWatermarkHeight * whole[1], kSmallestWatermark * mPixelScale));
    const int margin = pixels / 2, widest = std::max(int(whole[0]) - 2 * margin, 1);
    if (mWatermarkText != WatermarkString() || pixels != mWatermarkPixels || widest != mWatermarkWidest)
    {
        mWatermarkTexture.Release();
        mWatermarkText = WatermarkString();
        mWatermarkPixels = pixels;
        mWatermarkWidest = widest;
        const vx::PicturePtr text = TextPicture(mWatermarkText, pixels, widest);
        if (text)
            mWatermarkTexture.Upload(*text);
    }
    if (!mWatermarkTexture.IsThere())
        return Fail("the watermark cannot be drawn: no usable font on this system, or no text in UTF-8");
    const float width = float(mWatermarkTexture.Width()), height = float(mWatermarkTexture.Height());
    DrawPictureAt(mWatermarkTexture, whole[0] - width - float(margin), 0.5f * float(margin), width, height,
                  kWatermarkOpacity);
}
