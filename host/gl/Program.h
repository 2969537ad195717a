// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BString.h"

#include <cstdint>
#include <map>
#include <span>
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

    /// The same from texts that are complete, their own version line included. @param attributes get the locations 0,
    /// 1, 2...; names that the program lacks are skipped
    BString Build(const char* name, const std::string& vertexText, const std::string& fragmentText,
                  std::span<const char* const> attributes);
    void Release();

    std::uint32_t Id() const { return mId; }
    bool IsBuilt() const { return mId != 0; }
    int Uniform(const char* name); ///< location, -1 for one that the program does not use

private:
    BString Link(const char* name, std::uint32_t vertex, std::uint32_t fragment, BString problem,
                 std::span<const char* const> attributes);

    std::uint32_t mId = 0;
    std::map<std::string, int, std::less<>> mUniforms;
};
} // namespace vx
