#include "draw/VXObject2D.h"

#include <cmath>

VXObject2D::~VXObject2D() { VXObject2D::DeleteOffscreen(); }

void VXObject2D::CreateOffscreen(const int& width, const int& height)
{
    DeleteOffscreen();
    mOffscreen = CPB_Offscreen::Create(width, height, 32, true, true);
}

void VXObject2D::DeleteOffscreen()
{
    delete mOffscreen;
    mOffscreen = nullptr;
}

void VXObject2D::Draw() {}

bool VXObject2D::WantsAnimatedDrawing() { return false; }

int VXObject2D::PrepareForDrawing(const int& width, const int& height)
{
    return ++mPrepareCount == 1 && mPrepareProc ? mPrepareProc(this, width, height, mPrepareData) : 0;
}

void VXObject2D::EndDrawing(const int& width, const int& height)
{
    if (mPrepareCount-- == 1 && mEndProc)
        mEndProc(this, width, height, mEndData);
}

void VXObject2D::SetPrepareProc(Proc proc, void* data)
{
    mPrepareProc = proc;
    mPrepareData = data;
}

void VXObject2D::SetEndProc(Proc proc, void* data)
{
    mEndProc = proc;
    mEndData = data;
}

// --- Insets

// 0.49 rather than one half: a length that comes out at exactly a half goes down, so that the fitted rectangle does not
// grow past its frame.
static constexpr float kRound = 0.49f;

// Truncation to whole pixels. False when the value has no such form.
static bool WholePixels(float value, std::int32_t& pixels)
{
    if (!(std::fabs(value) < 2147483520.0f))
        return false;
    pixels = std::int32_t(value);
    return true;
}

// Differences in double, so that rectangles at the ends of the coordinate range do not overflow.
static float Extent(std::int32_t from, std::int32_t to) { return float(double(to) - double(from)); }

static bool PlaceInset(const CPB_Rect& frame, const CPB_Rect& content, CPB_Rect& result)
{
    const float frameWidth = Extent(frame.x1, frame.x2);
    const float frameHeight = std::fmax(Extent(frame.y1, frame.y2), 1.0f);
    const float contentHeight = std::fmax(Extent(content.y1, content.y2), 1.0f);
    const float contentAspect = Extent(content.x1, content.x2) / contentHeight;
    result = frame;
    std::int32_t length = 0;
    if (frameWidth / frameHeight <= contentAspect)
    {
        if (!WholePixels(frameWidth / contentAspect + kRound, length) ||
            !WholePixels((frameHeight - float(length)) * 0.5f + float(frame.y1), result.y1))
            return false;
        result.y2 = result.y1 + length;
        return true;
    }
    if (!WholePixels(frameHeight * contentAspect + kRound, length) ||
        !WholePixels((frameWidth - float(length)) * 0.5f + float(frame.x1), result.x1))
        return false;
    result.x2 = result.x1 + length;
    return true;
}

void ComputeInset(const CPB_Rect& frame, const CPB_Rect& content, CPB_Rect& result)
{
    const CPB_Rect kept = frame; // result may be one of the two
    if (!PlaceInset(kept, CPB_Rect(content), result))
        result = kept;
}
