// VelmarBase: command line.
#pragma once

#include "text/VXFTFace.h"

#include <memory>
#include <string>
#include <vector>

/// @file
/// What verbs that use fonts share.

namespace vx::cli
{

/// The fonts of the system's folders while this object lives.
class SystemFonts
{
public:
    SystemFonts();
    ~SystemFonts();
    SystemFonts(const SystemFonts&) = delete;
    SystemFonts& operator=(const SystemFonts&) = delete;

    /// Of fonts whose files have one name, the first.
    std::vector<VXFTFace*> Faces() const;

    /// The face that a user means: a file, or the name of one in the folders, with or without its ending, whatever the
    /// case of its letters; none asks for a font that most systems have. @return null when there is none; Error() then
    /// says why
    VXFTFace* Choose(const std::string& wanted);
    const BString& Error() const { return mError; }

private:
    std::unique_ptr<VXFTFace> mFile; ///< one that is in no folder
    BString mError;
};

} // namespace vx::cli
