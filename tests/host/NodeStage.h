// Draws what generated programs make of a plane or a sphere, with nothing else of the draw engine.
#pragma once

#include "base/Vertex.h"
#include "host/gl/Framebuffer.h"
#include "host/glsl/Generator.h"
#include "host/image/Picture.h"
#include "host/window/OffscreenContext.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// One corner of what is drawn.
struct StageVertex
{
    VERTEX position, normal;
    float u = 0, v = 0;
    VERTEX tangent, binormal;
};
struct StageMesh
{
    std::vector<StageVertex> vertices;
    std::vector<std::uint32_t> indices;
};
StageMesh StagePlane();  ///< -1..1 in x and y at z = 0, u along x and v along y from 0 to 1, no tangents
StageMesh StageSphere(); ///< of radius 1, u around the y axis

/// A context, a square target and the lights of a scene. Pixels are looked at as linear light, which is what the
/// surface sends as long as it is below 0.7.
class NodeStage
{
public:
    bool Create(int side); ///< false without OpenGL: Error says why
    const BString& Error() const { return mContext.Error(); }

    // --- Settings, until changed
    int tones = 0, alphaPass = 0;
    VERTEX ambient{0.5f, 0.5f, 0.5f}; ///< from above and below
    std::vector<VERTEX> lights;       ///< far away, white: where they are
    VERTEX back;                      ///< of back faces
    float scale = 1;                  ///< of the model

    /// A texture of the file name: bytes of its pixels, four each, bottom row first.
    void SetPicture(const char* file, int width, int height, std::vector<std::uint8_t> pixels);
    void SetNoise(std::vector<std::uint8_t> bytes) { mNoise = std::move(bytes); } ///< of NoiseVolume::kSize cubed

    /// What compiler and linker say about a program, and which of its uniforms the source does not announce. Empty when
    /// all is well.
    static std::string Link(const vx::GlslSource& source);
    /// Draws, adding a failure to the test when that goes wrong.
    void Draw(const vx::GlslSource& source, const StageMesh& mesh);
    VERTEX At(int x, int y) const; ///< linear light of a pixel, from the lower left
    float Alpha(int x, int y) const;
    int Side() const { return mSide; }

private:
    struct Pixels
    {
        int width, height;
        std::vector<std::uint8_t> bytes;
    };
    static std::uint32_t Program(const vx::GlslSource& source, std::string& words);
    void FillFrame(std::uint32_t program, std::vector<std::uint8_t>& block) const;
    void BindTextures(const vx::GlslSource& source, std::uint32_t program);

    vx::OffscreenContext mContext;
    vx::Framebuffer mTarget;
    int mSide = 0;
    std::map<std::string, Pixels> mPictures;
    std::vector<std::uint8_t> mNoise;
    vx::PicturePtr mPicture;
};
