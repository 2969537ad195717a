// VelmarBase: sample models.
#include "ObjModel.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

// Writes all sample models into a folder. The files beside this one are its output; a test compares them.
int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::fprintf(stderr, "velmar-samples: expected one argument, the folder to write to\n");
        return 2;
    }
    for (const auto& files : {TeacupFiles(), BracketFiles(), SailboatFiles(), MaterialPictures()})
    {
        for (const SampleFile& file : files)
        {
            const std::filesystem::path path = std::filesystem::path(argv[1]) / file.name;
            std::error_code ignored; // the file says what is wrong
            std::filesystem::create_directories(path.parent_path(), ignored);
            std::ofstream out(path, std::ios::binary);
            out.write(file.bytes.data(), std::streamsize(file.bytes.size()));
            out.close();
            if (!out)
            {
                std::fprintf(stderr, "velmar-samples: %s/%s: cannot be written\n", argv[1], file.name.c_str());
                return 1;
            }
        }
    }
    return 0;
}
