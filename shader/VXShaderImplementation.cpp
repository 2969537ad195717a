#include "shader/VXShaderImplementation.h"

#include "base/BFile.h"
#include "base/MEM.h"
#include "engine/VXSceneContext.h"
#include "engine/VXSceneDelegate.h"
#include "shader/VXShaderDebug.h"

#include <algorithm>
#include <string>
#include <string_view>

VXShaderImplementation::~VXShaderImplementation() = default;

// --- Collecting

void VXShaderImplementation::AddImplCode(const BString& code, bool, bool) { mFragmentImpl += code; }

void VXShaderImplementation::AddBodyCode(const BString& code, bool toVertex, bool toFragment)
{
    if (toFragment)
        mFragmentBody += code;
    if (toVertex)
        mVertexBody += code;
}

bool VXShaderImplementation::AddInclude(const BString& name)
{
    return mIncludes.Find(name) < 0 && mIncludes.AppendOrKeep(name);
}

bool VXShaderImplementation::AddPreprocessor(const BString& line)
{
    return mPreprocessor.Find(line) < 0 && mPreprocessor.AppendOrKeep(line);
}

static bool AddInFront(BArray<VXShaderImplementationParam*>& list, VXShaderImplementationParam* param)
{
    if (!param || list.Find(param) >= 0 || !list.AppendOrKeep(param))
        return false;
    std::rotate(list.begin(), list.end() - 1, list.end());
    return true;
}

bool VXShaderImplementation::AddVertexParam(VXShaderImplementationParam* param)
{
    return AddInFront(mVertexParams, param);
}

bool VXShaderImplementation::AddFragmentParam(VXShaderImplementationParam* param)
{
    return AddInFront(mFragmentParams, param);
}

BString VXShaderImplementation::AddTexture(const BString& fileName)
{
    const BString sampler = "texture" + BString(std::to_string(mTextures.Count()));
    return mTextures.AppendOrKeep(fileName) ? sampler : BString();
}

// --- Files

BString VXShaderImplementation::LoadShaderFile(const BString& fileName)
{
    VXSceneDelegate* const delegate = VXSceneContext::Delegate();
    const BString folder = delegate ? delegate->RuntimeShaderFolder() : "Runtime/Cg/";
    BFile file(folder + fileName);
    file.SetCompression(false); // unchanged, whatever it is
    if (file.Open(BFile::Mode::Read) != 0)
    {
        VXShaderDebug("Shader file %s could not be read\n", (folder + fileName).CString());
        return {};
    }
    char* const bytes = file.ReadAll();
    const BString text(bytes ? std::string_view(bytes, MEM_Count(bytes)) : std::string_view());
    MEM_Free(bytes);
    return text;
}
