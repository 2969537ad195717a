// VelmarBase: engine and scene.
#pragma once

#include "VelmarExport.h"
#include "base/BString.h"
#include "base/MAT.h"
#include "engine/VXBBox.h"
#include "material/FlagWord.h"
#include "material/VXMaterialColor4.h"

#include <cstdint>

/// Bits of a light's flag word.
enum class LightFlag : std::uint32_t
{
    Changed = 1u << 0, ///< cleared at the start of every frame
    On = 1u << 1,      ///< on in a new light
    HWShadow = 1u << 2,
    HWShadowDirty = 1u << 3, ///< the shadow map is stale
    TypeChanged = 1u << 4,
};

inline constexpr FlagRow<LightFlag> kLightFlags[] = {
    {LightFlag::Changed, "changed"},          {LightFlag::On, "on"},
    {LightFlag::HWShadow, "hw-shadow"},       {LightFlag::HWShadowDirty, "hw-shadow-dirty"},
    {LightFlag::TypeChanged, "type-changed"},
};
static_assert(FlagMask(kLightFlags) == 0x1F && FlagsInOrder(kLightFlags));

/// A light of the preview. The scene owns it and marks its shadow dirty on every structural change; the draw engine
/// reads it.
class VELMAR_EXPORT VXLight
{
public:
    enum VXLightType : std::int32_t
    {
        kLightInfinite = 0, ///< from a direction, the same everywhere
        kLightSpot = 1,
        kLightPoint = 2,
        kLightImage = 3, ///< image-based: nine colours
        kLightArea = 4,
    };
    /// How the light weakens with distance. Values without a name here are the host's to define.
    enum VXLightAttenType : std::int32_t
    {
        kAttenConstant = 0,
        kAttenInverseSquare = 1, ///< what area lights always have
        kAttenInverseLinear = 2,
    };
    using Proc = int (*)(VXLight* light, void* data);

    VXLight();
    virtual ~VXLight();
    VXLight(const VXLight&) = delete;
    VXLight& operator=(const VXLight&) = delete;

    const BString& InternalName() const { return mInternalName; }
    void SetInternalName(const char* name) { mInternalName = name; }
    const BString& ExternalName() const { return mExternalName; }
    void SetExternalName(const char* name) { mExternalName = name; }

    // --- Flags, in bit order; each setter changes its bit alone
    std::uint32_t Flags() const { return mFlags.Word(); }
    bool Changed() const { return mFlags.Get(LightFlag::Changed); }
    void SetChanged(bool on) { mFlags.Set(LightFlag::Changed, on); }
    bool On() const { return mFlags.Get(LightFlag::On); }
    void SetOn(bool on) { mFlags.Set(LightFlag::On, on); }
    bool HWShadow() const { return mFlags.Get(LightFlag::HWShadow); }
    void SetHWShadow(bool on) { mFlags.Set(LightFlag::HWShadow, on); }
    bool HWShadowDirty() const { return mFlags.Get(LightFlag::HWShadowDirty); }
    void SetHWShadowDirty(bool on) { mFlags.Set(LightFlag::HWShadowDirty, on); }
    bool TypeChanged() const { return mFlags.Get(LightFlag::TypeChanged); }
    void SetTypeChanged(bool on) { mFlags.Set(LightFlag::TypeChanged, on); }

    // --- Type
    VXLightType LightType() const { return mLightType; }
    void SetLightType(VXLightType type); ///< TypeChanged when it differs, Changed always
    bool IsInfinite() const { return mLightType == kLightInfinite; }
    bool IsSpot() const { return mLightType == kLightSpot; }
    bool IsPoint() const { return mLightType == kLightPoint; }
    bool IsImageLight() const { return mLightType == kLightImage; }
    bool IsAreaLight() const { return mLightType == kLightArea; }

    // --- Placement
    Mat44& GetTransform() { return mTransform; } ///< light to world
    const Mat44& GetTransform() const { return mTransform; }
    void SetTransform(const Mat44 m) { MAT_Copy(m, mTransform); }
    Mat44& GetLightView() { return mLightView; } ///< the host's, for its shadow maps; identity until set
    const Mat44& GetLightView() const { return mLightView; }
    void SetLightView(const Mat44 m) { MAT_Copy(m, mLightView); }
    VERTEX GetPosition() const;  ///< world
    VERTEX GetDirection() const; ///< world direction of the light's z axis, of unit length to float accuracy
    VXBBox& BoundingBox() { return mBoundingBox; }
    const VXBBox& BoundingBox() const { return mBoundingBox; }

    // --- Brightness. Setters mark the light changed, unless they say otherwise.
    VXMaterialColor4& LightColor() { return mLightColor; }
    const VXMaterialColor4& LightColor() const { return mLightColor; }
    void SetLightColor(float red, float green, float blue, float brightness);
    VXLightAttenType AttenType() const { return IsAreaLight() ? kAttenInverseSquare : mAttenType; }
    void SetAttenType(VXLightAttenType type);
    float AttenStart() const { return mAttenStart; } ///< model units, as all distances here
    void SetAttenStart(float distance);
    float AttenEnd() const { return mAttenEnd; }
    void SetAttenEnd(float distance);
    float FalloffStart() const { return mFalloffStart; }
    void SetFalloffStart(float value); ///< Changed becomes whether the value differs: an equal value clears it
    float FalloffEnd() const { return mFalloffEnd; }
    void SetFalloffEnd(float value);                              ///< likewise
    const float* DistanceRange() const { return mDistanceRange; } ///< two: nearest, farthest
    void SetDistanceRange(float nearest, float farthest);         ///< does not touch Changed
    float* IBLColors() { return mIBLColors[0]; }                  ///< nine times red, green, blue
    const float* IBLColors() const { return mIBLColors[0]; }
    void SetIBLColors(const float (*colors)[3]);    ///< nine triples; null is ignored; does not touch Changed
    bool IncludeOGL() const { return mIncludeOGL; } ///< takes part in the fixed pipeline's lighting
    void SetIncludeOGL(bool on) { mIncludeOGL = on; }

    // --- Shadow
    float ShadowStrength() const { return mShadowStrength; } ///< 0 none, 1 black
    void SetShadowStrength(float strength);
    std::int32_t ShadowMapSize() const { return mShadowMapSize; } ///< pixels
    void SetShadowMapSize(std::int32_t pixels) { mShadowMapSize = pixels; }

    // --- Host callbacks around the use of the light
    void SetPrepareProc(Proc proc, void* data);
    void SetEndProc(Proc proc, void* data);
    void PrepareForDrawing();
    void EndDrawing();

private:
    Mat44 mTransform;
    Mat44 mLightView;
    BString mInternalName;
    BString mExternalName;
    VXBBox mBoundingBox;
    FlagWord<LightFlag> mFlags = {LightFlag::On};
    Proc mPrepareProc = nullptr;
    void* mPrepareData = nullptr;
    Proc mEndProc = nullptr;
    void* mEndData = nullptr;
    VXMaterialColor4 mLightColor{1, 1, 1, 1};
    float mFalloffStart = 0, mFalloffEnd = 0;
    float mAttenStart = 0, mAttenEnd = 0;
    float mShadowStrength = 1;
    bool mIncludeOGL = true;
    std::int32_t mShadowMapSize = 512;
    VXLightAttenType mAttenType = kAttenConstant;
    VXLightType mLightType = kLightInfinite;
    float mIBLColors[9][3] = {};
    float mDistanceRange[2] = {};
};
