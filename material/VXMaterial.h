// VelmarBase: materials.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"
#include "base/BDependentProvider.h"
#include "base/BString.h"
#include "material/VXDrawPresets.h"
#include "material/VXMaterialColor4.h"
#include "material/VXMaterialLayer.h"

#include <cstdint>

class BShaderNode;

/// A surface description that the preview draws with, and at the same time the carrier of a draw style: a scene, the
/// control meshes of a scene and every object hold one as their style, and surface materials are others that meshes
/// refer to by material slot. Its flag word says what is drawn; sixteen presets rewrite it.
///
/// Owned by whoever created it. At its death a material takes itself out of the current scene's list, and only of that
/// one: the list of a scene that is not current keeps a dangling entry, so make that scene current first.
/// One thread at a time.
class VELMAR_EXPORT VXMaterial : public BDependentProvider
{
public:
    /// What a normal map's vectors are relative to.
    enum NormalMapKind : std::int32_t
    {
        kNormalMapWorld = 0,
        kNormalMapObject = 1,
        kNormalMapTangent = 2,
    };

    // --- Life, names, supervisor: VXMaterial.cpp

    /// @param withTextures non-zero: all seven texture indices are 1, the host's first texture; 0: all are -1, none
    /// @param supervisor   becomes the supervisor; may be null
    VXMaterial(int withTextures, BDependentProvider* supervisor);
    ~VXMaterial() override;
    void DeletingProvider(BDependentProvider* provider) override;

    virtual void SetInternalName(const BString& name) { mInternalName = name; }
    virtual void SetInternalName(const char* name) { mInternalName = name; }
    virtual void SetExternalName(const BString& name) { mExternalName = name; }
    virtual void SetExternalName(const char* name) { mExternalName = name; }
    const BString& InternalName() const { return mInternalName; } ///< what scenes look up
    const BString& ExternalName() const { return mExternalName; } ///< what users read
    BString Uuid() const { return mUuid; }
    BDependentProvider* Supervisor() const { return mSupervisor; }

    /// Registers with `supervisor` and is told when it dies. A previous supervisor is not told that it was replaced.
    void SetSupervisor(BDependentProvider* supervisor);

    // --- Flags, in bit order
    std::uint32_t Flags() const { return mFlags.Word(); }
    void SetFlags(std::uint32_t word) { mFlags = FlagWord<MaterialFlag>(word); }
    bool Flag(MaterialFlag f) const { return mFlags.Get(f); }
    void SetFlag(MaterialFlag f, bool on) { mFlags.Set(f, on); }
    bool GetFlagSmooth() const { return mFlags.Get(MaterialFlag::Smooth); }
    void SetFlagSmooth(bool on) { mFlags.Set(MaterialFlag::Smooth, on); }
    bool GetFlagSilhouette() const { return mFlags.Get(MaterialFlag::Silhouette); }
    void SetFlagSilhouette(bool on) { mFlags.Set(MaterialFlag::Silhouette, on); }
    bool GetFlagDrawPolys() const { return mFlags.Get(MaterialFlag::DrawPolys); }
    void SetFlagDrawPolys(bool on) { mFlags.Set(MaterialFlag::DrawPolys, on); }
    bool GetFlagDrawWires() const { return mFlags.Get(MaterialFlag::DrawWires); }
    void SetFlagDrawWires(bool on) { mFlags.Set(MaterialFlag::DrawWires, on); }
    bool GetFlagBackCull() const { return mFlags.Get(MaterialFlag::BackCull); }
    void SetFlagBackCull(bool on) { mFlags.Set(MaterialFlag::BackCull, on); }
    bool GetFlagLightLines() const { return mFlags.Get(MaterialFlag::LightLines); }
    void SetFlagLightLines(bool on) { mFlags.Set(MaterialFlag::LightLines, on); }
    bool GetFlagTexture() const { return mFlags.Get(MaterialFlag::Texture); }
    void SetFlagTexture(bool on) { mFlags.Set(MaterialFlag::Texture, on); }
    bool GetFlagToon() const { return mFlags.Get(MaterialFlag::Toon); }
    void SetFlagToon(bool on) { mFlags.Set(MaterialFlag::Toon, on); }
    bool GetFlagOutline() const { return mFlags.Get(MaterialFlag::Outline); }
    void SetFlagOutline(bool on) { mFlags.Set(MaterialFlag::Outline, on); }
    bool GetFlagPick() const { return mFlags.Get(MaterialFlag::Pick); }
    void SetFlagPick(bool on) { mFlags.Set(MaterialFlag::Pick, on); }
    bool GetFlagHairMaterial() const { return mFlags.Get(MaterialFlag::HairMaterial); }
    void SetFlagHairMaterial(bool on) { mFlags.Set(MaterialFlag::HairMaterial, on); }
    bool GetFlagNonBodyPart() const { return mFlags.Get(MaterialFlag::NonBodyPart); }
    void SetFlagNonBodyPart(bool on) { mFlags.Set(MaterialFlag::NonBodyPart, on); }
    bool GetFlagKsIgnoreTexture() const { return mFlags.Get(MaterialFlag::KsIgnoreTexture); }
    void SetFlagKsIgnoreTexture(bool on) { mFlags.Set(MaterialFlag::KsIgnoreTexture, on); }
    bool GetFlagReflectMultLights() const { return mFlags.Get(MaterialFlag::ReflectMultLights); }
    void SetFlagReflectMultLights(bool on) { mFlags.Set(MaterialFlag::ReflectMultLights, on); }
    bool GetFlagReflectMultKD() const { return mFlags.Get(MaterialFlag::ReflectMultKD); }
    void SetFlagReflectMultKD(bool on) { mFlags.Set(MaterialFlag::ReflectMultKD, on); }
    bool GetFlagSetFromScript() const { return mFlags.Get(MaterialFlag::SetFromScript); }
    void SetFlagSetFromScript(bool on) { mFlags.Set(MaterialFlag::SetFromScript, on); }
    bool GetFlagAnimateable() const { return mFlags.Get(MaterialFlag::Animateable); }
    void SetFlagAnimateable(bool on) { mFlags.Set(MaterialFlag::Animateable, on); }
    bool GetFlagInCurrentSelection() const { return mFlags.Get(MaterialFlag::InCurrentSelection); }
    void SetFlagInCurrentSelection(bool on) { mFlags.Set(MaterialFlag::InCurrentSelection, on); }
    bool GetFlagInheritStyleFromObject() const { return mFlags.Get(MaterialFlag::InheritStyleFromObject); }
    void SetFlagInheritStyleFromObject(bool on) { mFlags.Set(MaterialFlag::InheritStyleFromObject, on); }
    bool GetFlagInheritStyleFromObjectParent() const { return mFlags.Get(MaterialFlag::InheritStyleFromObjectParent); }
    void SetFlagInheritStyleFromObjectParent(bool on) { mFlags.Set(MaterialFlag::InheritStyleFromObjectParent, on); }
    bool GetFlagInheritStyleFromScene() const { return mFlags.Get(MaterialFlag::InheritStyleFromScene); }
    void SetFlagInheritStyleFromScene(bool on) { mFlags.Set(MaterialFlag::InheritStyleFromScene, on); }
    bool GetFlagForceOpaque() const { return mFlags.Get(MaterialFlag::ForceOpaque); }
    void SetFlagForceOpaque(bool on) { mFlags.Set(MaterialFlag::ForceOpaque, on); }
    bool GetFlagLineColorFromObject() const { return mFlags.Get(MaterialFlag::LineColorFromObject); }
    void SetFlagLineColorFromObject(bool on) { mFlags.Set(MaterialFlag::LineColorFromObject, on); }
    bool GetFlagBlackLines() const { return mFlags.Get(MaterialFlag::BlackLines); }
    void SetFlagBlackLines(bool on) { mFlags.Set(MaterialFlag::BlackLines, on); }
    bool GetFlagDepthOnly() const { return mFlags.Get(MaterialFlag::DepthOnly); }
    void SetFlagDepthOnly(bool on) { mFlags.Set(MaterialFlag::DepthOnly, on); }
    bool GetFlagNormalsOnly() const { return mFlags.Get(MaterialFlag::NormalsOnly); }
    void SetFlagNormalsOnly(bool on) { mFlags.Set(MaterialFlag::NormalsOnly, on); }
    bool GetFlagVertexColorsOnly() const { return mFlags.Get(MaterialFlag::VertexColorsOnly); }
    void SetFlagVertexColorsOnly(bool on) { mFlags.Set(MaterialFlag::VertexColorsOnly, on); }
    bool GetFlagRegularBumpChannel() const { return mFlags.Get(MaterialFlag::RegularBumpChannel); }
    void SetFlagRegularBumpChannel(bool on) { mFlags.Set(MaterialFlag::RegularBumpChannel, on); }

    // --- Draw style: VXMaterialStyle.cpp

    /// Makes this a style of the given mode. With a current scene, line and silhouette colour are taken from it, and
    /// BackCull is set unless the draw options suppress culling (wire mode clears it without asking); without one, the
    /// flag word alone changes. Bits that are no style bits keep their value.
    void ApplyPreset(DrawMode mode);
    void SetDepthMode() { ApplyPreset(DrawMode::Depth); }
    void SetFlatLinedMode() { ApplyPreset(DrawMode::FlatLined); }
    void SetFlatMode() { ApplyPreset(DrawMode::Flat); }
    void SetHidLineMode() { ApplyPreset(DrawMode::HidLine); }
    void SetLitWireMode() { ApplyPreset(DrawMode::LitWire); }
    void SetNormalsMode() { ApplyPreset(DrawMode::Normals); }
    void SetOutlineMode() { ApplyPreset(DrawMode::Outline); }
    void SetSilhouetteMode() { ApplyPreset(DrawMode::Silhouette); }
    void SetSmoothLinedMode() { ApplyPreset(DrawMode::SmoothLined); }
    void SetSmoothMode() { ApplyPreset(DrawMode::Smooth); }
    void SetSmoothOutlinedMode() { ApplyPreset(DrawMode::SmoothOutlined); }
    void SetSmoothTexturedMode() { ApplyPreset(DrawMode::SmoothTextured); }
    void SetTexturedLinedMode() { ApplyPreset(DrawMode::TexturedLined); }
    void SetToonShadedMode() { ApplyPreset(DrawMode::ToonShaded); }
    void SetToonShadedOutlinedMode() { ApplyPreset(DrawMode::ToonShadedOutlined); }
    void SetWireMode() { ApplyPreset(DrawMode::Wire); }
    void SetPickMode(bool on); ///< the pick pass on or off; polygons are drawn in both cases

    // --- Colours, in red, green, blue, brightness
    VXMaterialColor4& KdColor() { return mKdColor; } ///< diffuse
    const VXMaterialColor4& KdColor() const { return mKdColor; }
    VXMaterialColor4& KsColor() { return mKsColor; } ///< specular; brightness 0 in a new material
    const VXMaterialColor4& KsColor() const { return mKsColor; }
    VXMaterialColor4& KaColor() { return mKaColor; } ///< ambient
    const VXMaterialColor4& KaColor() const { return mKaColor; }
    VXMaterialColor4& TextureColor() { return mTextureColor; } ///< multiplies the texture
    const VXMaterialColor4& TextureColor() const { return mTextureColor; }
    VXMaterialColor4& ReflectionColor() { return mReflectionColor; }
    const VXMaterialColor4& ReflectionColor() const { return mReflectionColor; }
    VXMaterialColor4& SilhouetteColor() { return mSilhouetteColor; }
    const VXMaterialColor4& SilhouetteColor() const { return mSilhouetteColor; }
    VXMaterialColor4& LineColor() { return mLineColor; }
    const VXMaterialColor4& LineColor() const { return mLineColor; }
    VXMaterialColor4& UndoKdColor() { return mUndoKdColor; } ///< see RememberForUndo
    const VXMaterialColor4& UndoKdColor() const { return mUndoKdColor; }
    VXMaterialColor4& UndoKsColor() { return mUndoKsColor; }
    const VXMaterialColor4& UndoKsColor() const { return mUndoKsColor; }
    void SetSilhouetteColor(float red, float green, float blue, float brightness)
    {
        mSilhouetteColor.Set(red, green, blue, brightness);
    }
    void SetLineColor(float red, float green, float blue, float brightness)
    {
        mLineColor.Set(red, green, blue, brightness);
    }
    void RememberForUndo(); ///< keeps Kd and Ks
    void Undo();            ///< brings the kept ones back

    // --- Surface numbers
    float Ns() const { return mNs; } ///< specular exponent
    void SetNs(float value) { mNs = value; }
    float BumpStrength() const { return mBumpStrength; }
    void SetBumpStrength(float value) { mBumpStrength = value; }
    float ReflectionStrength() const { return mReflectionStrength; }
    void SetReflectionStrength(float value) { mReflectionStrength = value; }
    float TMin() const { return mTMin; } ///< transparency seen face on, 0 is opaque
    void SetTMin(float value) { mTMin = value; }
    float TMax() const { return mTMax; } ///< transparency at the rim, 0 is opaque
    void SetTMax(float value) { mTMax = value; }
    float TExpo() const { return mTExpo; } ///< falloff between the two
    void SetTExpo(float value) { mTExpo = value; }

    // --- Textures: handles into the host's texture table, -1 for none
    std::int32_t TextureIndex() const { return mTextureIndex; }
    void SetTextureIndex(std::int32_t index) { mTextureIndex = index; }
    std::int32_t AmbientTextureIndex() const { return mAmbientTextureIndex; }
    void SetAmbientTextureIndex(std::int32_t index) { mAmbientTextureIndex = index; }
    std::int32_t ReflectionIndex() const { return mReflectionIndex; }
    void SetReflectionIndex(std::int32_t index) { mReflectionIndex = index; }
    std::int32_t TransparencyIndex() const { return mTransparencyIndex; }
    void SetTransparencyIndex(std::int32_t index) { mTransparencyIndex = index; }
    std::int32_t BumpIndex() const { return mBumpIndex; }
    void SetBumpIndex(std::int32_t index) { mBumpIndex = index; }
    std::int32_t NormaMapIndex() const { return mNormalMapIndex; }
    void SetNormaMapIndex(std::int32_t index) { mNormalMapIndex = index; }
    std::int32_t SpecularIndex() const { return mSpecularIndex; }
    void SetSpecularIndex(std::int32_t index) { mSpecularIndex = index; }
    NormalMapKind NormaMapType() const { return mNormalMapKind; }
    void SetNormalMapKind(NormalMapKind kind) { mNormalMapKind = kind; }
    const BString& PreviewTexturePath() const { return mPreviewTexturePath; }
    void SetPreviewTexturePath(const BString& path) { mPreviewTexturePath = path; }
    int PreviewTextureID() const { return mPreviewTextureID; } ///< as the draw engine loaded it; 0 for none
    void SetPreviewTextureID(int id) { mPreviewTextureID = id; }

    // --- Edge lines: VXMaterialStyle.cpp
    void SetHaberlineOffsetEnabled(bool on) { mHaberlineOffsetEnabled = on; }
    bool HaberlineOffsetEnabled() const { return mHaberlineOffsetEnabled; }
    float HaberlineOffset() const;           ///< model units by which edge lines are pushed off the surface
    VXMaterialColor4 HaberlineColor() const; ///< from the base layer's tree; black without one

    // --- Layers: VXMaterialLayers.cpp. Layer 0 is the base layer, made with the material; it stays where it is.
    std::int64_t NumLayers() const { return mLayers.Count(); }
    VXMaterialLayer* Layer(std::int64_t i) const;                    ///< null out of range
    std::int64_t FindLayerIndex(const VXMaterialLayer* layer) const; ///< -1 for none
    std::int32_t LayerActive() const { return mLayerActive; }
    void SetLayerActive(std::int32_t i) { mLayerActive = i; } ///< unchecked

    /// Appends a layer whose names are made unique. @return its index; -1 when memory ran out
    std::int64_t CreateNewLayer(const char* internalName, const char* externalName);
    /// Inserts a layer before `at`; its internal name is made unique, the external name is taken as it is.
    /// @return the layer, null when memory ran out. With `at` outside 0..NumLayers() it is not inserted and belongs to
    ///         the caller
    VXMaterialLayer* InsertNewLayer(std::int64_t at, const char* internalName, const char* externalName);

    bool CanRaiseLayer(std::int64_t i) const; ///< false for the base layer and the last
    bool CanLowerLayer(std::int64_t i) const; ///< from layer 2 on: nothing moves below the base layer
    bool CanRenameLayer(std::int64_t i, const char* name) const; ///< not the base layer, and no name twice
    // The following answer 0, or -1 and change nothing.
    int RaiseLayer(std::int64_t i);                            ///< swaps with the next
    int LowerLayer(std::int64_t i);                            ///< swaps with the one before
    int MoveLayer(std::int64_t from, std::int64_t to);         ///< the layers between shift by one; both from 1 on
    int RenameLayer(std::int64_t i, const char* externalName); ///< the external name alone
    int RemoveLayer(std::int64_t i);                           ///< deletes it; not the base layer
    int RemoveLayer(VXMaterialLayer* layer);
    int RemoveAllLayers(); ///< deletes all but the base layer
    void ClearLayers();    ///< deletes all, the base layer too

    /// True when some layer's name equals `name` byte for byte. @param external which of the two names
    bool LayerNameExists(const char* name, bool external) const;
    BString SuggestedNewLayerName() const; ///< "Base" for the first, then the first free "Layer_1", "Layer_2", ...
    /// `name` when no layer has it, else the first free of: "Base_1", ... for "Base"; "Layer_1", ... for "Layer_" and
    /// digits; "name 1", ... for all others.
    BString UniqueLayerName(const char* name, bool external) const;

    // --- Shader trees: VXMaterialLayers.cpp. A layer index out of range reads null or empty and stores nothing.
    void* OrmondShaderTree(std::int64_t layer) const; ///< a converted BShaderTree*
    void SetOrmondShaderTree(std::int64_t layer, void* tree);
    BShaderTree* ShaderTree(std::int64_t layer) const; ///< the same, typed
    BString TreeHash(std::int64_t layer) const;
    bool ShaderTreeDirty() const { return mShaderTreeDirty; } ///< the hashes are stale
    void SetShaderTreeDirty(bool dirty) { mShaderTreeDirty = dirty; }
    void ComputeShaderHash(bool flag);                       ///< by the current scene's delegate; nothing without one
    BString GetVertexShaderSource(std::int64_t layer) const; ///< empty when the layer has no program
    BString GetFragmentShaderSource(std::int64_t layer) const;

    // --- Buffers that the draw engine hangs on the material. Memory handles; the material owns and frees them.
    static constexpr int kNumShaderBuffers = 11;
    void* ShaderBuffer(int i) const { return mShaderBuffers[i]; }             ///< unchecked
    void SetShaderBuffer(int i, void* handle) { mShaderBuffers[i] = handle; } ///< does not free the previous one

private:
    void TakeSceneColors(const DrawPreset& preset);
    BShaderNode* RootNode() const;

    void* mShaderBuffers[kNumShaderBuffers] = {};
    BString mUuid;
    BArray<VXMaterialLayer*> mLayers; ///< owned
    BString mInternalName;
    BString mExternalName;
    FlagWord<MaterialFlag> mFlags = {MaterialFlag::BackCull, MaterialFlag::InheritStyleFromObject};
    std::int32_t mLayerActive = 0;
    VXMaterialColor4 mSilhouetteColor;
    VXMaterialColor4 mKdColor{0.5f, 0.5f, 0.5f, 1};
    VXMaterialColor4 mKsColor{0.15f, 0.15f, 0.15f, 0};
    VXMaterialColor4 mKaColor;
    VXMaterialColor4 mTextureColor{1, 1, 1, 1};
    VXMaterialColor4 mReflectionColor{1, 1, 1, 1};
    VXMaterialColor4 mLineColor{1, 1, 1, 1};
    VXMaterialColor4 mUndoKdColor;
    VXMaterialColor4 mUndoKsColor;
    float mNs = 50;
    float mBumpStrength = 1;
    float mReflectionStrength = 1;
    float mTMin = 0, mTMax = 0, mTExpo = 0;
    bool mHaberlineOffsetEnabled = true;
    std::int32_t mTextureIndex, mAmbientTextureIndex, mReflectionIndex, mTransparencyIndex, mBumpIndex, mNormalMapIndex,
        mSpecularIndex;
    NormalMapKind mNormalMapKind = kNormalMapTangent;
    BDependentProvider* mSupervisor = nullptr;
    bool mShaderTreeDirty = true;
    BString mPreviewTexturePath;
    int mPreviewTextureID = 0;
};
