// FenwickBase: foundation of the VelmarBase project.
#include "base/platform/Platform.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <bcrypt.h>
#include <fcntl.h>
#include <io.h>
#include <malloc.h>
#include <process.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <new>

// windows.h makes macros of some of the names declared here.
#undef ReadFile
#undef WriteFile
#undef OpenFile

namespace vx::platform
{
namespace
{
constexpr std::size_t kCacheLine = 64;
constexpr std::size_t kLargestTransfer = std::size_t(1) << 30; // the C library counts in int

int ErrnoFor(DWORD error)
{
    switch (error)
    {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return ENOENT;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        return EACCES;
    case ERROR_DISK_FULL:
        return ENOSPC;
    default:
        return EIO;
    }
}
} // namespace

// Large pages need a privilege that ordinary users lack, so these are small ones; the system hands them out zeroed.
void* AllocPages(std::size_t bytes) { return VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE); }

void* ResizePages(void*, std::size_t, std::size_t) { return nullptr; }

void FreePages(void* pages, std::size_t) { VirtualFree(pages, 0, MEM_RELEASE); }

void* AllocAligned(std::size_t bytes) { return _aligned_malloc(bytes, kCacheLine); }

void FreeAligned(void* storage) { _aligned_free(storage); }

struct Mutex
{
    HANDLE handle;
};

Mutex* NewMutex()
{
    const HANDLE handle = CreateMutexW(nullptr, FALSE, nullptr);
    if (!handle)
        return nullptr;
    Mutex* const made = new (std::nothrow) Mutex{handle};
    if (!made)
        CloseHandle(handle);
    return made;
}

void DeleteMutex(Mutex* mutex)
{
    CloseHandle(mutex->handle);
    delete mutex;
}

void LockMutex(Mutex* mutex) { WaitForSingleObject(mutex->handle, INFINITE); }

bool TryLockMutex(Mutex* mutex)
{
    const DWORD result = WaitForSingleObject(mutex->handle, 0);
    return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
}

void UnlockMutex(Mutex* mutex) { ReleaseMutex(mutex->handle); }

struct Thread
{
    HANDLE handle;
    void (*entry)(void*);
    void* argument;
};

static unsigned __stdcall ThreadMain(void* self)
{
    const Thread* const thread = static_cast<const Thread*>(self);
    thread->entry(thread->argument);
    return 0;
}

Thread* StartThread(void (*entry)(void*), void* argument, std::size_t stackSize, bool lowPriority)
{
    if (stackSize > UINT_MAX)
        return nullptr;
    Thread* const made = new (std::nothrow) Thread{nullptr, entry, argument};
    if (!made)
        return nullptr;
    // Through the C library rather than CreateThread, so that its own state for the thread is set up.
    const std::uintptr_t handle = _beginthreadex(nullptr, unsigned(stackSize), ThreadMain, made,
                                                 CREATE_SUSPENDED | STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    if (handle == 0)
    {
        delete made;
        return nullptr;
    }
    made->handle = reinterpret_cast<HANDLE>(handle);
    if (lowPriority)
        SetThreadPriority(made->handle, THREAD_PRIORITY_BELOW_NORMAL);
    ResumeThread(made->handle);
    return made;
}

void JoinThread(Thread* thread)
{
    WaitForSingleObject(thread->handle, INFINITE);
    CloseHandle(thread->handle);
    delete thread;
}

std::uint64_t CurrentThreadNumber()
{
    static std::atomic<std::uint64_t> last{0};
    thread_local const std::uint64_t number = ++last;
    return number;
}

int OpenFile(const std::filesystem::path& path, FileAccess access, int& error)
{
    // Opening a folder fails with "permission denied" here, which would send people looking for the wrong thing.
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    {
        error = EISDIR;
        return -1;
    }
    int flags = _O_BINARY | _O_NOINHERIT;
    switch (access)
    {
    case FileAccess::Read:
        flags |= _O_RDONLY | _O_SEQUENTIAL;
        break;
    case FileAccess::Truncate:
        flags |= _O_WRONLY | _O_CREAT | _O_TRUNC;
        break;
    case FileAccess::Append:
        flags |= _O_WRONLY | _O_CREAT | _O_APPEND;
        break;
    case FileAccess::Create:
        flags |= _O_WRONLY | _O_CREAT | _O_EXCL;
        break;
    }
    const int file = _wopen(path.c_str(), flags, _S_IREAD | _S_IWRITE);
    error = file < 0 ? errno : 0;
    return file;
}

bool InspectFile(int file, FileInfo& info)
{
    struct __stat64 status;
    if (_fstat64(file, &status) != 0)
        return false;
    info.bytes = status.st_size;
    info.isRegular = (status.st_mode & _S_IFMT) == _S_IFREG;
    info.isFolder = (status.st_mode & _S_IFMT) == _S_IFDIR;
    return true;
}

std::int64_t ReadFile(int file, void* out, std::size_t bytes, int& error)
{
    const int got = _read(file, out, unsigned(std::min(bytes, kLargestTransfer)));
    if (got < 0)
        error = errno;
    return got;
}

bool WriteFile(int file, const void* from, std::size_t bytes, int& error)
{
    for (const char* at = static_cast<const char*>(from); bytes > 0;)
    {
        const int written = _write(file, at, unsigned(std::min(bytes, kLargestTransfer)));
        if (written <= 0)
        {
            error = written == 0 ? ENOSPC : errno;
            return false;
        }
        at += written;
        bytes -= std::size_t(written);
    }
    return true;
}

bool CloseFile(int file, int& error)
{
    if (_close(file) == 0)
        return true;
    error = errno;
    return false;
}

bool MayWrite(const std::filesystem::path& path, int& error)
{
    if (_waccess(path.c_str(), 2) == 0)
        return true;
    error = errno;
    return false;
}

// Access lists are inherited from the folder, which is what a user expects of a file written there.
void CopyAccessRights(int, const std::filesystem::path&) {}

bool RenameOver(const std::filesystem::path& from, const std::filesystem::path& to, int& error)
{
    if (MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING))
        return true;
    error = ErrnoFor(GetLastError());
    return false;
}

bool RandomBytes(void* out, std::size_t bytes)
{
    return BCryptGenRandom(nullptr, static_cast<PUCHAR>(out), ULONG(bytes), BCRYPT_USE_SYSTEM_PREFERRED_RNG) >= 0;
}

std::int64_t Milliseconds() { return std::int64_t(GetTickCount64()); }

bool ErrorsGoToTerminal() { return _isatty(2) != 0; }

// WGL knows the entry points beyond OpenGL 1.1, the library itself the others.
void* FindGLFunction(const char* name)
{
    const HMODULE library = GetModuleHandleW(L"opengl32.dll");
    if (!library)
        return nullptr;
    using Get = PROC(WINAPI*)(LPCSTR);
    using Current = HGLRC(WINAPI*)();
    const auto get = reinterpret_cast<Get>(GetProcAddress(library, "wglGetProcAddress"));
    const auto current = reinterpret_cast<Current>(GetProcAddress(library, "wglGetCurrentContext"));
    if (!get || !current || !current())
        return nullptr;
    PROC found = get(name);
    const auto number = reinterpret_cast<std::intptr_t>(found); // some drivers answer small numbers for "unknown"
    if (number >= -1 && number <= 3)
        found = GetProcAddress(library, name);
    return reinterpret_cast<void*>(found);
}
} // namespace vx::platform
