#include "host/gl/Program.h"

#include <GL/glew.h>

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

static GLuint Compile(GLenum stage, const std::string& shared, const char* text, BString& problem)
{
    const GLuint shader = glCreateShader(stage);
    const std::string head = std::string("#version 330 compatibility\n") +
                             (stage == GL_FRAGMENT_SHADER ? "#define FRAGMENT_STAGE\n" : "") + shared;
    const char* const pieces[] = {head.c_str(), "\n#line 1\n", text};
    glShaderSource(shader, 3, pieces, nullptr);
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
    Release();
    BString problem;
    const GLuint vertex = Compile(GL_VERTEX_SHADER, shared, vertexText, problem);
    const GLuint fragment = vertex ? Compile(GL_FRAGMENT_SHADER, shared, fragmentText, problem) : 0;
    if (fragment)
    {
        mId = glCreateProgram();
        glAttachShader(mId, vertex);
        glAttachShader(mId, fragment);
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
