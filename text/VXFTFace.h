// VelmarBase: text meshes.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"
#include "base/BPath.h"

#include <cstdint>

// FreeType's own names for its handles, so that its headers stay out of this one.
typedef struct FT_FaceRec_* FT_Face;
typedef struct FT_LibraryRec_* FT_Library;

/// A font file, opened on first use, and the process-wide registry of those found in the search folders.
///
/// Search folders are added before FreeType is set up (VXGeom::SetupFreeType), since set-up scans them. One thread, the
/// host's: FreeType's handles are not locked.
class VELMAR_EXPORT VXFTFace
{
public:
    explicit VXFTFace(const BPath& path) : mPath(path) {}
    VXFTFace(const VXFTFace& other); ///< an opened face is shared; each holder keeps a reference of its own
    VXFTFace& operator=(const VXFTFace& other);
    virtual ~VXFTFace();

    const BPath& Path() const { return mPath; }
    BString Name() const { return mPath.FileName(); } ///< with the extension

    /// The face, opened at the first call after set-up; valid until this object dies or FreeType is torn down. Null
    /// when FreeType is not set up or the file is no font. A file that is missing is never looked for again. FreeType
    /// opens files by name itself: on Windows, names outside of the system's code page stay closed to it.
    FT_Face GetFTFace();

    // --- The registry
    static void AddFontSearchPath(const BPath& folder); ///< before set-up
    /// Registers the files "*.ttf" and "*.otf" of the search folders, whatever the case of the extension, in order of
    /// their names, those of folders below left out. Nothing is opened. Called by the set-up.
    static void SetupFaces();
    static void TearDownFaces(); ///< deletes all faces; the registry keeps its length, with null entries
    static std::int64_t NumFaces() { return smFaces.Count(); }
    static VXFTFace* GetFace(long long index) { return smFaces[index]; } ///< unchecked index; null after tear-down
    static VXFTFace* GetFaceByName(const char* name); ///< the first whose Name() has these bytes; null when none has

private:
    bool IsOpen() const;
    void Close();

    BPath mPath;
    std::int32_t mState = kUntried;
    FT_Face mFace = nullptr;
    std::uint32_t mSetUp = 0; ///< the set-up of FreeType in which the face was opened: no face outlives its library

    static constexpr std::int32_t kUntried = -1, kMissing = 0, kOpened = 1;
    static BArray<VXFTFace*> smFaces; ///< owned
    static BArray<BPath> smFontSearchPaths;
};
