#include "material/VXMaterial.h"
#include "mesh/VXGeom.h"
#include "mesh/VXSetIterator.h"
#include "tests/support/Meshes.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <tuple>
#include <vector>

namespace
{
constexpr float kTransparencies[] = {0, 0, 0.25f, 0.5f, 1};

/// Separate polygons of three to five corners, of materials that share a few transparencies.
struct Painted
{
    std::vector<std::unique_ptr<VXMaterial>> materials;
    VXGeom geom;

    explicit Painted(std::mt19937& random)
    {
        TestMesh mesh{"painted", {}, {}};
        const unsigned count = unsigned(random() % 60), numMaterials = 1 + unsigned(random() % 9);
        for (unsigned i = 0; i < count; ++i)
        {
            std::vector<int>& face = mesh.faces.emplace_back();
            for (unsigned k = 0; k < 3 + random() % 3; ++k)
            {
                face.push_back(int(mesh.verts.size()));
                mesh.verts.push_back({float(k), float(k * k), float(i)});
            }
            while (face.size() < 3)
                face.push_back(face.back());
        }
        const GeomPtr record = mesh.Record();
        for (unsigned m = 0; m < numMaterials; ++m)
        {
            materials.push_back(std::make_unique<VXMaterial>(0, nullptr));
            materials.back()->SetTMax(kTransparencies[random() % std::size(kTransparencies)]);
            if (record->NumMaterials() <= int(m))
                record->materials.Append(GEOM_Material());
            record->SetMaterialPointer(int(m), materials.back().get());
        }
        for (unsigned i = 0; i < count; ++i)
            record->Poly(i)->material = std::uint16_t(random() % numMaterials);
        geom.SetGeom(record.get(), true);
        geom.SortGeomData();
    }
};

using Visit = std::tuple<int, int, int>; ///< kind, position among the runs, first element

// The order as one would write it down: the same key in the next kind, else the best of the three heads.
std::vector<Visit> PlainOrder(const VXGeom& geom)
{
    const VXSortedBucket* const lists[3] = {&geom.Sorted(VXElementKind::Quads), &geom.Sorted(VXElementKind::Triangles),
                                            &geom.Sorted(VXElementKind::Polygons)};
    int at[3] = {-1, -1, -1}, type = -1;
    std::vector<Visit> order;
    for (;;)
    {
        int next = -1, position = -1;
        if (type >= 0)
        {
            const std::uint64_t key = lists[type]->runs[at[type]].key;
            const int other = (type + 1) % 3;
            for (int i = at[other] + 1; i < lists[other]->numRuns && next < 0; ++i)
                if (lists[other]->runs[i].key == key)
                    next = other, position = i;
        }
        for (int t = 0; t < 3 && position < 0 && next != t; ++t)
        {
            if (at[t] + 1 >= lists[t]->numRuns)
                continue;
            const auto rank = [&](int of)
            {
                const std::uint64_t key = lists[of]->runs[at[of] + 1].key;
                return std::pair(std::uint32_t(key >> 32), ~std::uint32_t(key)); // the lowest is next
            };
            if (next < 0 || rank(t) <= rank(next))
                next = t;
        }
        if (next < 0)
            return order;
        at[next] = position < 0 ? at[next] + 1 : position;
        type = next;
        int first = 0;
        for (int i = 0; i < at[next]; ++i)
            first += lists[next]->runs[i].count;
        order.emplace_back(next, at[next], first);
    }
}
} // namespace

TEST(SetIterator, FollowsTheRulesOnRandomRuns)
{
    std::mt19937 random(21);
    std::size_t longest = 0;
    for (int round = 0; round < 200; ++round)
    {
        SCOPED_TRACE(round);
        const Painted painted(random);
        std::vector<Visit> visited;
        VXSetIterator iterator(&painted.geom);
        while (const VXSortedSet* const run = iterator.Next())
        {
            const VXSortedBucket& list = painted.geom.Sorted(iterator.Kind());
            visited.emplace_back(int(iterator.Kind()), int(run - list.runs), iterator.First());
        }
        EXPECT_EQ(iterator.Next(), nullptr);
        EXPECT_EQ(visited, PlainOrder(painted.geom));
        longest = std::max(longest, visited.size());
    }
    EXPECT_GE(longest, 15u) << "the lists were long enough to mean something";
    EXPECT_EQ(VXSetIterator(nullptr).Next(), nullptr);
}
