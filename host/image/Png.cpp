#include "host/image/Png.h"

#include "base/BFile.h"

#include <png.h>

#include <csetjmp>
#include <cstdio>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

namespace vx
{
namespace
{
struct Target
{
    BArray<std::uint8_t>* bytes;
    BString error;
};

void OnError(png_structp png, png_const_charp message)
{
    static_cast<Target*>(png_get_error_ptr(png))->error = message;
    png_longjmp(png, 1);
}

void OnWarning(png_structp, png_const_charp) {}

void OnWrite(png_structp png, png_bytep data, png_size_t size)
{
    BArray<std::uint8_t>& bytes = *static_cast<Target*>(png_get_io_ptr(png))->bytes;
    std::uint8_t* const at = bytes.AppendRaw(std::int64_t(size));
    if (!at)
        png_error(png, "out of memory");
    std::memcpy(at, data, size);
}

void OnFlush(png_structp) {}

// All that libpng may jump out of; holds nothing that needs a destructor.
bool Encode(png_structp png, png_infop info, const CPB_Offscreen& picture)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    const int bits = picture.BitsPerPixel();
    const int colour = bits == 8 ? PNG_COLOR_TYPE_GRAY
                                 : (bits == 32 && picture.HasAlpha() ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB);
    png_set_IHDR(png, info, png_uint_32(picture.Width()), png_uint_32(picture.Height()), 8, colour, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
    png_set_compression_level(png, 6);
    png_write_info(png, info);
    if (bits == 32 && !picture.HasAlpha())
        png_set_filler(png, 0, PNG_FILLER_AFTER); // drops the fourth byte
    for (int y = 0; y < picture.Height(); ++y)
        png_write_row(png, picture.Row(y));
    png_write_end(png, info);
    return true;
}
} // namespace

BString EncodePng(const CPB_Offscreen& picture, BArray<std::uint8_t>& out)
{
    Target target{&out, {}};
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &target, OnError, OnWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    bool done = false;
    if (info)
    {
        png_set_write_fn(png, &target, OnWrite, OnFlush);
        done = Encode(png, info, picture);
    }
    png_destroy_write_struct(&png, &info);
    if (done)
        return {};
    return BString("the picture could not be encoded as PNG: ") +
           (target.error.IsEmpty() ? BString("out of memory") : target.error);
}

BString WritePng(const CPB_Offscreen& picture, const BPath& path)
{
    BArray<std::uint8_t> bytes;
    if (const BString problem = EncodePng(picture, bytes); !problem.IsEmpty())
        return path.FullPath() + ": " + problem;
    BFile file(path);
    file.SetCompression(false);
    if (file.Open(BFile::Mode::WriteAtomic) || file.Write(bytes.Data(), std::size_t(bytes.Count())) || file.Close())
    {
        const BString problem = path.FullPath() + ": cannot be written: " + file.LastError();
        file.Discard();
        return problem;
    }
    return {};
}

BString WritePngToStdout(const CPB_Offscreen& picture)
{
    BArray<std::uint8_t> bytes;
    if (BString problem = EncodePng(picture, bytes); !problem.IsEmpty())
        return problem;
#ifdef _WIN32
    _setmode(_fileno(stdout), _O_BINARY);
#endif
    const std::size_t count = std::size_t(bytes.Count());
    if (std::fwrite(bytes.Data(), 1, count, stdout) != count || std::fflush(stdout) != 0)
        return "standard output: cannot be written";
    return {};
}
} // namespace vx
