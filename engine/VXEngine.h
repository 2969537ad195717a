// VelmarBase: engine and scene.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"

#include <cstdint>

class VXPythonCommand;
class VXPythonEngine;
class VXScene;

/// What a host creates first: it owns one scene. The scripting interface is inert; a host that wants modelling commands
/// supplies an engine of its own.
class VELMAR_EXPORT VXEngine
{
public:
    VXEngine();
    virtual ~VXEngine(); ///< deletes the scene
    VXEngine(const VXEngine&) = delete;
    VXEngine& operator=(const VXEngine&) = delete;

    int InitScene(); ///< deletes the scene and makes a new one, which becomes current; always 0
    VXScene* Scene() const { return mScene; }
    void SetScene(VXScene* scene) { mScene = scene; } ///< takes ownership; the previous scene is not deleted

    /// Process-wide; on at start. Off: normals are computed without tangents, and no thread is started for them.
    static void EnableTangentCalculations(bool on);
    static bool TangentCalculationsEnabled();

    // --- Inert
    VXPythonEngine* PythonEngine() const { return mPythonEngine; } ///< null
    int InitPython(bool) { return 0; }
    int AddModellingCommand(std::int32_t, char*, char*, void*) { return 0; }
    void AddModellingCommands() {}
    int FindAndRunPythonCmd(std::int32_t) { return -1; }

private:
    VXPythonEngine* mPythonEngine = nullptr;
    VXScene* mScene = nullptr;                   ///< owned
    BArray<VXPythonCommand*> mModellingCommands; ///< the host's
};
