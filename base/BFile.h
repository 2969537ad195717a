// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"
#include "base/BPath.h"

#include <cstddef>
#include <cstdint>

/// A file read or written as bytes. With the compression setting on (the default for reading), gzip-compressed files
/// read as their contents and plain ones as they are. Not copyable; closes itself. Failures are negative or false.
class FENWICK_EXPORT BFile
{
public:
    enum class Mode
    {
        Read,
        Write, ///< created or truncated
        Append,
        WriteAtomic, ///< written to a temporary name in the same folder; Close renames it over the target, a file that
                     ///< was never closed with success leaves the target as it was
    };

    explicit BFile(const BPath& path);
    ~BFile();
    BFile(const BFile&) = delete;
    BFile& operator=(const BFile&) = delete;

    bool Compression() const { return mCompression; }
    void SetCompression(bool on) { mCompression = on; } ///< before Open; when writing: makes gzip output

    /// 0, or -1; LastError then says why in words ("no such file", "is a folder", "permission denied").
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
    bool mCompression = true;
};
