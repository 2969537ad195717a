// FenwickBase: foundation of the VelmarBase project.
#include "base/BFile.h"
#include "base/BText.h"
#include "base/MEM.h"
#include "base/platform/Platform.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <system_error>
#include <utility>

#include <zlib.h>

namespace platform = vx::platform;

namespace
{
constexpr std::size_t kBufferSize = std::size_t(1) << 16;
constexpr int kGzip = 15 + 16; // zlib: the largest window, gzip framing

BString WordsFor(int error)
{
    switch (error)
    {
    case ENOENT:
        return "no such file";
    case EACCES:
    case EPERM:
    case EROFS:
        return "permission denied";
    case EISDIR:
        return "is a folder";
    case ENOTDIR:
        return "a part of the path is not a folder";
    case ENOSPC:
        return "no space left on the device";
    case EMFILE:
    case ENFILE:
        return "too many open files";
    case ENAMETOOLONG:
        return "name too long";
    default:
        return BString(std::generic_category().message(error));
    }
}

// When a file is to be created, "no such file" can only mean its folder.
BString WordsForCreating(int error) { return error == ENOENT ? BString("no such folder") : WordsFor(error); }
} // namespace

struct BFile::Impl
{
    enum class Stream
    {
        Plain,
        Inflating,
        Deflating
    };

    int file = -1;
    bool writing = false;
    Stream stream = Stream::Plain;
    z_stream z{};
    bool memberDone = false; // Inflating: between two members of a gzip file
    bool writeFailed = false;
    std::filesystem::path target;    // WriteAtomic: the final name, links resolved
    std::filesystem::path temporary; // empty when the target is written itself
    std::size_t begin = 0, end = 0;  // bytes held in buffer
    unsigned char buffer[kBufferSize];

    ~Impl()
    {
        if (stream == Stream::Inflating)
            inflateEnd(&z);
        else if (stream == Stream::Deflating)
            deflateEnd(&z);
    }

    // --- Reading

    // Fills an empty buffer. Bytes held afterwards, 0 at the end of the file, -1 on failure.
    std::int64_t Fill(BString& why)
    {
        if (begin < end)
            return std::int64_t(end - begin);
        int error = 0;
        const std::int64_t got = platform::ReadFile(file, buffer, kBufferSize, error);
        begin = 0;
        end = got > 0 ? std::size_t(got) : 0;
        if (got < 0)
            why = WordsFor(error);
        return got;
    }

    // Makes the buffer hold the two bytes that tell gzip from everything else, unless the file ends before. False on
    // failure.
    bool Peek(BString& why)
    {
        std::memmove(buffer, buffer + begin, end - begin);
        end -= std::exchange(begin, 0);
        while (end < 2)
        {
            int error = 0;
            const std::int64_t got = platform::ReadFile(file, buffer + end, kBufferSize - end, error);
            if (got < 0)
                why = WordsFor(error);
            if (got <= 0)
                return got == 0;
            end += std::size_t(got);
        }
        return true;
    }

    bool HoldsGzipMagic() const { return end - begin >= 2 && buffer[begin] == 0x1F && buffer[begin + 1] == 0x8B; }

    bool BeginInflating()
    {
        if (inflateInit2(&z, kGzip) != Z_OK)
            return false;
        stream = Stream::Inflating;
        return true;
    }

    // Goes on to the next member. What follows the last one (padding of tapes, mostly) does not belong to the data.
    // False at the end of the data.
    bool NextMember(BString& why)
    {
        if ((end - begin < 2 && !Peek(why)) || !HoldsGzipMagic())
            return false;
        memberDone = false;
        return inflateReset(&z) == Z_OK;
    }

    std::int64_t Inflate(unsigned char* out, std::size_t bytes, BString& why)
    {
        z.next_out = out;
        z.avail_out = uInt(std::min<std::size_t>(bytes, UINT_MAX));
        const uInt wanted = z.avail_out;
        while (z.avail_out == wanted)
        {
            if (memberDone && !NextMember(why))
                return why.IsEmpty() ? 0 : -1;
            const std::int64_t held = Fill(why);
            if (held < 0)
                return -1;
            z.next_in = buffer + begin;
            z.avail_in = uInt(held);
            const int result = inflate(&z, Z_NO_FLUSH);
            begin = end - z.avail_in;
            if (result == Z_STREAM_END)
                memberDone = true;
            else if (result == Z_BUF_ERROR && held == 0)
                why = "truncated gzip data";
            else if (result == Z_MEM_ERROR)
                why = "out of memory";
            else if (result != Z_OK)
                why = "damaged gzip data";
            if (!why.IsEmpty())
                return -1;
        }
        return std::int64_t(wanted - z.avail_out);
    }

    std::int64_t ReadPlain(unsigned char* out, std::size_t bytes, BString& why)
    {
        if (begin < end)
        {
            const std::size_t held = std::min(bytes, end - begin);
            std::memcpy(out, buffer + begin, held);
            begin += held;
            return std::int64_t(held);
        }
        int error = 0;
        const std::int64_t got = platform::ReadFile(file, out, bytes, error);
        if (got < 0)
            why = WordsFor(error);
        return got;
    }

    std::int64_t Read(void* out, std::size_t bytes, BString& why)
    {
        unsigned char* const to = static_cast<unsigned char*>(out);
        return stream == Stream::Inflating ? Inflate(to, bytes, why) : ReadPlain(to, bytes, why);
    }

    // How many bytes ReadAll will probably find; a guess, since files change and compressed ones do not say.
    std::size_t ExpectedBytes()
    {
        platform::FileInfo info;
        if (!platform::InspectFile(file, info) || !info.isRegular)
            return kBufferSize;
        const std::size_t onDisk = std::size_t(std::max<std::int64_t>(info.bytes, 0));
        return stream == Stream::Inflating ? onDisk * 4 : onDisk;
    }

    // --- Writing

    bool BeginDeflating()
    {
        if (deflateInit2(&z, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kGzip, 8, Z_DEFAULT_STRATEGY) != Z_OK)
            return false;
        stream = Stream::Deflating;
        return true;
    }

    bool WriteOut(const void* bytes, std::size_t count, BString& why)
    {
        int error = 0;
        if (platform::WriteFile(file, bytes, count, error))
            return true;
        why = WordsFor(error);
        writeFailed = true;
        return false;
    }

    bool Deflate(const void* bytes, std::size_t count, bool finish, BString& why)
    {
        const unsigned char* at = static_cast<const unsigned char*>(bytes);
        int result = Z_OK;
        do
        {
            const uInt piece = uInt(std::min<std::size_t>(count, UINT_MAX));
            z.next_in = const_cast<unsigned char*>(at);
            z.avail_in = piece;
            at += piece;
            count -= piece;
            do
            {
                z.next_out = buffer;
                z.avail_out = uInt(kBufferSize);
                result = deflate(&z, finish && count == 0 ? Z_FINISH : Z_NO_FLUSH);
                if (!WriteOut(buffer, kBufferSize - z.avail_out, why))
                    return false;
            } while (z.avail_out == 0);
        } while (count > 0);
        return !finish || result == Z_STREAM_END;
    }

    bool Write(const void* bytes, std::size_t count, BString& why)
    {
        if (stream == Stream::Deflating)
            return Deflate(bytes, count, false, why);
        if (count > kBufferSize - end)
        {
            if (!Flush(why))
                return false;
            if (count >= kBufferSize)
                return WriteOut(bytes, count, why);
        }
        if (count > 0)
            std::memcpy(buffer + end, bytes, count);
        end += count;
        return true;
    }

    bool Flush(BString& why)
    {
        const std::size_t held = end;
        end = 0;
        return held == 0 || WriteOut(buffer, held, why);
    }

    bool Finish(BString& why) { return stream == Stream::Deflating ? Deflate(nullptr, 0, true, why) : Flush(why); }

    // --- Opening and closing

    bool OpenForReading(const std::filesystem::path& path, bool compression, BString& why)
    {
        int error = 0;
        file = platform::OpenFile(path, platform::FileAccess::Read, error);
        platform::FileInfo info;
        if (file < 0)
            why = WordsFor(error);
        else if (platform::InspectFile(file, info) && info.isFolder)
            why = WordsFor(EISDIR);
        else if (compression && Peek(why) && HoldsGzipMagic() && !BeginInflating())
            why = "out of memory";
        return why.IsEmpty();
    }

    bool OpenForWriting(const std::filesystem::path& path, Mode mode, bool compression, BString& why)
    {
        writing = true;
        int error = 0;
        if (mode == Mode::WriteAtomic && !ChooseTemporary(path, why))
            return false;
        if (temporary.empty())
        {
            const bool append = mode == Mode::Append;
            file =
                platform::OpenFile(path, append ? platform::FileAccess::Append : platform::FileAccess::Truncate, error);
        }
        else
        {
            file = platform::OpenFile(temporary, platform::FileAccess::Create, error);
            if (file >= 0)
                platform::CopyAccessRights(file, target);
            else
                temporary.clear(); // not ours to remove
        }
        if (file < 0)
            why = WordsForCreating(error);
        else if (compression && !BeginDeflating())
            why = "out of memory";
        return why.IsEmpty();
    }

    // Finds the name to write to before renaming. Devices and pipes cannot be replaced and are written themselves.
    bool ChooseTemporary(const std::filesystem::path& path, BString& why)
    {
        std::error_code failed;
        const std::filesystem::file_status status = std::filesystem::status(path, failed);
        if (std::filesystem::is_directory(status))
            why = WordsFor(EISDIR);
        else if (std::filesystem::is_regular_file(status))
        {
            // Renaming would replace a file that may not be written, and a link instead of what it points to.
            int error = 0;
            if (!platform::MayWrite(path, error))
                why = WordsFor(error);
            target = std::filesystem::canonical(path, failed);
            if (failed)
                target = path;
        }
        else if (std::filesystem::exists(status))
            return true;
        else
            target = path;
        temporary = target;
        temporary += ("." + MakeUuidString().Left(8) + ".tmp").Std();
        return why.IsEmpty();
    }

    bool CloseDescriptor(BString& why)
    {
        int error = 0;
        const bool closed = file < 0 || platform::CloseFile(file, error);
        file = -1;
        if (!closed)
            why = WordsFor(error);
        return closed;
    }

    void RemoveTemporary()
    {
        std::error_code ignored;
        if (!temporary.empty())
            std::filesystem::remove(temporary, ignored);
    }
};

BFile::BFile(const BPath& path) : mPath(path) {}

BFile::~BFile() { Discard(); }

int BFile::Open(Mode mode)
{
    Discard();
    mLastError.Empty();
    std::unique_ptr<Impl> impl(new (std::nothrow) Impl);
    if (!impl)
    {
        mLastError = "out of memory";
        return -1;
    }
    const bool opened = mode == Mode::Read
                            ? impl->OpenForReading(mPath.Std(), mCompression != Setting::Off, mLastError)
                            : impl->OpenForWriting(mPath.Std(), mode, mCompression == Setting::On, mLastError);
    mImpl = impl.release();
    if (opened)
        return 0;
    const BString why = mLastError;
    Discard();
    mLastError = why;
    return -1;
}

int BFile::Close()
{
    if (!mImpl)
        return 0;
    if (!mImpl->writing)
    {
        Discard();
        return 0;
    }
    const std::unique_ptr<Impl> impl(std::exchange(mImpl, nullptr));
    bool done = !impl->writeFailed && impl->Finish(mLastError);
    done = impl->CloseDescriptor(mLastError) && done;
    int error = 0;
    if (done && !impl->temporary.empty() && !platform::RenameOver(impl->temporary, impl->target, error))
    {
        mLastError = WordsFor(error);
        done = false;
    }
    if (!done)
        impl->RemoveTemporary();
    return done ? 0 : -1;
}

void BFile::Discard()
{
    const std::unique_ptr<Impl> impl(std::exchange(mImpl, nullptr));
    if (!impl)
        return;
    BString ignored;
    if (impl->writing && impl->temporary.empty() && impl->file >= 0 && !impl->writeFailed)
        impl->Finish(ignored);
    impl->CloseDescriptor(ignored);
    impl->RemoveTemporary();
}

std::int64_t BFile::Read(void* out, std::size_t bytes)
{
    if (!mImpl || mImpl->writing)
    {
        mLastError = "not open for reading";
        return -1;
    }
    return bytes == 0 ? 0 : mImpl->Read(out, bytes, mLastError);
}

int BFile::Write(const void* bytes, std::size_t count)
{
    if (!mImpl || !mImpl->writing)
    {
        mLastError = "not open for writing";
        return -1;
    }
    return !mImpl->writeFailed && mImpl->Write(bytes, count, mLastError) ? 0 : -1;
}

std::int64_t BFile::Size() const
{
    platform::FileInfo info;
    return mImpl && platform::InspectFile(mImpl->file, info) ? info.bytes : -1;
}

char* BFile::ReadAll()
{
    if (!mImpl || mImpl->writing)
    {
        mLastError = "not open for reading";
        return nullptr;
    }
    // One byte for the zero behind the text, one so that the end of a plain file is seen without growing.
    void* text = MEM_Alloc(1, 0);
    std::size_t room = mImpl->ExpectedBytes() + 2, filled = 0;
    for (;;)
    {
        void* const larger = MEM_Reserve(text, room);
        if (!larger)
        {
            mLastError = "out of memory";
            break;
        }
        text = larger;
        const std::int64_t got = mImpl->Read(static_cast<char*>(text) + filled, room - filled - 1, mLastError);
        if (got < 0)
            break;
        filled += std::size_t(got);
        MEM_SetCount(text, filled); // growing moves the entries that count
        if (got == 0)
        {
            static_cast<char*>(text)[filled] = 0;
            return static_cast<char*>(text);
        }
        if (room - filled < 2)
            room += room / 2;
    }
    MEM_Free(text);
    return nullptr;
}
