// VelmarBase: command line.
#include "FontChoice.h"

#include "host/text/FontFolders.h"
#include "mesh/VXGeom.h"

#include <set>

namespace vx::cli
{

SystemFonts::SystemFonts()
{
    for (const BPath& folder : SystemFontFolders())
        VXFTFace::AddFontSearchPath(folder);
    VXGeom::SetupFreeType();
}

SystemFonts::~SystemFonts()
{
    mFile.reset(); // before its library
    VXGeom::TearDownFreeType();
}

std::vector<VXFTFace*> SystemFonts::Faces() const
{
    std::vector<VXFTFace*> faces;
    std::set<std::string> names;
    for (std::int64_t i = 0; i < VXFTFace::NumFaces(); ++i)
        if (VXFTFace* const face = VXFTFace::GetFace(i); face && names.insert(face->Name().Std()).second)
            faces.push_back(face);
    return faces;
}

VXFTFace* SystemFonts::Choose(const std::string& wanted)
{
    const BPath path{BString(wanted)};
    if (!wanted.empty() && (path.IsFile() || wanted.find_first_of("/\\") != std::string::npos))
    {
        mFile = std::make_unique<VXFTFace>(path);
        return mFile.get(); // what is wrong with it is told by whoever opens it
    }
    const std::string name = wanted.empty() ? "DejaVuSans.ttf" : wanted;
    const std::vector<VXFTFace*> faces = Faces();
    if (VXFTFace* const exact = VXFTFace::GetFaceByName(name.c_str()))
        return exact;
    for (VXFTFace* const face : faces)
        if (face->Name().IsSameAs(name, 0) || face->Path().BaseName().IsSameAs(name, 0))
            return face;
    if (wanted.empty() && !faces.empty())
        return faces.front();
    mError = wanted.empty() ? BString("there are no fonts in the system's folders, expected --font FILE")
                            : BString("'" + wanted +
                                      "' is no font in the system's folders, see 'velmar fonts', and no "
                                      "file");
    return nullptr;
}

} // namespace vx::cli
