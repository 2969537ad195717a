// Any bytes given as a font end in no face, or in a text whose record holds.
#include "mesh/VXGeom.h"
#include "text/VXFTFace.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <system_error>

static void Require(bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "broken promise: %s\n", what);
    std::abort();
}

/// A file of this process, gone with it.
struct Scratch
{
    const std::string path =
        (std::filesystem::temp_directory_path() / ("velmar-fuzz-" + std::to_string(std::random_device()()))).string();

    ~Scratch()
    {
        std::error_code gone;
        std::filesystem::remove(path, gone);
    }
};

static const std::string& ScratchPath()
{
    static const Scratch scratch;
    return scratch.path;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::ofstream(ScratchPath(), std::ios::binary) << std::string(reinterpret_cast<const char*>(data), size);
    VXGeom::SetupFreeType();
    VXFTFace face(ScratchPath().c_str());
    VXGeom mesh;
    mesh.BuildStrGlyphs("AVA \xC3\xA9\nA", &face, 1, "Text", true, true);
    int repairs = 0;
    Require(!mesh.Geom() || (GEOM_VerifyAndFix(mesh.Geom(), &repairs) == 0 && repairs == 0), "a text needs no repair");
    return 0;
}
