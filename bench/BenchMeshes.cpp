#include "bench/BenchMeshes.h"

#include "base/GEOM_Obj.h"

#include <cstdio>
#include <map>

namespace
{
void AppendTorusQuad(std::string& text, int nu, int nv, int u, int v)
{
    const int u1 = u + 1, v1 = v + 1;
    const int corners[4][2] = {{u, v}, {u1, v}, {u1, v1}, {u, v1}};
    text += 'f';
    for (const auto& [cu, cv] : corners)
    {
        char corner[32];
        std::snprintf(corner, sizeof corner, " %d/%d", cu % nu * nv + cv % nv + 1, cu * (nv + 1) + cv + 1);
        text += corner;
    }
    text += '\n';
}

ObjText WriteTorus(int nu, int nv)
{
    ObjText torus{"mtllib torus.mtl\no torus\n", nu * nv};
    torus.text.reserve(std::size_t(nu) * std::size_t(nv) * 120);
    char line[96];
    for (const VERTEX& p : Torus(nu, nv, false).verts)
    {
        std::snprintf(line, sizeof line, "v %.6f %.6f %.6f\n", double(p.x), double(p.y), double(p.z));
        torus.text += line;
    }
    for (int u = 0; u <= nu; ++u)
        for (int v = 0; v <= nv; ++v)
        {
            std::snprintf(line, sizeof line, "vt %.6f %.6f\n", double(u) / nu, double(v) / nv);
            torus.text += line;
        }
    for (int u = 0; u < nu; ++u)
    {
        if (u == 0 || u == nu / 2)
            torus.text += u == 0 ? "g left\nusemtl red\ns 1\n" : "g right\nusemtl blue\ns 1\n";
        for (int v = 0; v < nv; ++v)
            AppendTorusQuad(torus.text, nu, nv, u, v);
    }
    return torus;
}
} // namespace

const ObjText& TorusText(int nu, int nv)
{
    static std::map<std::pair<int, int>, ObjText> made;
    ObjText& torus = made[{nu, nv}];
    if (torus.text.empty())
        torus = WriteTorus(nu, nv);
    return torus;
}

const GEOM& TorusRecord(int nu, int nv)
{
    static std::map<std::pair<int, int>, GeomPtr> made;
    GeomPtr& record = made[{nu, nv}];
    if (!record)
    {
        const ObjText& torus = TorusText(nu, nv);
        record.reset(GEOM_ReadObjText(torus.text.data(), torus.text.size()));
    }
    return *record;
}

const GEOM& ShuffledTorusRecord(int nu, int nv)
{
    static std::map<std::pair<int, int>, GeomPtr> made;
    GeomPtr& record = made[{nu, nv}];
    if (!record)
        record = Shuffled(Torus(nu, nv), 1).Record();
    return *record;
}
