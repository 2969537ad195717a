#include "host/gl/Program.h"

#include <GL/glew.h>

#include <initializer_list>
#include <string_view>

namespace vx
{
static BString LogOf(GLuint id, bool isProgram)
{
    GLint length = 0;
    isProgram ? glGetProgramiv(id, GL_INFO_LOG_LENGTH, &length) : glGetShaderiv(id, GL_INFO_LOG_LENGTH, &length);
    std::string text(std::size_t(length > 0 ? length : 0), '\0');
    if (length > 0)
        isProgram ? glGetProgramInfoLog(id, length, nullptr, text.data())
                  : glGetShaderInfoLog(id, length, nullptr, text.data());
    while (!text.empty() && (text.back() == '\0' || text.back() == '\n'))
        text.pop_back();
    return BString(text);
}

static GLuint Compile(GLenum stage, std::initializer_list<const char*> pieces, BString& problem)
{
    const GLuint shader = glCreateShader(stage);
    glShaderSource(shader, GLsizei(pieces.size()), pieces.begin(), nullptr);
    glCompileShader(shader);
    GLint done = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &done);
    if (!done)
    {
        problem = BString(stage == GL_VERTEX_SHADER ? "vertex shader: " : "fragment shader: ") + LogOf(shader, false);
        glDeleteShader(shader);
        return 0;
    }
    return shader;
}

BString Program::Build(const char* name, const std::string& shared, const char* vertexText, const char* fragmentText)
{
    const char* const version = "#version 330 compatibility\n";
    BString problem;
    const GLuint vertex = Compile(GL_VERTEX_SHADER, {version, shared.c_str(), "\n#line 1\n", vertexText}, problem);
    const GLuint fragment =
        vertex ? Compile(GL_FRAGMENT_SHADER,
                         {version, "#define FRAGMENT_STAGE\n", shared.c_str(), "\n#line 1\n", fragmentText}, problem)
               : 0;
    return Link(name, vertex, fragment, problem, {});
}

BString Program::Build(const char* name, const std::string& vertexText, const std::string& fragmentText,
                       std::span<const char* const> attributes)
{
    BString problem;
    const GLuint vertex = Compile(GL_VERTEX_SHADER, {vertexText.c_str()}, problem);
    const GLuint fragment = vertex ? Compile(GL_FRAGMENT_SHADER, {fragmentText.c_str()}, problem) : 0;
    return Link(name, vertex, fragment, problem, attributes);
}

// Takes both shaders; without a second one `problem` says why.
BString Program::Link(const char* name, std::uint32_t vertex, std::uint32_t fragment, BString problem,
                      std::span<const char* const> attributes)
{
    Release();
    if (fragment)
    {
        mId = glCreateProgram();
        glAttachShader(mId, vertex);
        glAttachShader(mId, fragment);
        for (std::size_t i = 0; i < attributes.size(); ++i)
            glBindAttribLocation(mId, GLuint(i), attributes[i]);
        glLinkProgram(mId);
        GLint done = GL_FALSE;
        glGetProgramiv(mId, GL_LINK_STATUS, &done);
        if (!done)
        {
            problem = "linking: " + LogOf(mId, true);
            Release();
        }
    }
    glDeleteShader(vertex); // zero is ignored; an attached shader lives as long as its program
    glDeleteShader(fragment);
    return problem.IsEmpty() ? problem : BString(name) + ": " + problem;
}

void Program::Release()
{
    if (mId)
        glDeleteProgram(mId);
    mId = 0;
    mUniforms.clear();
}

int Program::Uniform(const char* name)
{
    const auto found = mUniforms.find(std::string_view(name));
    if (found != mUniforms.end())
        return found->second;
    const int location = glGetUniformLocation(mId, name);
    mUniforms.emplace(name, location);
    return location;
}
} // namespace vx
