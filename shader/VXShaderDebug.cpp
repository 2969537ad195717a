#include "shader/VXShaderDebug.h"

#include "engine/VXSceneContext.h"
#include "engine/VXSceneDelegate.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <string>
#include <string_view>

namespace
{
constexpr std::size_t kLongestFormat = 1024; ///< bytes
constexpr const char* kBanner = "============================================================================";

BPath sLogPath = BKelvoPath("debugShaderPreview.log");

bool HostWantsDebugging()
{
    VXSceneDelegate* const delegate = VXSceneContext::Delegate();
    return delegate && delegate->WantsShaderDebugging();
}

void Append(std::string_view text)
{
    std::ofstream log(sLogPath.Std(), std::ios::app);
    log << text;
}

// What cannot be formatted goes out as it stands.
std::string Formatted(const char* format, std::va_list arguments)
{
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text;
    if (length < 0)
        text = format;
    else
    {
        text.resize(std::size_t(length));
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

void AppendFormatted(const char* format, std::va_list arguments)
{
    if (std::strlen(format) > kLongestFormat)
        Append(std::string(format) + "\n" + kBanner + "\n");
    else
        Append(Formatted(format, arguments));
}
} // namespace

void VXShaderDebug(const char* format, ...)
{
    if (!format || !HostWantsDebugging())
        return;
    std::va_list arguments;
    va_start(arguments, format);
    AppendFormatted(format, arguments);
    va_end(arguments);
}

void VXShaderFileDebug(const char* format, ...)
{
    if (!format)
        return;
    std::va_list arguments;
    va_start(arguments, format);
    AppendFormatted(format, arguments);
    va_end(arguments);
}

// How many per cent signs `text` ends in.
static std::size_t PercentSignsAtEnd(std::string_view text)
{
    const std::size_t last = text.find_last_not_of('%');
    return last == std::string_view::npos ? text.size() : text.size() - 1 - last;
}

void VXShaderDebugLong(const char* text, int chunk)
{
    // Pieces are formats by design. Called through a pointer, as compilers rightly warn of formats that are no
    // literals.
    void (*const append)(const char*, ...) = VXShaderDebug;
    std::string_view rest = text ? text : "";
    const std::size_t longest = chunk > 0 ? std::size_t(chunk) : rest.size();
    do
    {
        std::size_t length = rest.size() < longest ? rest.size() : longest;
        if (length < rest.size() && rest[length] == '%' && PercentSignsAtEnd(rest.substr(0, length)) % 2 == 1)
            length = length > 1 ? length - 1 : 2; // shorter: a longer piece could be too long for a format
        append(std::string(rest.substr(0, length)).c_str());
        rest.remove_prefix(length);
    } while (!rest.empty());
}

void VXShaderDebugSetLogFile(const BPath& path) { sLogPath = path; }

void VXShaderFileDebugReset()
{
    std::ofstream log(sLogPath.Std(), std::ios::trunc);
    log << "shader preview log file of kelvo session started at " << VXShaderFileDebugTime().Std() << kBanner << "\n";
}

BString VXShaderFileDebugTime()
{
    const std::time_t now = std::time(nullptr);
    const std::tm* const local = std::localtime(&now);
    return local ? std::asctime(local) : "";
}
