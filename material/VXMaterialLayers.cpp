// VelmarBase: materials.
#include "material/VXMaterial.h"

#include <algorithm>
#include <new>
#include <string>
#include <utility>

namespace
{
constexpr const char* kBaseName = "Base";
constexpr const char* kLayerPrefix = "Layer_";

BString Numbered(const BString& stem, int number) { return stem + BString(std::to_string(number)); }

// What the numbers of a clashing name are appended to. Text is joined and never used as a format, so that a per cent
// sign in a name stays what it is.
BString NumberingStem(const BString& name)
{
    if (name == kBaseName)
        return "Base_";
    if (name.StartsWith(kLayerPrefix) && name.Mid(BString(kLayerPrefix).Length()).IsInteger())
        return kLayerPrefix;
    return name + " ";
}
} // namespace

VXMaterialLayer::~VXMaterialLayer() = default;

void VXMaterialLayer::Init()
{
    mMaterial = nullptr;
    mShaderTree = nullptr;
}

// --- Reading

VXMaterialLayer* VXMaterial::Layer(std::int64_t i) const
{
    return i >= 0 && i < mLayers.Count() ? mLayers[i] : nullptr;
}

std::int64_t VXMaterial::FindLayerIndex(const VXMaterialLayer* layer) const
{
    return mLayers.Find(const_cast<VXMaterialLayer*>(layer));
}

void* VXMaterial::OrmondShaderTree(std::int64_t layer) const
{
    const VXMaterialLayer* const found = Layer(layer);
    return found ? found->OrmondShaderTree() : nullptr;
}

BShaderTree* VXMaterial::ShaderTree(std::int64_t layer) const
{
    const VXMaterialLayer* const found = Layer(layer);
    return found ? found->ShaderTree() : nullptr;
}

void VXMaterial::SetOrmondShaderTree(std::int64_t layer, void* tree)
{
    if (VXMaterialLayer* const found = Layer(layer))
        found->SetOrmondShaderTree(tree);
}

BString VXMaterial::TreeHash(std::int64_t layer) const
{
    const VXMaterialLayer* const found = Layer(layer);
    return found ? found->TreeHash() : BString();
}

// --- Names

bool VXMaterial::LayerNameExists(const char* name, bool external) const
{
    return std::any_of(mLayers.begin(), mLayers.end(),
                       [name, external](const VXMaterialLayer* layer)
                       { return layer && (external ? layer->ExternalName() : layer->InternalName()) == name; });
}

BString VXMaterial::SuggestedNewLayerName() const
{
    if (mLayers.IsEmpty())
        return kBaseName;
    int i = 1;
    while (LayerNameExists(Numbered(kLayerPrefix, i).CString(), true))
        ++i;
    return Numbered(kLayerPrefix, i);
}

BString VXMaterial::UniqueLayerName(const char* name, bool external) const
{
    BString unique = name;
    const BString stem = NumberingStem(unique);
    for (int i = 1; LayerNameExists(unique.CString(), external); ++i)
        unique = Numbered(stem, i);
    return unique;
}

// --- Making and deleting

std::int64_t VXMaterial::CreateNewLayer(const char* internalName, const char* externalName)
{
    VXMaterialLayer* const layer =
        InsertNewLayer(mLayers.Count(), internalName, UniqueLayerName(externalName, true).CString());
    return layer ? mLayers.Count() - 1 : -1;
}

VXMaterialLayer* VXMaterial::InsertNewLayer(std::int64_t at, const char* internalName, const char* externalName)
{
    VXMaterialLayer* const layer = new (std::nothrow) VXMaterialLayer;
    if (!layer)
        return nullptr;
    layer->SetMaterial(this);
    layer->SetInternalName(UniqueLayerName(internalName, false).CString());
    layer->SetExternalName(externalName);
    if (at < 0 || at > mLayers.Count())
        return layer;
    if (mLayers.Insert(at, layer))
        return layer;
    delete layer;
    return nullptr;
}

int VXMaterial::RemoveLayer(std::int64_t i)
{
    if (i < 1 || i >= mLayers.Count())
        return -1;
    delete mLayers[i];
    mLayers.RemoveAt(i);
    mLayerActive = std::min(mLayerActive, std::int32_t(mLayers.Count() - 1));
    return 0;
}

int VXMaterial::RemoveLayer(VXMaterialLayer* layer) { return RemoveLayer(FindLayerIndex(layer)); }

int VXMaterial::RemoveAllLayers()
{
    if (mLayers.IsEmpty())
        return -1;
    while (mLayers.Count() > 1)
        RemoveLayer(mLayers.Count() - 1);
    return 0;
}

void VXMaterial::ClearLayers()
{
    for (VXMaterialLayer* const layer : mLayers)
        if (layer)
        {
            layer->SetOrmondShaderTree(nullptr); // the tree is the host's
            delete layer;
        }
    mLayers.Empty();
}

// --- Order and renaming

bool VXMaterial::CanRaiseLayer(std::int64_t i) const { return i >= 1 && i < mLayers.Count() - 1; }

bool VXMaterial::CanLowerLayer(std::int64_t i) const { return i > 1; }

bool VXMaterial::CanRenameLayer(std::int64_t i, const char* name) const
{
    return !LayerNameExists(name, true) && i >= 1;
}

int VXMaterial::RaiseLayer(std::int64_t i)
{
    if (!CanRaiseLayer(i))
        return -1;
    std::swap(mLayers[i], mLayers[i + 1]);
    return 0;
}

int VXMaterial::LowerLayer(std::int64_t i)
{
    if (!CanLowerLayer(i) || i >= mLayers.Count())
        return -1;
    std::swap(mLayers[i], mLayers[i - 1]);
    return 0;
}

int VXMaterial::MoveLayer(std::int64_t from, std::int64_t to)
{
    const std::int64_t count = mLayers.Count();
    if (from < 1 || from >= count || to < 1 || to >= count)
        return -1;
    VXMaterialLayer** const layers = mLayers.Data();
    if (from < to)
        std::rotate(layers + from, layers + from + 1, layers + to + 1);
    else
        std::rotate(layers + to, layers + from, layers + from + 1);
    return 0;
}

int VXMaterial::RenameLayer(std::int64_t i, const char* externalName)
{
    VXMaterialLayer* const layer = Layer(i);
    if (!layer || !CanRenameLayer(i, externalName))
        return -1;
    layer->SetExternalName(externalName);
    return 0;
}
