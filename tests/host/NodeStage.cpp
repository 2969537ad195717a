#include "tests/host/NodeStage.h"

#include "host/gl/LoadGL.h"
#include "host/image/ColorSpace.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <set>

using namespace vx;

StageMesh StagePlane()
{
    StageMesh mesh;
    for (const float y : {0.0f, 1.0f})
        for (const float x : {0.0f, 1.0f})
            mesh.vertices.push_back({{2 * x - 1, 2 * y - 1, 0}, {0, 0, 1}, x, y, {}, {}});
    mesh.indices = {0, 1, 2, 2, 1, 3};
    return mesh;
}

StageMesh StageSphere()
{
    constexpr std::uint32_t kAround = 64, kUp = 32;
    StageMesh mesh;
    for (std::uint32_t j = 0; j <= kUp; ++j)
        for (std::uint32_t i = 0; i <= kAround; ++i)
        {
            const float u = float(i) / kAround, v = float(j) / kUp;
            const float longitude = 6.2831853f * u, latitude = 3.14159265f * (v - 0.5f);
            const VERTEX p = {std::cos(latitude) * std::sin(longitude), std::sin(latitude),
                              std::cos(latitude) * std::cos(longitude)};
            mesh.vertices.push_back({p, p, u, v, {}, {}});
        }
    for (std::uint32_t j = 0; j < kUp; ++j)
        for (std::uint32_t i = 0; i < kAround; ++i)
        {
            const std::uint32_t a = j * (kAround + 1) + i, b = a + kAround + 1;
            for (const std::uint32_t index : {a, a + 1, b, b, a + 1, b + 1})
                mesh.indices.push_back(index);
        }
    return mesh;
}

bool NodeStage::Create(int side)
{
    mSide = side;
    return mContext.Create() && mTarget.Create(side, side, 1).IsEmpty();
}

void NodeStage::SetPicture(const char* file, int width, int height, std::vector<std::uint8_t> pixels)
{
    mPictures[file] = {width, height, std::move(pixels)};
}

std::uint32_t NodeStage::Program(const GlslSource& source, std::string& words)
{
    char log[2000] = "";
    const GLuint program = glCreateProgram();
    for (const auto& [kind, text] :
         {std::pair(GL_VERTEX_SHADER, &source.vertex), {GL_FRAGMENT_SHADER, &source.fragment}})
    {
        const GLuint shader = glCreateShader(GLenum(kind));
        const char* const pointer = text->c_str();
        glShaderSource(shader, 1, &pointer, nullptr);
        glCompileShader(shader);
        glGetShaderInfoLog(shader, sizeof log, nullptr, log);
        words += log; // warnings too
        glAttachShader(program, shader);
        glDeleteShader(shader);
    }
    for (GLuint i = 0; i < std::size(kGlslAttributes); ++i)
        glBindAttribLocation(program, i, kGlslAttributes[i]);
    glLinkProgram(program);
    GLint done = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &done);
    glGetProgramInfoLog(program, sizeof log, nullptr, log);
    if (!done)
        words += std::string("linking: ") + log;
    return program;
}

// Compilers may drop what is announced and cannot matter.
std::string NodeStage::Link(const GlslSource& source)
{
    std::string words;
    const GLuint program = Program(source, words);
    std::set<std::string> announced;
    for (const GlslSource::Uniform& uniform : source.uniforms)
        announced.insert(uniform.name);
    for (const GlslSource::Texture& texture : source.textures)
        announced.insert(texture.type == "none" ? "" : texture.sampler);
    GLint count = 0;
    glGetProgramiv(program, GL_ACTIVE_UNIFORMS, &count);
    for (GLuint i = 0; i < GLuint(count); ++i)
    {
        char name[100] = "";
        GLint inBlock = -1;
        glGetActiveUniformName(program, i, sizeof name, nullptr, name);
        glGetActiveUniformsiv(program, 1, &i, GL_UNIFORM_BLOCK_INDEX, &inBlock);
        if (inBlock < 0 && !announced.contains(name))
            words += std::string(name) + " is not announced\n";
    }
    glDeleteProgram(program);
    return words;
}

// The block by the names of its members, wherever the layout puts them.
void NodeStage::FillFrame(GLuint program, std::vector<std::uint8_t>& block) const
{
    const auto put = [&](const std::string& name, const VERTEX& v, float w)
    {
        const char* const pointer = name.c_str();
        GLuint index = GL_INVALID_INDEX;
        GLint offset = 0;
        glGetUniformIndices(program, 1, &pointer, &index);
        if (index == GL_INVALID_INDEX)
            return; // the compiler found no use for it
        glGetActiveUniformsiv(program, 1, &index, GL_UNIFORM_OFFSET, &offset);
        const float values[4] = {v.x, v.y, v.z, w};
        std::memcpy(block.data() + offset, values, sizeof values);
    };
    put("uViewport", {float(mSide), float(mSide), 1}, 1);
    put("uUp", {0, 1, 0}, float(lights.size()));
    put("uSky", ambient, 0);
    put("uFloor", ambient, 0);
    for (std::size_t i = 0; i < lights.size(); ++i)
    {
        const std::string light = "uLights[" + std::to_string(i) + "].";
        const VERTEX half = lights[i] + VERTEX{0, 0, 1};
        put(light + "position", lights[i], 0);
        put(light + "color", {1, 1, 1}, 0);
        put(light + "axis", half * (1 / std::max(Length(half), 1e-6f)), -2);
        put(light + "range", {}, 0);
    }
}

void NodeStage::BindTextures(const GlslSource& source, GLuint program)
{
    for (const GlslSource::Texture& texture : source.textures)
    {
        if (texture.type == "none")
            continue;
        const bool volume = texture.type == "sampler3D";
        const GLenum target = volume ? GL_TEXTURE_3D : GL_TEXTURE_2D;
        GLuint name = 0;
        glGenTextures(1, &name);
        glActiveTexture(GL_TEXTURE0 + GLenum(texture.unit));
        glBindTexture(target, name);
        glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        if (volume)
            glTexImage3D(target, 0, GL_LUMINANCE8, NoiseVolume::kSize, NoiseVolume::kSize, NoiseVolume::kSize, 0,
                         GL_LUMINANCE, GL_UNSIGNED_BYTE, mNoise.data());
        else
        {
            const Pixels& pixels = mPictures.at(texture.file.Std());
            glTexImage2D(target, 0, texture.linear ? GL_RGBA8 : GL_SRGB8_ALPHA8, pixels.width, pixels.height, 0,
                         GL_RGBA, GL_UNSIGNED_BYTE, pixels.bytes.data());
        }
        glUniform1i(glGetUniformLocation(program, texture.sampler.c_str()), texture.unit);
    }
    glActiveTexture(GL_TEXTURE0);
}

void NodeStage::Draw(const GlslSource& source, const StageMesh& mesh)
{
    std::string words;
    const GLuint program = Program(source, words);
    ASSERT_EQ(words, "") << source.problem.CString() << source.fragment;
    glUseProgram(program);
    const GLuint index = glGetUniformBlockIndex(program, "Frame");
    GLint size = 0;
    glGetActiveUniformBlockiv(program, index, GL_UNIFORM_BLOCK_DATA_SIZE, &size);
    std::vector<std::uint8_t> block(std::size_t(size), 0);
    FillFrame(program, block);
    GLuint buffers[3] = {}, array = 0;
    glGenBuffers(3, buffers);
    glGenVertexArrays(1, &array);
    glBindVertexArray(array);
    glBindBuffer(GL_UNIFORM_BUFFER, buffers[0]);
    glBufferData(GL_UNIFORM_BUFFER, size, block.data(), GL_STATIC_DRAW);
    glBindBufferBase(GL_UNIFORM_BUFFER, 0, buffers[0]);
    glUniformBlockBinding(program, index, 0);
    glBindBuffer(GL_ARRAY_BUFFER, buffers[1]);
    glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(mesh.vertices.size() * sizeof(StageVertex)), mesh.vertices.data(),
                 GL_STATIC_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers[2]);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr(mesh.indices.size() * 4), mesh.indices.data(), GL_STATIC_DRAW);
    const auto attribute = [](GLuint location, GLint count, std::size_t offset)
    {
        glVertexAttribPointer(location, count, GL_FLOAT, GL_FALSE, sizeof(StageVertex),
                              reinterpret_cast<const void*>(offset));
        glEnableVertexAttribArray(location);
    };
    attribute(0, 3, offsetof(StageVertex, position));
    attribute(1, 3, offsetof(StageVertex, normal));
    attribute(2, 2, offsetof(StageVertex, u));
    attribute(4, 3, offsetof(StageVertex, tangent));
    attribute(5, 3, offsetof(StageVertex, binormal));
    BindTextures(source, program);
    const float s = scale;
    const float modelView[16] = {s, 0, 0, 0, 0, s, 0, 0, 0, 0, s, 0, 0, 0, 0, 1};
    const float toClip[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -0.5f, 0, 0, 0, 0, 1};
    const float normals[9] = {1 / s, 0, 0, 0, 1 / s, 0, 0, 0, 1 / s};
    glUniformMatrix4fv(glGetUniformLocation(program, "uModelView"), 1, GL_FALSE, modelView);
    glUniformMatrix4fv(glGetUniformLocation(program, "uToClip"), 1, GL_FALSE, toClip);
    glUniformMatrix3fv(glGetUniformLocation(program, "uNormalMatrix"), 1, GL_FALSE, normals);
    glUniform1i(glGetUniformLocation(program, "uTones"), tones);
    glUniform1i(glGetUniformLocation(program, "uAlphaPass"), alphaPass);
    glUniform1i(glGetUniformLocation(program, "uBackPicture"), 15);
    glUniform3f(glGetUniformLocation(program, "uBack"), back.x, back.y, back.z);

    mTarget.Bind();
    glEnable(GL_DEPTH_TEST);
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glDrawElements(GL_TRIANGLES, GLsizei(mesh.indices.size()), GL_UNSIGNED_INT, nullptr);
    mPicture = mTarget.ReadBack(true);
    ASSERT_TRUE(mPicture);
    EXPECT_EQ(PendingGLErrors(), "");
    glUseProgram(0);
    glDeleteProgram(program);
    glDeleteBuffers(3, buffers);
    glDeleteVertexArrays(1, &array);
}

VERTEX NodeStage::At(int x, int y) const
{
    const std::uint8_t* const p = mPicture->Row(mSide - 1 - y) + 4 * x;
    return {LinearOf(float(p[0]) / 255), LinearOf(float(p[1]) / 255), LinearOf(float(p[2]) / 255)};
}

float NodeStage::Alpha(int x, int y) const { return float(mPicture->Row(mSide - 1 - y)[4 * x + 3]) / 255; }
