// A draw engine that draws nothing and writes down what it was asked, so that tests compare frames as lists of calls.
#pragma once

#include "draw/VXSceneDrawEngine.h"
#include "draw/VXSceneDrawOptions.h"

#include <initializer_list>
#include <map>
#include <set>
#include <string>
#include <vector>

/// One line for each hook call: the hook's name, then its arguments by name where they have one. Draw modes read
/// "scene", "cage" or "style of NAME"; geometries by the name of the object being drawn.
class RecordingEngine : public VXSceneDrawEngine
{
public:
    using Lines = std::vector<std::string>;

    ~RecordingEngine() override { DeleteShaderEngine(); } ///< whose programs log their end

    VXSceneDrawOptions options;
    std::map<std::string, int> textures; ///< images that can be loaded, and the names they get; noise gets 500
    int styledAnswer = 0;                ///< what DrawStyledScene answers
    bool vetoDeepTest = false;           ///< what VetoDeepShaderTest answers
    bool drawsStyled = false;            ///< DrawStyledScene draws the polygons in the pick pass

    /// Keeps only the lines of these hooks; an empty list keeps all again.
    void Only(std::initializer_list<const char*> hooks) { mOnly = {hooks.begin(), hooks.end()}; }
    Lines Take(); ///< what was written since the last call
    void Log(const std::string& hook, const std::string& arguments = "");

    VXSceneDrawOptions* DrawOptions() override { return &options; }

    // --- Operations with a body: written down, then done
    void DrawScenePolys(VXScene* scene) override;
    void DrawSceneHaberlines(VXScene* scene) override;
    void DrawHaberlines(VXGeom* geom, VXMaterial* objectMode, VXMaterial* sceneMode, VXScene* scene) override;
    void DrawSortedElements(VXGeom* geom, VXMaterial* objectMode, VXMaterial* sceneMode, VXScene* scene) override;
    void DrawSortedLines(VXGeom* geom, VXMaterial* objectMode, VXMaterial* sceneMode, VXScene* scene) override;

    // --- Hooks
    bool VetoDeepShaderTest() override { return vetoDeepTest; }
    void BeginFrameState() override { Log("BeginFrameState"); }
    void EndFrameState() override { Log("EndFrameState"); }
    void SetFrameMultisample(bool on) override { Log("SetFrameMultisample", OnOff(on)); }
    int DrawStyledScene(VXScene* scene) override;
    void PrepareScene(VXScene*) override { Log("PrepareScene"); }
    void InitShaderEngine() override { Log("InitShaderEngine"); }
    void FreeTextures() override { Log("FreeTextures"); }
    void UpdateShadersNow(VXScene*) override;
    void UpdateShadersLater() override { Log("UpdateShadersLater"); }
    void SetShaderRecompiled(bool on) override { Log("SetShaderRecompiled", OnOff(on)); }
    int LoadTextureForShader(const BString& path, int& id) override;
    int CreateNoiseTexture() override;
    void EnableMultitexture2D(int id, int unit) override { LogUnit("EnableMultitexture2D", id, unit); }
    void EnableMultitexture3D(int id, int unit) override { LogUnit("EnableMultitexture3D", id, unit); }
    void DisableMultitexture2D() override { Log("DisableMultitexture2D"); }
    void BeginEffect(const BString& name) override { Log("BeginEffect", name.Std()); }
    void EndEffect(const BString& name) override { Log("EndEffect", name.Std()); }
    void PrepareMainPass(VXMaterial* mode) override { Log("PrepareMainPass", ModeName(mode)); }
    void PrepareObjectPass(VXMaterial* mode) override { Log("PrepareObjectPass", ModeName(mode)); }
    void PrepareLinePass(VXMaterial* mode) override { Log("PrepareLinePass", ModeName(mode)); }
    void PrepareArrayPass(VXMaterial* mode, int) override { Log("PrepareArrayPass", ModeName(mode)); }
    void SetPassLighting(bool on) override { Log("SetPassLighting", OnOff(on)); }
    void SetLineWidth(float pixels) override;
    void BeginDropShadow() override { Log("BeginDropShadow"); }
    void EndDropShadow() override { Log("EndDropShadow"); }
    void SkipDropShadow() override { Log("SkipDropShadow"); }
    void BeginObject(VXObject* object) override;
    void EndObject(VXObject* object) override;
    void SetPickName(int name) override { Log("SetPickName", std::to_string(name)); }
    void EnableClientArrays() override { Log("EnableClientArrays"); }
    void DisableClientArrays() override { Log("DisableClientArrays"); }
    void SetVertexArray(VERTEX* verts, int count) override { LogArray("SetVertexArray", verts, count); }
    void SetNormalArray(VERTEX* normals, int count) override { LogArray("SetNormalArray", normals, count); }
    void SetColorArray(VERTEX* colors, int count) override { LogArray("SetColorArray", colors, count); }
    void SetTexCoordArray(T_VERTEX* uvs, int count) override { LogArray("SetTexCoordArray", uvs, count); }
    void SetTangentArray(VERTEX* tangents, int count) override { LogArray("SetTangentArray", tangents, count); }
    void PrepareGeometry(VXGeom*) override { Log("PrepareGeometry"); }
    void PrepareSceneLights(VXScene*) override { Log("PrepareSceneLights"); }
    void BindMaterial(VXMaterial* material) override;
    void DrawElements(const VXElementBatch& batch) override;
    void DrawPolygon(VXGeom* geom, const VXEdge& edge) override;
    void DrawHaberlineSets(VXMaterial* material, int count, const std::uint32_t* indices,
                           const std::uint32_t* edgeFlags, int corners) override;
    void SetPolygonOffset(bool on, int factor, int units) override;
    void GetCullFace(bool& cull, bool& back) override;
    void SetCullFace(bool cull, bool back) override { Log("SetCullFace", OnOff(cull) + " " + OnOff(back)); }
    void PrepareGroupTool(VXScene*) override { Log("PrepareGroupTool"); }
    void DrawGroupToolObject(VXGeom*, VXMaterial*, VXMaterial*, VXScene*) override
    {
        Log("DrawGroupToolObject", Here());
    }
    void DrawGroupToolMember(VXGeom*, VXMaterial*, VXMaterial*, VXObject*) override
    {
        Log("DrawGroupToolMember", Here());
    }
    void DrawPickedControls(VXScene*, int) override { Log("DrawPickedControls"); }
    void DrawBackgroundPicture(VXScene*) override { Log("DrawBackgroundPicture"); }
    void DrawBackgroundMovie(VXScene*) override { Log("DrawBackgroundMovie"); }
    void DrawPickedverts(VXScene*) override { Log("DrawPickedverts"); }
    void DrawCustomVerts(VXScene*) override { Log("DrawCustomVerts"); }
    void DrawCustomLines(VXScene*) override { Log("DrawCustomLines"); }
    void DrawOverlayPicture(VXScene*) override { Log("DrawOverlayPicture"); }
    void DrawWaterMark(VXScene*) override { Log("DrawWaterMark"); }
    void DrawBitMaps(VXScene*) override { Log("DrawBitMaps"); }

private:
    static std::string OnOff(bool on) { return on ? "on" : "off"; }
    std::string ModeName(const VXMaterial* mode) const;
    std::string Here() const; ///< the object being drawn, and which of its geometries when it is the surface
    void LogUnit(const char* hook, int id, int unit) { Log(hook, std::to_string(id) + " " + std::to_string(unit)); }
    void LogArray(const std::string& hook, const void* array, int count);

    std::set<std::string> mOnly;
    Lines mLines;
};
