#include "shader/VXShaderCompiler.h"

#include "draw/VXSceneDrawEngine.h"
#include "draw/VXSceneDrawOptions.h"
#include "engine/VXSceneContext.h"
#include "engine/VXSceneDelegate.h"
#include "material/VXMaterial.h"
#include "shader/VXShaderDebug.h"
#include "shader/VXShaderEngine.h"
#include "shader/VXShaderImplementation.h"
#include "shader/VXShaderProgram.h"

#include <iterator>
#include <new>
#include <utility>

int VXShaderCompiler::smNumActivations = 0;

// --- The cache

namespace
{
struct CacheEntry
{
    VXShaderProgram* program = nullptr; ///< owned; null: looked at, gets none
    std::uint64_t lastUsed = 0;         ///< the upkeep that met the key last
};

bool DropProgram(CacheEntry& entry)
{
    if (!entry.program)
        return false;
    delete std::exchange(entry.program, nullptr);
    return true;
}

/// The entries of the process in byte order of their keys. Upkeeps are numbered, and each leaves its number in the
/// entries that it meets: what has an older one is not used by any material. That way upkeep copies no key.
class ProgramCache
{
public:
    // Never destroyed: at the end of the process there is no context left in which programs could be given back.
    static ProgramCache& Get()
    {
        static ProgramCache* const cache = new ProgramCache;
        return *cache;
    }

    CacheEntry* Find(const BString& key)
    {
        const auto found = mEntries.find(key);
        return found == mEntries.end() ? nullptr : &found->second;
    }

    /// May throw. A new entry counts as met by the upkeep that is under way.
    CacheEntry& FindOrAdd(const BString& key)
    {
        CacheEntry& entry = mEntries[key];
        entry.lastUsed = mUpkeep;
        return entry;
    }

    void BeginUpkeep()
    {
        ++mUpkeep;
        mPlace = 0;
    }

    /// @return false when the key is not there. Frames mostly ask for the same keys in the same order, so the entry
    /// that was met at this place the last time is tried first, which takes a quarter of the time of a search.
    bool Meet(const BString& key)
    {
        const std::int64_t place = mPlace++;
        Node* const before = place < mMet.Count() ? mMet[place] : nullptr;
        if (before && before->first == key)
        {
            before->second.lastUsed = mUpkeep;
            return true;
        }
        const auto found = mEntries.find(key);
        if (found == mEntries.end())
            return false;
        found->second.lastUsed = mUpkeep;
        if (place < mMet.Count() || mMet.SetCount(place + 1))
            mMet[place] = &*found;
        return true;
    }

    void SweepUnused()
    {
        for (auto at = mEntries.begin(); at != mEntries.end();)
            at = at->second.lastUsed < mUpkeep ? Erase(at) : std::next(at);
    }

    void Erase(const BString& key)
    {
        const auto found = mEntries.find(key);
        if (found != mEntries.end())
            Erase(found);
    }

    void Clear()
    {
        for (auto at = mEntries.begin(); at != mEntries.end();)
            at = Erase(at);
    }

private:
    using Entries = std::map<BString, CacheEntry>;
    using Node = Entries::value_type;

    Entries::iterator Erase(Entries::iterator at)
    {
        mMet.Empty();
        DropProgram(at->second);
        return mEntries.erase(at);
    }

    Entries mEntries;
    std::uint64_t mUpkeep = 0;
    std::int64_t mPlace = 0; ///< how many keys this upkeep has met
    BArray<Node*> mMet;      ///< what the upkeeps met at each place; null where a key was missing
};

const BString& KeyOf(const VXMaterial& material, std::int64_t layer)
{
    static const BString none;
    const VXMaterialLayer* const found = material.Layer(layer);
    return found ? found->TreeHash() : none;
}
} // namespace

bool VXShaderCompiler::StoreProgram(const BString& key, VXShaderProgram* program)
{
    try
    {
        CacheEntry& entry = ProgramCache::Get().FindOrAdd(key);
        if (entry.program != program)
            DropProgram(entry);
        entry.program = program;
        return true;
    }
    catch (const std::bad_alloc&)
    {
        delete program;
        return false;
    }
}

VXShaderProgram* VXShaderCompiler::FindProgram(const BString& key)
{
    const CacheEntry* const found = ProgramCache::Get().Find(key);
    return found ? found->program : nullptr;
}

bool VXShaderCompiler::DeleteShader(const BString& key)
{
    CacheEntry* const found = ProgramCache::Get().Find(key);
    return found && DropProgram(*found);
}

void VXShaderCompiler::DeleteShaders() { ClearProgramCache(); }

void VXShaderCompiler::ClearProgramCache() { ProgramCache::Get().Clear(); }

void VXShaderCompiler::ClearShader(VXMaterial* material)
{
    if (!material)
        return;
    for (std::int64_t layer = 0; layer < material->NumLayers(); ++layer)
        if (DeleteShader(KeyOf(*material, layer)))
            ProgramCache::Get().Erase(KeyOf(*material, layer));
}

BString VXShaderCompiler::GetVertexShaderSource(const BString& key) const
{
    const VXShaderProgram* const program = FindProgram(key);
    return program ? program->VertexProgramSource() : BString();
}

BString VXShaderCompiler::GetFragmentShaderSource(const BString& key) const
{
    const VXShaderProgram* const program = FindProgram(key);
    return program ? program->FragmentProgramSource() : BString();
}

// --- Upkeep

void VXShaderCompiler::UpdateShaders(BArray<VXMaterial*>& materials)
{
    ProgramCache& cache = ProgramCache::Get();
    cache.BeginUpkeep();
    bool missing = false;
    // By index: the delegate may change the list.
    for (std::int64_t i = 0; i < materials.Count(); ++i)
    {
        VXMaterial* const material = materials[i];
        if (!material)
            continue;
        if (material->ShaderTreeDirty())
        {
            material->ComputeShaderHash(true);
            material->SetShaderTreeDirty(false);
        }
        for (std::int64_t layer = 0; layer < material->NumLayers(); ++layer)
            if (!cache.Meet(KeyOf(*material, layer)))
                missing = true;
    }
    cache.SweepUnused();
    if (!missing)
        return;
    bool busy = false;
    for (std::int64_t i = 0; i < materials.Count(); ++i)
        if (materials[i])
            AddMissing(*materials[i], busy);
    VXSceneDelegate* const delegate = VXSceneContext::Delegate();
    if (busy && delegate)
        delegate->SetBusyCursor(false);
}

bool VXShaderCompiler::MayBuildPrograms() const
{
    return VXSceneContext::WantShader() && mShaderEngine && mShaderEngine->AppEnabled() && mDrawEngine &&
           mDrawEngine->HWShadingAllowed();
}

// @param busy whether this upkeep has built a program already
void VXShaderCompiler::AddMissing(VXMaterial& material, bool& busy)
{
    for (std::int64_t layer = 0; layer < material.NumLayers() && MayBuildPrograms(); ++layer)
    {
        if (ProgramCache::Get().Find(KeyOf(material, layer)))
            continue;
        if (!busy)
        {
            SetErrors({});
            if (VXSceneDelegate* const delegate = VXSceneContext::Delegate())
                delegate->SetBusyCursor(true);
        }
        busy = true;
        BuildShader(material, layer);
        if (layer == material.NumLayers() - 1)
            material.SetShaderTreeDirty(false);
    }
}

// --- Building

void VXShaderCompiler::AddShader(VXMaterial* material, std::int64_t layer)
{
    if (!material || !material->Layer(layer))
        return;
    SetErrors({});
    BuildShader(*material, layer);
}

bool VXShaderCompiler::WantsDeepTest() const
{
    const VXSceneDrawOptions* const options = mDrawEngine ? mDrawEngine->DrawOptions() : nullptr;
    return options && options->mDeepShaderTest && !options->mShaderBatch && !mDrawEngine->VetoDeepShaderTest();
}

void VXShaderCompiler::LoadPreviewTexture(VXMaterial& material) const
{
    if (material.PreviewTexturePath().IsEmpty() || !mDrawEngine)
        return;
    int id = 0;
    mDrawEngine->LoadTextureForShader(material.PreviewTexturePath(), id);
    material.SetPreviewTextureID(id);
}

void VXShaderCompiler::BuildShader(VXMaterial& material, std::int64_t layer)
{
    const bool needs = NeedsShader(&material, WantsDeepTest());
    LoadPreviewTexture(material);
    const BString key = KeyOf(material, layer);
    DeleteShader(key);
    if (!needs || !material.ShaderTree(layer))
    {
        StoreProgram(key, nullptr);
        return;
    }
    if (mVerbose)
        VXShaderDebug("Adding shader for material %s (id:%s)\n", material.InternalName().CString(),
                      material.Uuid().CString());
    const BString before = mErrors; // a program that comes out well takes no failure of another back
    SetErrors({});
    VXShaderProgram* const program = BuildProgram(&material, layer);
    if (!mHasErrors)
        SetErrors(program ? before : "No program could be built for material " + material.InternalName());
    StoreProgram(key, program); // a failure too, so that it is not tried again in every frame
}

void VXShaderCompiler::SetErrors(const BString& log)
{
    mErrors = log;
    mHasErrors = !log.IsEmpty();
}

// --- Drawing

bool VXShaderCompiler::HasShader(const VXMaterial* material, std::int64_t layer) const
{
    return material && material->Layer(layer) && FindProgram(KeyOf(*material, layer));
}

void VXShaderCompiler::EnableShader(VXMaterial* material, std::int64_t layer)
{
    if (!material || !material->ShaderTree(layer))
        return;
    if (VXShaderProgram* const program = FindProgram(KeyOf(*material, layer)))
    {
        BeginShading();
        program->MakeCurrent();
        CountActivation();
    }
    else if (material->PreviewTextureID() > 0 && mDrawEngine)
        mDrawEngine->EnableMultitexture2D(material->PreviewTextureID(), 0);
}

void VXShaderCompiler::DisableShader(VXMaterial* material, std::int64_t layer)
{
    VXShaderProgram* const program = material ? FindProgram(KeyOf(*material, layer)) : nullptr;
    if (program)
    {
        program->StopBeingCurrent();
        if (mDrawEngine)
            mDrawEngine->DisableMultitexture2D();
    }
    EndShading();
}

// --- For generators

VXShaderCompiler::~VXShaderCompiler()
{
    for (const auto& [name, implementation] : mImplementations)
        delete implementation;
}

void VXShaderCompiler::PrepareForDrawScene() {}

VXShaderImplementation* VXShaderCompiler::GetImplementation(const BString& name)
{
    const auto found = mImplementations.find(name);
    if (found != mImplementations.end())
        return found->second;
    VXShaderImplementation* implementation = nullptr;
    try
    {
        implementation = new VXShaderImplementation(name);
        implementation->SetUniversalImpl(VXShaderImplementation::LoadShaderFile(name));
        mImplementations[name] = implementation;
        return implementation;
    }
    catch (const std::bad_alloc&)
    {
        delete implementation;
        return nullptr;
    }
}

BString VXShaderCompiler::CodeVarName(const BString& a, const BString& b) { return a + "_" + b; }
BString VXShaderCompiler::CodeInputName(const BString& a) { return a + "_input"; }
BString VXShaderCompiler::CodeResultName(const BString& a) { return a + "_result"; }
BString VXShaderCompiler::CodeMultiply(const BString& a, const BString& b) { return a + " * " + b; }
BString VXShaderCompiler::CodeAdd(const BString& a, const BString& b) { return a + " + " + b; }
