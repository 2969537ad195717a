// A frame of the reference host, to compare shader upkeep with.

#include "bench/ManyMaterials.h"
#include "host/gl/Framebuffer.h"
#include "host/gl/VXGLDrawEngine.h"
#include "host/window/OffscreenContext.h"

#include <GL/glew.h>
#include <benchmark/benchmark.h>

namespace
{
void HostFrame(benchmark::State& state)
{
    vx::OffscreenContext context;
    if (!context.Create())
    {
        state.SkipWithError(context.Error().CString());
        return;
    }
    vx::Framebuffer target;
    VXGLDrawEngine engine;
    if (!target.Create(512, 512, 1).IsEmpty() || !engine.Init().IsEmpty())
    {
        state.SkipWithError("no framebuffer");
        return;
    }
    ManyMaterials many(engine);
    for (auto _ : state)
    {
        many.Frame();
        glFinish();
    }
}
BENCHMARK(HostFrame)->Name("Shaders/frame-of-200")->Unit(benchmark::kMicrosecond);
} // namespace
