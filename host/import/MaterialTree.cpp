#include "host/import/MaterialTree.h"

#include "host/image/ColorSpace.h"
#include "host/tree/ShaderTree.h"

namespace vx
{
static constexpr float kHeightOfBumps = 0.01f; // as a share of the model, where the file says 1

static bool IsGrey(const VERTEX& c) { return c.x == c.y && c.y == c.z; }

static TreeNode* AddMap(ShaderTree& tree, const char* type, const char* name, const MaterialMap& map,
                        const BPath& folder)
{
    BString file = map.file;
    file.ReplaceAll("\\", "/");
    TreeNode* const node = tree.AddNode(type, name);
    node->Find("File")->SetFile(folder.Joined(file).FullPath());
    node->Find("U_Scale")->Set(map.scale[0]);
    node->Find("V_Scale")->Set(map.scale[1]);
    node->Find("U_Offset")->Set(map.offset[0]);
    node->Find("V_Offset")->Set(map.offset[1]);
    return node;
}

// The colour is a factor of the picture. A grey one is a plain value, so that fixed drawing can show it; black, which
// some programs write beside a picture, would hide it.
static void Feed(ShaderTree& tree, TreeInput& color, TreeInput& value, const VERTEX& factor, TreeNode* picture)
{
    if (factor.x + factor.y + factor.z <= 0 || IsGrey(factor))
    {
        color.Connect(picture);
        value.Set(factor.x > 0 ? LinearOf(factor.x) : 1);
        return;
    }
    TreeNode* const product = tree.AddNode("color_math", picture->Name() + "_tint");
    product->Find("Color_1")->Connect(picture);
    product->Find("Color_2")->Set(factor.x, factor.y, factor.z);
    color.Connect(product);
    value.Set(1);
}

std::unique_ptr<ShaderTree> TreeOf(const MaterialRecord& record, const BPath& folder, float size)
{
    auto tree = std::make_unique<ShaderTree>();
    TreeNode& root = *tree->AddNode("PhysicalSurface", "surface");
    const auto at = [&root](const char* name) -> TreeInput& { return *root.Find(name); };
    at("Diffuse_Color").Set(record.kd.x, record.kd.y, record.kd.z);
    if (!record.kdMap.file.IsEmpty())
        Feed(*tree, at("Diffuse_Color"), at("Diffuse_Value"), record.kd,
             AddMap(*tree, "image_map", "diffuse", record.kdMap, folder));

    const bool shiny = record.ns > 1; // without an exponent a highlight would be a veil over everything
    at("Highlight_Size").Set(shiny ? record.ns : 1);
    at("Highlight_Color").Set(record.ks.x, record.ks.y, record.ks.z);
    at("Highlight_Value").Set(1);
    if (shiny && !record.ksMap.file.IsEmpty())
        Feed(*tree, at("Highlight_Color"), at("Highlight_Value"), record.ks,
             AddMap(*tree, "image_map", "highlight", record.ksMap, folder));
    if (!shiny)
        at("Highlight_Value").Set(0);

    at("Transparency_Min").Set(1 - record.opacity);
    at("Transparency_Max").Set(1 - record.opacity);
    at("Ambient_Color").Set(record.ke.x, record.ke.y, record.ke.z);
    at("Ambient_Value").Set(record.ke.x + record.ke.y + record.ke.z > 0 ? 1 : 0);

    if (!record.bumpMap.file.IsEmpty())
    {
        TreeNode* const bump = AddMap(*tree, "image_map", "bump", record.bumpMap, folder);
        bump->Find("Gamma")->Set(1);
        at("Bump").Connect(bump);
        at("Bump_Strength").Set(record.bumpStrength * kHeightOfBumps * size);
    }
    if (!record.normalMap.file.IsEmpty())
        at("Normal_Map").Connect(AddMap(*tree, "normal_map", "normals", record.normalMap, folder));
    return tree;
}
} // namespace vx
