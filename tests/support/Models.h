// Models from files for tests that look at real ones too.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <vector>

/// The OBJ files of a folder in order of names; none when there is no such folder.
inline std::vector<std::filesystem::path> ModelsIn(const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> models;
    if (std::filesystem::is_directory(folder))
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            if (entry.path().extension() == ".obj")
                models.push_back(entry.path());
    std::sort(models.begin(), models.end());
    return models;
}

inline std::vector<std::filesystem::path> SampleModels() { return ModelsIn(VELMAR_SOURCE_DIR "/samples"); }

/// What the environment variable VELMAR_MODELS names a folder of: larger models that do not come with the sources.
inline std::vector<std::filesystem::path> FurtherModels()
{
    const char* const folder = std::getenv("VELMAR_MODELS");
    return folder ? ModelsIn(folder) : std::vector<std::filesystem::path>();
}
