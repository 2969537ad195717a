// VelmarBase: engine and scene.
#pragma once

#include "VelmarExport.h"
#include "base/BString.h"
#include "engine/BRenderEngines.h"
#include "mesh/VXSubdivScheme.h"

class BShaderTree;
class CPB_PixelBucket;
class VXLight;
class VXMaterial;
class VXObject;

/// The host's hook into the library's decisions: it answers questions about host settings and is told of events. Every
/// operation has a neutral default, so that a host overrides what it needs. Called on the drawing thread.
///
/// The order is that of the function table which hosts are built against: add at the end.
class VELMAR_EXPORT VXSceneDelegate
{
public:
    virtual int AddHostMapFile(BString& path);
    virtual VXLight* GetCurrentLight();
    virtual bool RedrawOff(); ///< true: frames are skipped entirely
    virtual int FrameNumber();
    virtual void GetClientNameFromObjectName(const char* name, BString& out); ///< the name itself
    virtual int GetTextureBucketByID(int id, CPB_PixelBucket** out);          ///< pixels of a host texture; -1 for none
    virtual bool CheckValidTexturePath(int id);
    virtual float GammaForTexture(const BString& path); ///< 0 when the host has no say
    virtual bool PickDrawCheckPrepareBeforeVisible();
    virtual bool SetRedrawOff(bool off);   ///< stores nothing: a host that suppresses redraws keeps the state itself
    virtual BString RuntimeShaderFolder(); ///< "Runtime/Cg/", separator included
    virtual bool WantsShaderDebugging();
    virtual ~VXSceneDelegate();
    virtual bool WantsShaderLog();
    virtual void NotifyForFailedSubdivision(VXObject* object);
    virtual bool AbortOnBadSubdivSourceData(); ///< the library-wide switch of that name
    virtual void MaterialTreeChanged(VXMaterial* material, BShaderTree* tree);
    virtual void PrintDebugString(BString& text);
    virtual float SceneGeometricEdgeDistance(); ///< scale of the offset of edge lines; 0 keeps them on the surface
    virtual BRenderEngines::E_Renderer CurrentPreviewRootRenderType(); ///< which root of a shader tree is shown
    virtual void SetBusyCursor(bool on);                               ///< shaders are being built
    virtual void SetCurrentPreviewRootRenderType(BRenderEngines::E_Renderer renderer);
    virtual void ComputeShaderHash(VXMaterial* material, bool flag); ///< store each layer's hash: SetTreeHash
    virtual bool AllowCreaseVertsForSubdiv();                        ///< subdivided meshes get creases of their own

    /// Before OpenSubdiv refines a mesh's topology anew; a new pose of a refined mesh is not told.
    /// @param rebuild always true
    virtual void SubdivisionWillRebuild(bool rebuild, int controlVerts, E_SubdivScheme scheme);
};
