// VelmarBase: drawing.
#pragma once

#include "VelmarExport.h"
#include "base/BString.h"

#include <cstdint>

/// The user's settings of the preview: plain values that the host writes and the draw engine reads. The order and the
/// defaults are a promise to hosts that store them; fields with a plain number have no meaning to the library.
class VELMAR_EXPORT VXSceneDrawOptions
{
public:
    VXSceneDrawOptions() { SetDefaults(); }
    void SetDefaults();

    /// Both in pixels, cut to whole ones toward zero. A side that is not a number is 0.
    void SetSceneSize(float width, float height);
    void SetMinOpacityDisplayGL(float opacity) { mMinOpacity = opacity; }

    /// The least opacity that the preview shows, so that nothing becomes too clear to be worked with.
    /// @param force answer the stored value even when the floor is switched off
    float MinOpacityDisplayGL(bool force) const { return force || mUseMinOpacity ? mMinOpacity : 0.0f; }

    bool mDrawPolygons;        ///< 1: off draws no geometry at all
    bool mReserved2;           ///< 2
    bool mSuppressBackCull;    ///< 3: draw style presets leave back faces visible
    bool mReserved4;           ///< 4
    float mReserved5;          ///< 5
    float mReserved6;          ///< 6
    float mLineWidth;          ///< 7: of control meshes drawn over their surface, pixels
    float mReserved8;          ///< 8
    float mReserved9;          ///< 9
    bool mReserved10;          ///< 10
    bool mShadeUntextured;     ///< 11: shaders also in draw styles without textures
    bool mHWShading;           ///< 12: the user's master switch for shaders
    bool mDeepShaderTest;      ///< 13: look at a tree's nodes before giving it a shader
    bool mReserved14;          ///< 14
    bool mReserved15;          ///< 15
    bool mReserved16;          ///< 16
    bool mReserved17;          ///< 17
    bool mReserved18;          ///< 18
    bool mShaderBatch;         ///< 19: compile all shaders at once, before drawing
    bool mReserved20;          ///< 20
    bool mReserved21;          ///< 21
    float mReserved22;         ///< 22
    std::int32_t mReserved23;  ///< 23
    float mReserved24;         ///< 24
    bool mReserved25;          ///< 25
    float mReserved26;         ///< 26
    float mReserved27;         ///< 27
    float mReserved28;         ///< 28
    float mReserved29;         ///< 29
    bool mReserved30;          ///< 30
    bool mUseMinOpacity;       ///< 31: nothing is drawn clearer than mMinOpacity
    bool mReserved32;          ///< 32
    bool mReserved33;          ///< 33
    BString mEffectName;       ///< 34: effect program around the passes; empty for none
    float mReserved35;         ///< 35
    std::int32_t mReserved36;  ///< 36
    bool mHaberlinesOn;        ///< 37: draw edge lines
    bool mHaberlinesWelded;    ///< 38: edge lines follow the normals of the welded mesh
    bool mHaberlinesDrawLast;  ///< 39: edge lines in a pass of their own after all polygons
    std::int32_t mSceneWidth;  ///< 40: pixels
    std::int32_t mSceneHeight; ///< 41: pixels
    float mMinOpacity;         ///< 42
};
