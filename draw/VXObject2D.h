// VelmarBase: drawing.
#pragma once

#include "VelmarExport.h"
#include "base/CPB_Offscreen.h"

#include <cstdint>

/// A flat item over the preview: a panel, a badge, a picture. Stores where it is pinned, may hold a bitmap, and runs
/// the host's callbacks around a (possibly nested) stretch of drawing. When to prepare, draw and end it is the
/// business of the draw engine's subclass. The scene owns the items added to it. GL thread only.
class VELMAR_EXPORT VXObject2D
{
public:
    /// Run when the outermost drawing nest opens or closes. Sizes are those given to PrepareForDrawing or EndDrawing.
    using Proc = int (*)(VXObject2D* object, const int& width, const int& height, void* data);

    /// Which point of the view the offset counts from. Stored and returned only; further values are the host's.
    enum EPinX : std::int32_t
    {
        kPinLeft = 0,
        kPinCenterX = 1,
        kPinRight = 2,
    };
    enum EPinY : std::int32_t
    {
        kPinTop = 0,
        kPinCenterY = 1,
        kPinBottom = 2,
    };

    VXObject2D() = default;
    /// Copies are shallow, the bitmap's pointer included: two items then share one bitmap, and the first to die frees
    /// it. Who copies calls CreateOffscreen on neither and lets one of them go without its bitmap.
    VXObject2D(const VXObject2D& other) = default;
    VXObject2D& operator=(const VXObject2D& other) = default;
    virtual ~VXObject2D();

    /// Replaces the bitmap by a zeroed one of 32 bits per pixel with aligned rows and alpha. Null afterwards when that
    /// failed.
    virtual void CreateOffscreen(const int& width, const int& height);
    virtual void DeleteOffscreen();
    virtual void Draw();                 ///< does nothing here
    virtual bool WantsAnimatedDrawing(); ///< false here; true asks the host for frames without an event

    /// Opens a nest. @return the prepare proc's result when this call opened the outermost nest, otherwise 0
    int PrepareForDrawing(const int& width, const int& height);
    void EndDrawing(const int& width, const int& height); ///< closes a nest; the outermost one runs the end proc
    void SetPrepareProc(Proc proc, void* data);
    void SetEndProc(Proc proc, void* data);

    CPB_Offscreen* Offscreen() const { return mOffscreen; } ///< null when there is none
    EPinX PinX() const { return mPinX; }
    EPinY PinY() const { return mPinY; }
    void SetPinX(const EPinX& pin) { mPinX = pin; }
    void SetPinY(const EPinY& pin) { mPinY = pin; }
    int OffsetX() const { return mOffsetX; } ///< pixels from the pin
    int OffsetY() const { return mOffsetY; }
    void SetOffsetX(const int& pixels) { mOffsetX = pixels; }
    void SetOffsetY(const int& pixels) { mOffsetY = pixels; }

private:
    Proc mPrepareProc = nullptr;
    void* mPrepareData = nullptr;
    Proc mEndProc = nullptr;
    void* mEndData = nullptr;
    std::int32_t mPrepareCount = 0;
    CPB_Offscreen* mOffscreen = nullptr; ///< owned
    EPinX mPinX = kPinLeft;
    EPinY mPinY = kPinTop;
    std::int32_t mOffsetX = 0;
    std::int32_t mOffsetY = 0;
};

/// Fits the aspect ratio of `content` into `frame`, centred: the largest such rectangle in whole pixels. Heights below
/// 1 count as 1. When the arithmetic has no finite answer (neither has a width), the result is the frame. `result` may
/// be one of the two.
VELMAR_EXPORT void ComputeInset(const CPB_Rect& frame, const CPB_Rect& content, CPB_Rect& result);
