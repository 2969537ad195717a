// VelmarBase: engine and scene.
#include "engine/VXEngine.h"

#include "engine/VXScene.h"

#include <new>

static bool gTangentCalculations = true;

VXEngine::VXEngine() = default;

VXEngine::~VXEngine() { delete mScene; }

int VXEngine::InitScene()
{
    delete mScene;
    mScene = new (std::nothrow) VXScene;
    return 0;
}

void VXEngine::EnableTangentCalculations(bool on) { gTangentCalculations = on; }

bool VXEngine::TangentCalculationsEnabled() { return gTangentCalculations; }
