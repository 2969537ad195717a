// Any bytes given to the reader of materials end in an error with its place, or in materials that hold what they
// promise and read back the same from what the writer makes of them.
#include "host/tree/MaterialJson.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

static void Require(bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "broken promise: %s\n", what);
    std::abort();
}

static std::size_t CheckedNodes(const std::vector<vx::NamedMaterial>& materials)
{
    std::size_t nodes = 0;
    for (const vx::NamedMaterial& material : materials)
    {
        Require(!material.name.IsEmpty() && !material.layers.empty(), "a material has a name and a layer");
        for (const vx::NamedMaterial::Layer& layer : material.layers)
        {
            Require(layer.tree && layer.tree->Root(), "a layer has a tree with a root");
            Require(layer.tree->CycleProblem().IsEmpty(), "no node feeds itself");
            Require(layer.tree->NumNodes() <= std::size_t(vx::kMostNodes), "the number of nodes is bounded");
            nodes += layer.tree->NumNodes();
        }
    }
    return nodes;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<vx::NamedMaterial> materials, back;
    vx::MaterialsReport report, again;
    const bool read = vx::ReadMaterials(reinterpret_cast<const char*>(data), size, "m.json", "/f", materials, report);
    Require(read == report.error.IsEmpty(), "an error has a reason");
    Require(read || report.error.StartsWith("m.json:"), "an error has a place");
    Require(report.problems.Count() <= 51 && report.warnings.Count() <= 51, "messages are bounded");
    const std::size_t nodes = CheckedNodes(materials);
    Require(nodes * 1536 <= 256 * size + (1u << 20), "memory stays a small multiple of the text");
    if (!read)
        return 0;

    const std::string text = vx::WriteMaterials(materials, "/f");
    Require(vx::ReadMaterials(text.data(), text.size(), "m.json", "/f", back, again), "what was written can be read");
    Require(again.problems.IsEmpty() && back.size() == materials.size() && CheckedNodes(back) == nodes,
            "all of it reads back");
    Require(vx::WriteMaterials(back, "/f") == text, "and is written the same again");
    return 0;
}
