// Built against the installed package alone: what a user's first program looks like.
#include "base/GEOM_Obj.h"
#include "mesh/VXGeom.h"

#include <cstdio>
#include <cstring>

int main()
{
    const char* const cube = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0 0 1\nv 1 0 1\nv 1 1 1\nv 0 1 1\n"
                             "f 4 3 2 1\nf 5 6 7 8\nf 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n";
    GEOM* const record = GEOM_ReadObjText(cube, std::strlen(cube));
    const VXGeom mesh(record);
    GEOM_Free(record);
    std::printf("%d edges, %d crease vertices\n", mesh.EdgeList().GetEdgeCount(), mesh.NumbCreaseVerts());
    return mesh.EdgeList().GetEdgeCount() == 12 ? 0 : 1;
}
