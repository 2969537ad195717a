// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BString.h"

#include <cstdint>
#include <map>
#include <string>

namespace vx
{
/// A linked GLSL program and its uniforms by name. Belongs to the context that was current at Build.
class VELMAR_HOST_EXPORT Program
{
public:
    Program() = default;
    ~Program() { Release(); }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Compiles and links. @param head text put before both stages: defines, declarations; FRAGMENT_STAGE is defined
    /// before it in the second
    /// @return empty, or the compiler's words with the stage they are about
    BString Build(const char* name, const std::string& head, const char* vertexText, const char* fragmentText);
    void Release();

    std::uint32_t Id() const { return mId; }
    bool IsBuilt() const { return mId != 0; }
    int Uniform(const char* name); ///< location, -1 for one that the program does not use

private:
    std::uint32_t mId = 0;
    std::map<std::string, int, std::less<>> mUniforms;
};
} // namespace vx
