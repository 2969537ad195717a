#include "tests/support/RecordingEngine.h"

#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "mesh/VXEdge.h"
#include "shader/VXShaderEngine.h"

RecordingEngine::Lines RecordingEngine::Take()
{
    Lines lines;
    lines.swap(mLines);
    return lines;
}

void RecordingEngine::Log(const std::string& hook, const std::string& arguments)
{
    if (mOnly.empty() || mOnly.count(hook))
        mLines.push_back(arguments.empty() ? hook : hook + " " + arguments);
}

void RecordingEngine::LogArray(const std::string& hook, const void* array, int count)
{
    Log(hook, array ? std::to_string(count) : count == 0 ? "off" : "null with a count");
}

std::string RecordingEngine::ModeName(const VXMaterial* mode) const
{
    if (!mode)
        return "null";
    if (mode == Scene()->SceneMaterial())
        return "scene";
    if (mode == Scene()->ControlMeshMaterial())
        return "cage";
    for (std::int64_t i = 0; i < Scene()->NumObjects(); ++i)
        if (mode == Scene()->Object(int(i))->DefaultMaterial())
            return "style of " + Scene()->Object(int(i))->InternalName().Std();
    return "unknown";
}

std::string RecordingEngine::Here() const
{
    const std::string name = CurrentObject() ? CurrentObject()->InternalName().Std() : "nothing";
    return CurrentDrawGeom() == kDrawGeomSurface ? name + " surface" : name;
}

// --- Operations with a body

void RecordingEngine::DrawScenePolys(VXScene* scene)
{
    Log("DrawScenePolys",
        BString::Format("pass %d %s", int(DrawPass()), SilhouetteToggle() ? "first" : "second").Std());
    VXSceneDrawEngine::DrawScenePolys(scene);
}

void RecordingEngine::DrawSceneHaberlines(VXScene* scene)
{
    Log("DrawSceneHaberlines");
    VXSceneDrawEngine::DrawSceneHaberlines(scene);
}

void RecordingEngine::DrawHaberlines(VXGeom* geom, VXMaterial* objectMode, VXMaterial* sceneMode, VXScene* scene)
{
    Log("DrawHaberlines", Here());
    VXSceneDrawEngine::DrawHaberlines(geom, objectMode, sceneMode, scene);
}

void RecordingEngine::DrawSortedElements(VXGeom* geom, VXMaterial* objectMode, VXMaterial* sceneMode, VXScene* scene)
{
    const VXMaterialColor4& kd = objectMode->KdColor();
    const bool black = kd.Red() == 0 && kd.Green() == 0 && kd.Blue() == 0;
    Log("DrawSortedElements", Here() + (black ? " black" : ""));
    VXSceneDrawEngine::DrawSortedElements(geom, objectMode, sceneMode, scene);
}

void RecordingEngine::DrawSortedLines(VXGeom* geom, VXMaterial* objectMode, VXMaterial* sceneMode, VXScene* scene)
{
    Log("DrawSortedLines", Here());
    VXSceneDrawEngine::DrawSortedLines(geom, objectMode, sceneMode, scene);
}

// --- Hooks

int RecordingEngine::DrawStyledScene(VXScene* scene)
{
    Log("DrawStyledScene");
    if (drawsStyled)
    {
        SetDrawPass(kPickPass);
        DrawScenePolys(scene);
    }
    return styledAnswer;
}

void RecordingEngine::UpdateShadersNow(VXScene*)
{
    Log("UpdateShadersNow", ShaderEngine()->IsActive() ? "active" : "inactive");
}

int RecordingEngine::LoadTextureForShader(const BString& path, int& id)
{
    Log("LoadTextureForShader", path.Std());
    if (const auto found = textures.find(path.Std()); found != textures.end())
        id = found->second;
    return -1; // not looked at
}

int RecordingEngine::CreateNoiseTexture()
{
    Log("CreateNoiseTexture");
    return 500;
}

void RecordingEngine::SetLineWidth(float pixels) { Log("SetLineWidth", BString::Format("%g", double(pixels)).Std()); }

void RecordingEngine::BeginObject(VXObject* object)
{
    Log("BeginObject", object->InternalName().Std() + (object == CurrentObject() ? "" : ", which is not current"));
}

void RecordingEngine::EndObject(VXObject* object) { Log("EndObject", object->InternalName().Std()); }

void RecordingEngine::BindMaterial(VXMaterial* material)
{
    Log("BindMaterial", material ? material->InternalName().Std() : "null");
}

static const char* KindName(VXElementKind kind)
{
    switch (kind)
    {
    case VXElementKind::Quads:
        return "quads";
    case VXElementKind::Triangles:
        return "triangles";
    case VXElementKind::Polygons:
        return "polygons";
    case VXElementKind::Lines:
        return "lines";
    case VXElementKind::Points:
        return "points";
    }
    return "unknown";
}

void RecordingEngine::DrawElements(const VXElementBatch& batch)
{
    std::string text = BString::Format("%s %d %d", KindName(batch.kind), batch.first, batch.count).Std();
    if (batch.material)
        text.append(" ").append(batch.material->InternalName().Std());
    if (batch.layer > 0)
        text.append(BString::Format(" layer %d", int(batch.layer)).Std());
    if (batch.transparent)
        text.append(" transparent");
    Log("DrawElements", text);
}

void RecordingEngine::DrawPolygon(VXGeom*, const VXEdge& edge) { Log("DrawPolygon", std::to_string(edge.EdgeIndex())); }

void RecordingEngine::DrawHaberlineSets(VXMaterial* material, int count, const std::uint32_t*, const std::uint32_t*,
                                        int corners)
{
    Log("DrawHaberlineSets", BString::Format("%s %d of %d", material->InternalName().CString(), count, corners).Std());
}

void RecordingEngine::SetPolygonOffset(bool on, int factor, int units)
{
    Log("SetPolygonOffset", BString::Format("%s %d %d", on ? "on" : "off", factor, units).Std());
}

void RecordingEngine::GetCullFace(bool& cull, bool& back)
{
    cull = true; // not what a frame would set by itself, so that a forgotten restore shows
    back = true;
    Log("GetCullFace");
}
