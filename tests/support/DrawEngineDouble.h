// Tests: a draw engine that draws nothing and can be told what to answer.
#pragma once

#include "draw/VXSceneDrawEngine.h"
#include "draw/VXSceneDrawOptions.h"

#include <functional>
#include <vector>

/// Stands in for a platform's draw engine where only the scene's side of the agreement is looked at.
class DrawEngineDouble : public VXSceneDrawEngine
{
public:
    int DrawScene(VXScene* scene, float[4][4]) override
    {
        ++frames;
        if (onFrame)
            onFrame(scene);
        return 0;
    }
    void LightRemoved(VXLight* light) override { removedLights.push_back(light); }
    VXSceneDrawOptions* DrawOptions() override
    {
        ++optionQueries;
        return &options;
    }

    VXSceneDrawOptions options;
    std::function<void(VXScene*)> onFrame;
    std::vector<VXLight*> removedLights;
    int frames = 0;
    int optionQueries = 0;
};
