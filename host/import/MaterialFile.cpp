#include "host/import/MaterialFile.h"

#include "base/BFile.h"
#include "base/MEM.h"

#include <tiny_obj_loader.h>

#include <algorithm>
#include <cmath>
#include <sstream>

namespace vx
{
static constexpr float kMostScale = 1e6f;

static float InRange(float value, float low, float high, float otherwise)
{
    return std::isfinite(value) ? std::clamp(value, low, high) : otherwise;
}

static VERTEX ColourOf(const float (&c)[3])
{
    return {InRange(c[0], 0, 1, 0), InRange(c[1], 0, 1, 0), InRange(c[2], 0, 1, 0)};
}

static MaterialMap MapOf(const std::string& file, const tinyobj::texture_option_t& options)
{
    MaterialMap map;
    map.file = BString(file).Trimmed();
    for (int i = 0; i < 2; ++i)
    {
        map.scale[i] = InRange(options.scale[i], -kMostScale, kMostScale, 1);
        map.offset[i] = InRange(options.origin_offset[i], -kMostScale, kMostScale, 0);
    }
    return map;
}

static void AppendLines(const std::string& text, const BString& name, BArray<BString>& lines)
{
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        if (!line.empty())
            lines.Append(name + ": " + line.c_str());
}

static void ReadText(std::string text, const BString& name, BArray<MaterialRecord>& materials,
                     BArray<BString>& warnings)
{
    std::replace(text.begin(), text.end(), '\0', ' '); // the reader takes lines as C strings
    if (text.starts_with("\xEF\xBB\xBF"))
        text.erase(0, 3);
    std::istringstream stream(text);
    std::map<std::string, int> byName;
    std::vector<tinyobj::material_t> found;
    std::string warned, failed;
    tinyobj::LoadMtl(&byName, &found, &stream, &warned, &failed);
    AppendLines(warned, name, warnings);
    AppendLines(failed, name, warnings);
    for (const tinyobj::material_t& from : found)
    {
        if (from.name.empty())
            continue;
        MaterialRecord to;
        to.name = BString(from.name).Trimmed();
        to.kd = ColourOf(from.diffuse);
        to.ks = ColourOf(from.specular);
        to.ns = InRange(from.shininess, 0, 1000, 0);
        to.opacity = InRange(from.dissolve, 0, 1, 1);
        to.ke = ColourOf(from.emission);
        to.kdMap = MapOf(from.diffuse_texname, from.diffuse_texopt);
        to.ksMap = MapOf(from.specular_texname, from.specular_texopt);
        to.bumpMap = MapOf(from.bump_texname, from.bump_texopt);
        to.normalMap = MapOf(from.normal_texname, from.normal_texopt);
        to.bumpStrength = InRange(from.bump_texopt.bump_multiplier, -kMostScale, kMostScale, 1);
        if (!materials.Append(std::move(to)))
            return;
    }
}

void ReadMaterialText(const char* text, std::size_t size, const BString& name, BArray<MaterialRecord>& materials,
                      BArray<BString>& warnings)
{
    try
    {
        ReadText(std::string(text, size), name, materials, warnings);
    }
    catch (const std::exception&)
    {
        warnings.Append(name + ": does not fit into memory");
    }
}

BString ReadMaterialFile(const BPath& path, BArray<MaterialRecord>& materials, BArray<BString>& warnings)
{
    BFile file(path);
    char* const text = file.Open(BFile::Mode::Read) ? nullptr : file.ReadAll();
    if (!text)
        return file.LastError();
    ReadMaterialText(text, MEM_Count(text), path.FileName(), materials, warnings);
    MEM_Free(text);
    return {};
}
} // namespace vx
