// Fonts that tests of text use.
#pragma once

#include "mesh/VXGeom.h"
#include "text/VXFTFace.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

inline constexpr const char* kSans = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

/// A font of one letter, as a bitmap.
inline constexpr const char* kBitmapFont =
    "STARTFONT 2.1\nFONT -x-x-medium-r-normal--8-80-75-75-c-80-iso10646-1\nSIZE 8 75 75\nFONTBOUNDINGBOX 8 8 0 0\n"
    "STARTPROPERTIES 2\nFONT_ASCENT 8\nFONT_DESCENT 0\nENDPROPERTIES\nCHARS 1\nSTARTCHAR A\nENCODING 65\n"
    "SWIDTH 1000 0\nDWIDTH 8 0\nBBX 8 2 0 0\nBITMAP\nFF\nFF\nENDCHAR\nENDFONT\n";

/// FreeType while a test runs, and a folder for font files of its own.
class WithFonts : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!std::filesystem::exists(kSans))
            GTEST_SKIP() << "DejaVu Sans (fonts-dejavu-core) is not installed";
        mFolder =
            std::filesystem::path(testing::TempDir()) / testing::UnitTest::GetInstance()->current_test_info()->name();
        std::filesystem::create_directories(mFolder);
        VXGeom::SetupFreeType();
    }
    void TearDown() override
    {
        VXGeom::TearDownFreeType();
        std::filesystem::remove_all(mFolder);
    }
    std::string Write(const std::string& name, const std::string& bytes) const
    {
        const std::string path = (mFolder / name).string();
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }
    static std::string SansBytes()
    {
        std::ifstream file(kSans, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::filesystem::path mFolder;
};
