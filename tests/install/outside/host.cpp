// A picture through the installed host; without OpenGL it is enough that the program links and says why.
#include "host/Preview.h"

#include <cstdio>

int main()
{
    vx::Preview preview;
    vx::PreviewOptions options;
    options.width = options.height = 64;
    const char triangle[] = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    if (!preview.LoadText(triangle, sizeof triangle - 1, "triangle", "."))
        return 1;
    const vx::PicturePtr picture = preview.Render(options);
    if (!picture)
        std::printf("no picture: %s\n", preview.Error().CString());
    return picture || !preview.HasContext() ? 0 : 1;
}
