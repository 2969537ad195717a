// VelmarBase: what mesh and material code may ask of the current scene.
#pragma once

#include "VelmarExport.h"
#include "mesh/VXSubdivScheme.h"

#include <cstdint>

class BString;
class VXMaterial;
class VXMaterialColor4;
class VXSceneDelegate;
class VXSceneDrawEngine;
class VXSceneDrawOptions;
class VXShaderEngine;

/// Meshes and materials hold no scene; where they need one they mean the current scene, through these functions alone.
/// All answer null or false, or do nothing, when there is no current scene.
namespace VXSceneContext
{
VELMAR_EXPORT bool HasScene();
VELMAR_EXPORT VXSceneDrawEngine* DrawEngine();
VELMAR_EXPORT VXSceneDrawOptions* DrawOptions(); ///< of the scene's draw engine
VELMAR_EXPORT VXShaderEngine* ShaderEngine();    ///< of the scene's draw engine
VELMAR_EXPORT bool WantShader();         ///< the scene's style can be drawn with programs; false without a draw engine
VELMAR_EXPORT bool BackCullSuppressed(); ///< by the draw options; false without a draw engine
VELMAR_EXPORT VXSceneDelegate* Delegate();
VELMAR_EXPORT int RenderType(); ///< CurrentPreviewRootRenderType of the scene; 1 without one
VELMAR_EXPORT const VXMaterialColor4* BackgroundColor();
VELMAR_EXPORT const VXMaterialColor4* WireframeColor();
VELMAR_EXPORT bool HaberlinesWelded(); ///< of the draw engine; true when there is none
VELMAR_EXPORT BString VertexShaderSource(VXMaterial* material, std::int64_t layer); ///< empty without a program
VELMAR_EXPORT BString FragmentShaderSource(VXMaterial* material, std::int64_t layer);
VELMAR_EXPORT void ComputeShaderHash(VXMaterial* material, bool flag); ///< by the delegate
VELMAR_EXPORT float GeometricEdgeDistance();                           ///< the delegate's; 1 without one
VELMAR_EXPORT bool AllowCreaseVertsForSubdiv();                        ///< the delegate's; false without one
VELMAR_EXPORT void SubdivisionWillRebuild(bool rebuild, int controlVerts, E_SubdivScheme scheme); ///< to the delegate
VELMAR_EXPORT void MarkShadowsForRedraw();
VELMAR_EXPORT void RemoveMaterial(VXMaterial* material); ///< from the scene's list
} // namespace VXSceneContext
