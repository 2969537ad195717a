// VelmarBase: command line.
#pragma once

#include "Cli.h"
#include "host/Preview.h"
#include "host/image/Picture.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// What verbs that draw models share: options, reading the models, writing the picture.

namespace vx::cli
{

/// The arguments. Numbers go straight into what the host takes; texts are checked by the grammar and read by Open.
class PictureArguments
{
public:
    virtual ~PictureArguments() = default;

    PreviewOptions picture;
    bool verbose = false;

    // --- Grammar: a verb takes the options that make sense for it. This object must outlive the parsing.
    void AddModels(CLI::App& verb); ///< INPUT... and --verbose
    void AddOutput(CLI::App& verb, std::string& output, const char* purpose);
    void AddSize(CLI::App& verb, const char* size, const char* purpose); ///< @param size the standard one
    void AddMode(CLI::App& verb);
    void AddView(CLI::App& verb);      ///< from where the models are looked at
    void AddSurface(CLI::App& verb);   ///< hard edges and subdivision
    void AddLook(CLI::App& verb);      ///< texture, background, ground, samples, and what is laid over the picture
    void AddMarks(CLI::App& verb);     ///< vectors and highlights
    void AddAll(CLI::App& verb);       ///< all from size to marks
    void AddMaterials(CLI::App& verb); ///< a file of materials, and AddShaders
    void AddShaders(CLI::App& verb);
    void AddShaderLog(CLI::App& verb); ///< for verbs that Open

    /// Shows this model, a text, instead of files. @param name for messages
    void SetModel(std::string name, std::string text)
    {
        mModelName = std::move(name);
        mModelText = std::move(text);
    }
    void AlsoReads(std::vector<std::string> files) { mAlsoRead = std::move(files); } ///< no output may be one of them

    // --- Work

    /// Reads the options and the models, and starts OpenGL; nothing of it is done where there is no place for an
    /// output. @param outputs the files to write, if any
    /// @return kDone, or the code of a failure that has been told
    int Open(Preview& preview, const std::vector<std::string>& outputs, Stopwatch& watch);

    /// Reads the options alone, for a program that reads the models itself. @return kDone, or wrong usage that has been
    /// told
    int ReadOptions();
    const std::vector<std::string>& Inputs() const { return mInputs; }
    const std::string& Texture() const { return mTexture; }
    const std::string& Materials() const { return mMaterials; }
    const ImportOptions& Import() const { return mImport; }

protected:
    /// What makes no sense together, whatever the models; a verb may know more.
    virtual BString UsageProblem() const;

private:
    void AddBackground(CLI::App& verb);
    void AddOverlays(CLI::App& verb);
    void ReadTexts();
    int ReadModels(Preview& preview, Stopwatch& watch);
    BString HighlightProblem(Preview& preview) const;

    std::string mVerb; ///< as the user calls it
    std::vector<std::string> mInputs, mAlsoRead;
    std::string mModelName, mModelText, mMaterials, mShaders = "auto", mShaderLog;
    std::string mTexture, mSize, mMode = "smooth-textured", mBackground = "gradient", mUp = "y", mShow, mScheme;
    std::string mBackgroundPicture, mBackgroundFit = "crop", mWatermark, mFrame;
    bool mNoCreases = false, mNoShadows = false, mOcclusion = false;
    ImportOptions mImport;
};

BPath BundledSample();

struct PictureSize
{
    int width, height;
};
/// "WIDTHxHEIGHT", each from 1 to `most` pixels.
std::optional<PictureSize> ReadPictureSize(std::string_view text, int most);

/// Writes a picture to a file or to standard output, and says on standard output where it is; then warns of what the
/// models lack. @return the exit code
int WritePicture(const CPB_Offscreen& picture, const std::string& output, const Preview& preview, Stopwatch& watch);

} // namespace vx::cli
