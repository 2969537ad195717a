// A mesh of a test as the text of a model file.
#pragma once

#include "tests/support/Meshes.h"

#include <sstream>
#include <string>

/// @param material of all faces; null for none
inline std::string ObjText(const TestMesh& mesh, const char* material = nullptr)
{
    std::ostringstream text;
    for (const VERTEX& v : mesh.verts)
        text << "v " << v.x << ' ' << v.y << ' ' << v.z << '\n';
    for (const T_VERTEX& t : mesh.uvs)
        text << "vt " << t.u << ' ' << t.v << '\n';
    if (material)
        text << "usemtl " << material << '\n';
    int corner = 0;
    for (const std::vector<int>& face : mesh.faces)
    {
        text << 'f';
        for (const int v : face)
        {
            text << ' ' << v + 1;
            if (!mesh.uvs.empty())
                text << '/' << ++corner;
        }
        text << '\n';
    }
    return text.str();
}
