// FenwickBase: foundation of the VelmarBase project.
#include "base/platform/Platform.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <new>

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#if defined(__linux__)
#include <sys/random.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#endif

namespace vx::platform
{
namespace
{
constexpr std::size_t kHugePage = std::size_t(2) << 20;
constexpr std::size_t kCacheLine = 64;
// A single call moves at most about 2 GiB on Linux and refuses more than INT_MAX elsewhere.
constexpr std::size_t kLargestTransfer = std::size_t(1) << 30;

std::size_t PageSize()
{
    static const std::size_t size = std::size_t(sysconf(_SC_PAGESIZE));
    return size;
}

std::size_t RoundUp(std::size_t value, std::size_t unit) { return (value + unit - 1) / unit * unit; }
} // namespace

// The system aligns mappings to small pages only, so one huge page more is mapped and the ends are given back.
void* AllocPages(std::size_t bytes)
{
    const std::size_t length = RoundUp(bytes, PageSize());
    const std::size_t mapped = length + kHugePage;
    if (mapped < bytes)
        return nullptr;
    void* const area = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (area == MAP_FAILED)
        return nullptr;
    char* const start = static_cast<char*>(area);
    const std::size_t head = (kHugePage - reinterpret_cast<std::uintptr_t>(start) % kHugePage) % kHugePage;
    char* const aligned = start + head;
    if (head > 0)
        munmap(start, head);
    munmap(aligned + length, kHugePage - head);
#if defined(MADV_HUGEPAGE)
    madvise(aligned, length, MADV_HUGEPAGE); // advice: where it is refused, small pages do
#endif
    return aligned;
}

// Page tables are moved instead of bytes. A block that cannot grow where it lies goes to a fresh aligned place, because
// a moved mapping would otherwise lose its alignment, and with it the huge pages.
void* ResizePages(void* pages, std::size_t oldBytes, std::size_t newBytes)
{
#if defined(__linux__)
    const std::size_t oldLength = RoundUp(oldBytes, PageSize()), newLength = RoundUp(newBytes, PageSize());
    if (newLength < newBytes)
        return nullptr;
    if (mremap(pages, oldLength, newLength, 0) != MAP_FAILED)
        return pages;
    void* const place = AllocPages(newBytes);
    if (!place)
        return nullptr;
    if (mremap(pages, oldLength, newLength, MREMAP_MAYMOVE | MREMAP_FIXED, place) != MAP_FAILED)
        return place;
    FreePages(place, newBytes);
#else
    (void)pages, (void)oldBytes, (void)newBytes;
#endif
    return nullptr;
}

void FreePages(void* pages, std::size_t bytes) { munmap(pages, RoundUp(bytes, PageSize())); }

void* AllocAligned(std::size_t bytes)
{
    return bytes > SIZE_MAX - kCacheLine ? nullptr : std::aligned_alloc(kCacheLine, RoundUp(bytes, kCacheLine));
}

void FreeAligned(void* storage) { std::free(storage); }

struct Mutex
{
    pthread_mutex_t mutex;
};

Mutex* NewMutex()
{
    Mutex* const made = new (std::nothrow) Mutex;
    if (!made)
        return nullptr;
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    const int failed = pthread_mutex_init(&made->mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    if (!failed)
        return made;
    delete made;
    return nullptr;
}

void DeleteMutex(Mutex* mutex)
{
    pthread_mutex_destroy(&mutex->mutex);
    delete mutex;
}

void LockMutex(Mutex* mutex) { pthread_mutex_lock(&mutex->mutex); }

bool TryLockMutex(Mutex* mutex) { return pthread_mutex_trylock(&mutex->mutex) == 0; }

void UnlockMutex(Mutex* mutex) { pthread_mutex_unlock(&mutex->mutex); }

struct Thread
{
    pthread_t thread;
    void (*entry)(void*);
    void* argument;
    bool lowPriority;
};

static void* ThreadMain(void* self)
{
    const Thread* const thread = static_cast<const Thread*>(self);
#if defined(__linux__)
    if (thread->lowPriority) // Linux keeps the nice value for each thread
        setpriority(PRIO_PROCESS, id_t(syscall(SYS_gettid)), 10);
#endif
    thread->entry(thread->argument);
    return nullptr;
}

Thread* StartThread(void (*entry)(void*), void* argument, std::size_t stackSize, bool lowPriority)
{
    Thread* const made = new (std::nothrow) Thread{{}, entry, argument, lowPriority};
    if (!made)
        return nullptr;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    bool started = true;
    if (stackSize > 0)
    {
        const std::size_t least = std::max(stackSize, std::size_t(PTHREAD_STACK_MIN));
        started =
            least <= SIZE_MAX - PageSize() && pthread_attr_setstacksize(&attributes, RoundUp(least, PageSize())) == 0;
    }
    started = started && pthread_create(&made->thread, &attributes, ThreadMain, made) == 0;
    pthread_attr_destroy(&attributes);
    if (started)
        return made;
    delete made;
    return nullptr;
}

void JoinThread(Thread* thread)
{
    pthread_join(thread->thread, nullptr);
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
    int flags = O_CLOEXEC;
    switch (access)
    {
    case FileAccess::Read:
        flags |= O_RDONLY;
        break;
    case FileAccess::Truncate:
        flags |= O_WRONLY | O_CREAT | O_TRUNC;
        break;
    case FileAccess::Append:
        flags |= O_WRONLY | O_CREAT | O_APPEND;
        break;
    case FileAccess::Create:
        flags |= O_WRONLY | O_CREAT | O_EXCL;
        break;
    }
    int file;
    do
        file = open(path.c_str(), flags, 0666);
    while (file < 0 && errno == EINTR);
    error = file < 0 ? errno : 0;
    return file;
}

bool InspectFile(int file, FileInfo& info)
{
    struct stat status;
    if (fstat(file, &status) != 0)
        return false;
    info.bytes = status.st_size;
    info.isRegular = S_ISREG(status.st_mode);
    info.isFolder = S_ISDIR(status.st_mode);
    return true;
}

std::int64_t ReadFile(int file, void* out, std::size_t bytes, int& error)
{
    for (;;)
    {
        const ssize_t got = read(file, out, std::min(bytes, kLargestTransfer));
        if (got >= 0)
            return got;
        if (errno != EINTR)
            break;
    }
    error = errno;
    return -1;
}

bool WriteFile(int file, const void* from, std::size_t bytes, int& error)
{
    for (const char* at = static_cast<const char*>(from); bytes > 0;)
    {
        const ssize_t written = write(file, at, std::min(bytes, kLargestTransfer));
        if (written < 0 && errno != EINTR)
        {
            error = errno;
            return false;
        }
        const std::size_t done = written < 0 ? 0 : std::size_t(written);
        at += done;
        bytes -= done;
    }
    return true;
}

bool CloseFile(int file, int& error)
{
    // Interrupted or not, the descriptor is gone afterwards on Linux; closing it again could hit another thread's file.
    if (close(file) == 0 || errno == EINTR)
        return true;
    error = errno;
    return false;
}

bool MayWrite(const std::filesystem::path& path, int& error)
{
    if (access(path.c_str(), W_OK) == 0)
        return true;
    error = errno;
    return false;
}

void CopyAccessRights(int file, const std::filesystem::path& path)
{
    struct stat status;
    if (stat(path.c_str(), &status) == 0)
        (void)!fchmod(file, status.st_mode & 07777); // the default rights are good enough where this is refused
}

bool RenameOver(const std::filesystem::path& from, const std::filesystem::path& to, int& error)
{
    if (std::rename(from.c_str(), to.c_str()) == 0)
        return true;
    error = errno;
    return false;
}

bool RandomBytes(void* out, std::size_t bytes)
{
#if defined(__linux__)
    for (char* at = static_cast<char*>(out); bytes > 0;)
    {
        const ssize_t got = getrandom(at, bytes, 0);
        if (got < 0 && errno != EINTR)
            return false;
        const std::size_t done = got < 0 ? 0 : std::size_t(got);
        at += done;
        bytes -= done;
    }
    return true;
#else
    arc4random_buf(out, bytes);
    return true;
#endif
}

std::int64_t Milliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

bool ErrorsGoToTerminal() { return isatty(STDERR_FILENO) == 1; }

// The window-system libraries are those that the program has loaded for the context it made; this one links none.
static void* FindThrough(const char* library, const char* currentContext, const char* getAddress, const char* name)
{
    void* const loaded = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
    if (!loaded)
        return nullptr;
    const auto current = reinterpret_cast<void* (*)()>(dlsym(loaded, currentContext));
    const auto get = reinterpret_cast<void* (*)(const char*)>(dlsym(loaded, getAddress));
    void* found = nullptr;
    if (current && get && current())
    {
        found = get(name);
        if (!found)
            found = dlsym(loaded, name);
    }
    dlclose(loaded);
    return found;
}

void* FindGLFunction(const char* name)
{
    if (void* const found = FindThrough("libEGL.so.1", "eglGetCurrentContext", "eglGetProcAddress", name))
        return found;
    if (void* const found = FindThrough("libGLX.so.0", "glXGetCurrentContext", "glXGetProcAddressARB", name))
        return found;
    return FindThrough("libGL.so.1", "glXGetCurrentContext", "glXGetProcAddressARB", name);
}
} // namespace vx::platform
