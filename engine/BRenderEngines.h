// VelmarBase: engine and scene.
#pragma once

/// The renderers whose look the preview stands in for. They choose a shader tree's root node.
class BRenderEngines
{
public:
    /// Values without a name here are the host's to define.
    enum E_Renderer : int
    {
        kRenderTypeDefault = 1,   ///< also the answer where there is nobody to ask
        kRenderTypeNoShaders = 5, ///< no shader programs are generated
    };
};
