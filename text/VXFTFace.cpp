#include "text/VXFTFace.h"

#include "base/BDir.h"
#include "mesh/VXGeom.h"
#include "text/detail/FreeType.h"

#include <memory>
#include <new>

FT_Library* VXGeom::smFTLibrary = nullptr;
BArray<VXFTFace*> VXFTFace::smFaces;
BArray<BPath> VXFTFace::smFontSearchPaths;

static std::uint32_t gSetUp = 0;

std::uint32_t vx::FreeTypeSetUp() { return gSetUp; }

// --- The library

void VXGeom::SetupFreeType()
{
    if (smFTLibrary)
        return;
    auto cell = std::unique_ptr<FT_Library>(new (std::nothrow) FT_Library(nullptr));
    if (!cell || FT_Init_FreeType(cell.get()) != 0)
        return;
    smFTLibrary = cell.release();
    ++gSetUp;
    VXFTFace::SetupFaces();
}

void VXGeom::TearDownFreeType()
{
    VXFTFace::TearDownFaces();
    if (!smFTLibrary)
        return;
    FT_Done_FreeType(*smFTLibrary);
    delete smFTLibrary;
    smFTLibrary = nullptr;
}

// --- One face

VXFTFace::VXFTFace(const VXFTFace& other)
    : mPath(other.mPath), mState(other.mState), mFace(other.mFace), mSetUp(other.mSetUp)
{
    if (IsOpen())
        FT_Reference_Face(mFace);
}

VXFTFace& VXFTFace::operator=(const VXFTFace& other)
{
    if (this == &other)
        return *this;
    if (other.IsOpen())
        FT_Reference_Face(other.mFace);
    Close();
    mPath = other.mPath;
    mState = other.mState;
    mFace = other.mFace;
    mSetUp = other.mSetUp;
    return *this;
}

VXFTFace::~VXFTFace() { Close(); }

bool VXFTFace::IsOpen() const { return mFace && VXGeom::FTLibrary() && mSetUp == gSetUp; }

void VXFTFace::Close()
{
    if (IsOpen())
        FT_Done_Face(mFace);
    mFace = nullptr;
}

FT_Face VXFTFace::GetFTFace()
{
    if (mState == kMissing)
        return nullptr;
    if (IsOpen())
        return mFace;
    mFace = nullptr;
    if (!mPath.Exists())
    {
        mState = kMissing;
        return nullptr;
    }
    mState = kOpened;
    mSetUp = gSetUp;
    if (!VXGeom::FTLibrary() || FT_New_Face(*VXGeom::FTLibrary(), mPath.FullPath().CString(), 0, &mFace) != 0)
        mFace = nullptr;
    return mFace;
}

// --- The registry

void VXFTFace::AddFontSearchPath(const BPath& folder) { smFontSearchPaths.Append(folder); }

void VXFTFace::SetupFaces()
{
    for (const BPath& folder : smFontSearchPaths)
    {
        BDir dir(folder.FullPath());
        if (dir.Open() != 0)
            continue;
        for (const BString& name : dir.List("*"))
        {
            const BPath file = folder.Joined(name);
            const BString extension = file.Extension();
            if (!extension.IsSameAs("ttf", 0) && !extension.IsSameAs("otf", 0))
                continue;
            auto face = std::unique_ptr<VXFTFace>(new (std::nothrow) VXFTFace(file));
            if (face && smFaces.AppendOrKeep(face.get()))
                static_cast<void>(face.release()); // the registry's now
        }
    }
}

void VXFTFace::TearDownFaces()
{
    for (VXFTFace*& face : smFaces)
    {
        delete face;
        face = nullptr;
    }
}

VXFTFace* VXFTFace::GetFaceByName(const char* name)
{
    for (VXFTFace* const face : smFaces)
        if (face && face->Name() == name)
            return face;
    return nullptr;
}
