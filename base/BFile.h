// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"
#include "base/BPath.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

/// A file read or written as bytes. Unless the compression setting is switched off, gzip-compressed files read as their
/// contents and plain ones as they are; what is written is compressed only when it is switched on. Not copyable. A file
/// that is not closed is closed by the destructor, in WriteAtomic mode without touching the target.
/// Failures are negative, and LastError says why in words. One thread at a time.
class FENWICK_EXPORT BFile
{
public:
    enum class Mode
    {
        Read,
        Write, ///< created or truncated
        Append,
        WriteAtomic, ///< written to a temporary name in the same folder; Close renames it over the target, a file that
                     ///< was never closed with success leaves the target as it was. Devices and pipes, which cannot
                     ///< be replaced, are written directly
    };

    explicit BFile(const BPath& path);
    ~BFile();
    BFile(const BFile&) = delete;
    BFile& operator=(const BFile&) = delete;

    /// Before Open. Reading: gzip data is recognised and read as its contents. Writing: makes gzip output.
    void SetCompression(bool on) { mCompression = on ? Setting::On : Setting::Off; }
    bool Compression() const { return mCompression != Setting::Off; }

    /// 0, or -1; LastError then says why ("no such file", "is a folder", "permission denied").
    int Open(Mode mode);
    int Close();    ///< 0, or -1 when buffered data could not be written; closing twice is harmless
    void Discard(); ///< closes and, in WriteAtomic mode, removes what was written
    bool IsOpen() const { return mImpl != nullptr; }
    const BPath& Path() const { return mPath; }
    const BString& LastError() const { return mLastError; }

    std::int64_t Read(void* out, std::size_t bytes); ///< bytes read, 0 at the end, -1 on failure (damaged gzip too)
    int Write(const void* bytes, std::size_t count); ///< 0 or -1
    int Write(std::string_view text) { return Write(text.data(), text.size()); }
    std::int64_t Size() const; ///< bytes on disk (compressed size of a compressed file), -1 when not open

    /// Reads the rest of the file into a byte memory handle with one spare zero byte behind it (capacity beyond the
    /// count). Null on failure; LastError says why ("truncated gzip data", "out of memory").
    char* ReadAll();

private:
    struct Impl;
    Impl* mImpl = nullptr;
    BPath mPath;
    BString mLastError;
    enum class Setting
    {
        Unset, ///< reading as On, writing as Off
        On,
        Off,
    } mCompression = Setting::Unset;
};
