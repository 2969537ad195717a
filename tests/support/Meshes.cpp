#include "tests/support/Meshes.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <numeric>
#include <random>
#include <utility>

static constexpr double kTwoPi = 6.283185307179586;

// Texture vertices as an exporter would write them: equal coordinates are one vertex, in order of first use.
static std::vector<T_VERTEX> UniqueUvs(const std::vector<T_VERTEX>& uvs, std::vector<std::int32_t>& indices)
{
    std::map<std::pair<float, float>, std::int32_t> known;
    std::vector<T_VERTEX> unique;
    for (const T_VERTEX& uv : uvs)
    {
        const auto [at, isNew] = known.try_emplace({uv.u, uv.v}, std::int32_t(unique.size()));
        if (isNew)
            unique.push_back(uv);
        indices.push_back(at->second);
    }
    return unique;
}

GeomPtr TestMesh::Record() const
{
    std::size_t corners = 0;
    for (const std::vector<int>& face : faces)
        corners += face.size();
    std::vector<std::int32_t> uvIndices;
    const std::vector<T_VERTEX> uvVerts = UniqueUvs(uvs, uvIndices);

    GeomPtr g(GEOM_Alloc());
    if (!g ||
        g->SetSize(int(faces.size()), int(verts.size()), int(corners), 0, int(uvs.size()), int(uvVerts.size())) != 0)
    {
        std::fprintf(stderr, "no memory for the test mesh %s\n", name.c_str());
        std::abort();
    }
    std::copy(verts.begin(), verts.end(), g->verts);
    std::int32_t start = 0;
    for (std::size_t i = 0; i < faces.size(); ++i)
    {
        ELEMENT* const poly = g->Poly(std::int64_t(i));
        poly->start = start;
        poly->length = std::int32_t(faces[i].size());
        std::copy(faces[i].begin(), faces[i].end(), g->sets + start);
        if (!uvs.empty())
            g->tex->polys[i] = {start, poly->length};
        start += poly->length;
    }
    if (!uvs.empty())
    {
        std::copy(uvVerts.begin(), uvVerts.end(), g->tex->verts);
        std::copy(uvIndices.begin(), uvIndices.end(), g->tex->sets);
    }
    GEOM_MakeDefaultMaterial(g.get());
    return g;
}

TestMesh Cube()
{
    // Vertex i has x, y, z = -1 or 1 by the bits 0, 1, 2 of i.
    TestMesh mesh{"cube", {}, {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}}};
    for (int i = 0; i < 8; ++i)
        mesh.verts.push_back({i & 1 ? 1.0f : -1.0f, i & 2 ? 1.0f : -1.0f, i & 4 ? 1.0f : -1.0f});
    return mesh;
}

TestMesh OpenBox()
{
    TestMesh mesh = Cube();
    mesh.name = "open box";
    mesh.faces.erase(mesh.faces.begin() + 1); // the face at z = 1
    return mesh;
}

TestMesh Fan(int n)
{
    TestMesh mesh{"fan", {{0, 0, 0}}, {}};
    for (int i = 0; i < n; ++i)
    {
        const double angle = kTwoPi * i / n;
        mesh.verts.push_back({float(std::cos(angle)), float(std::sin(angle)), 0});
        mesh.faces.push_back({0, 1 + i, 1 + (i + 1) % n});
    }
    return mesh;
}

TestMesh ConcaveL()
{
    return {"concave L", {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {1, 1, 0}, {1, 2, 0}, {0, 2, 0}}, {{0, 1, 2, 3, 4, 5}}};
}

TestMesh BentQuad() { return {"bent quad", {{0, 0, 0}, {1, 0, 0.25f}, {1, 1, 0}, {0, 1, 0.25f}}, {{0, 1, 2, 3}}}; }

TestMesh MoebiusStrip(int n)
{
    TestMesh mesh{"moebius strip", {}, {}};
    for (int i = 0; i < n; ++i)
    {
        const double around = kTwoPi * i / n, twist = around / 2;
        for (const double side : {-0.5, 0.5})
        {
            const double radius = 2 + side * std::cos(twist);
            mesh.verts.push_back(
                {float(radius * std::cos(around)), float(radius * std::sin(around)), float(side * std::sin(twist))});
        }
    }
    for (int i = 0; i + 1 < n; ++i)
        mesh.faces.push_back({2 * i, 2 * i + 2, 2 * i + 3, 2 * i + 1});
    mesh.faces.push_back({2 * n - 2, 1, 0, 2 * n - 1}); // half a turn later the two sides have changed places
    return mesh;
}

TestMesh TwoCubesSharingAnEdge()
{
    // The second cube stands diagonally beside the first; both use the vertices 3 and 7 of the edge x = y = 1.
    TestMesh mesh = Cube();
    mesh.name = "two cubes sharing an edge";
    const TestMesh other = Moved(Cube(), {2, 2, 0});
    std::vector<int> index(8);
    for (int i = 0; i < 8; ++i)
    {
        const VERTEX& p = other.verts[std::size_t(i)];
        const auto same = std::find(mesh.verts.begin(), mesh.verts.end(), p);
        index[std::size_t(i)] = int(same - mesh.verts.begin());
        if (same == mesh.verts.end())
            mesh.verts.push_back(p);
    }
    for (std::vector<int> face : other.faces)
    {
        for (int& corner : face)
            corner = index[std::size_t(corner)];
        mesh.faces.push_back(std::move(face));
    }
    return mesh;
}

TestMesh Sliver() { return {"sliver", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {2, 0, 0}}, {{0, 1, 2}, {0, 1, 3}}}; }

TestMesh EmptyMesh() { return {"empty", {}, {}}; }

TestMesh Grid(int nx, int ny)
{
    TestMesh mesh{"grid", {}, {}};
    for (int y = 0; y <= ny; ++y)
        for (int x = 0; x <= nx; ++x)
            mesh.verts.push_back({float(x), float(y), 0});
    const int row = nx + 1;
    for (int y = 0; y < ny; ++y)
        for (int x = 0; x < nx; ++x)
        {
            const int a = y * row + x;
            mesh.faces.push_back({a, a + 1, a + row + 1, a + row});
            for (const int corner : mesh.faces.back())
                mesh.uvs.push_back({float(corner % row) / float(nx), float(corner / row) / float(ny)});
        }
    return mesh;
}

TestMesh Torus(int nu, int nv, bool uvs)
{
    TestMesh mesh{"torus", {}, {}};
    mesh.verts.reserve(std::size_t(nu) * std::size_t(nv));
    mesh.faces.reserve(std::size_t(nu) * std::size_t(nv));
    for (int u = 0; u < nu; ++u)
        for (int v = 0; v < nv; ++v)
        {
            const double around = kTwoPi * u / nu, tube = kTwoPi * v / nv;
            const double radius = 1 + 0.4 * std::cos(tube);
            mesh.verts.push_back(
                {float(radius * std::cos(around)), float(radius * std::sin(around)), float(0.4 * std::sin(tube))});
        }
    for (int u = 0; u < nu; ++u)
        for (int v = 0; v < nv; ++v)
        {
            const int u1 = u + 1, v1 = v + 1;
            mesh.faces.push_back({u * nv + v, u1 % nu * nv + v, u1 % nu * nv + v1 % nv, u * nv + v1 % nv});
            if (!uvs)
                continue;
            for (const auto& [cu, cv] : {std::pair(u, v), {u1, v}, {u1, v1}, {u, v1}})
                mesh.uvs.push_back({float(cu) / float(nu), float(cv) / float(nv)});
        }
    return mesh;
}

TestMesh Moved(TestMesh mesh, const VERTEX& by)
{
    for (VERTEX& p : mesh.verts)
        p += by;
    return mesh;
}

TestMesh Scaled(TestMesh mesh, float factor)
{
    for (VERTEX& p : mesh.verts)
        p *= factor;
    return mesh;
}

TestMesh Mirrored(TestMesh mesh)
{
    for (VERTEX& p : mesh.verts)
        p.x = -p.x;
    std::size_t at = 0;
    for (std::vector<int>& face : mesh.faces)
    {
        std::reverse(face.begin(), face.end());
        if (!mesh.uvs.empty())
            std::reverse(mesh.uvs.begin() + std::ptrdiff_t(at), mesh.uvs.begin() + std::ptrdiff_t(at + face.size()));
        at += face.size();
    }
    return mesh;
}

TestMesh Repeated(const TestMesh& mesh, int copies, const VERTEX& step)
{
    TestMesh all{mesh.name + " repeated", {}, {}};
    for (int i = 0; i < copies; ++i)
    {
        const int base = int(all.verts.size());
        for (const VERTEX& p : mesh.verts)
            all.verts.push_back(p + step * float(i));
        for (std::vector<int> face : mesh.faces)
        {
            for (int& corner : face)
                corner += base;
            all.faces.push_back(std::move(face));
        }
        all.uvs.insert(all.uvs.end(), mesh.uvs.begin(), mesh.uvs.end());
    }
    return all;
}

// Fisher and Yates, written out: std::shuffle gives another order with every standard library.
static std::vector<int> RandomOrder(std::size_t count, unsigned seed)
{
    std::vector<int> order(count);
    std::iota(order.begin(), order.end(), 0);
    std::mt19937 random(seed);
    for (std::size_t i = count; i > 1; --i)
        std::swap(order[i - 1], order[random() % i]);
    return order;
}

TestMesh Shuffled(TestMesh mesh, unsigned seed)
{
    const std::vector<int> vertOrder = RandomOrder(mesh.verts.size(), seed);
    std::vector<int> newIndex(mesh.verts.size());
    std::vector<VERTEX> verts;
    for (const int old : vertOrder)
    {
        newIndex[std::size_t(old)] = int(verts.size());
        verts.push_back(mesh.verts[std::size_t(old)]);
    }
    std::vector<std::size_t> firstUv(mesh.faces.size());
    for (std::size_t i = 1; i < mesh.faces.size(); ++i)
        firstUv[i] = firstUv[i - 1] + mesh.faces[i - 1].size();

    TestMesh shuffled{mesh.name + " shuffled", std::move(verts), {}};
    for (const int old : RandomOrder(mesh.faces.size(), seed + 1))
    {
        std::vector<int> face = mesh.faces[std::size_t(old)];
        for (int& corner : face)
            corner = newIndex[std::size_t(corner)];
        for (std::size_t k = 0; !mesh.uvs.empty() && k < face.size(); ++k)
            shuffled.uvs.push_back(mesh.uvs[firstUv[std::size_t(old)] + k]);
        shuffled.faces.push_back(std::move(face));
    }
    return shuffled;
}
