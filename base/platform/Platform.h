// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>

/// @file
/// Everything the foundation asks of the operating system and that standard C++ does not offer. One file per system
/// implements it (Posix.cpp, Windows.cpp); no other file of the project calls the system directly.
namespace vx::platform
{
// --- Memory

/// Zeroed pages, aligned to huge pages and advised as such where the system can. Null on failure.
void* AllocPages(std::size_t bytes);
/// Changes the size of such a block without touching its contents, new bytes zero. The block may move. Null when the
/// system cannot do that; the block is then as it was.
void* ResizePages(void* pages, std::size_t oldBytes, std::size_t newBytes);
void FreePages(void* pages, std::size_t bytes);

void* AllocAligned(std::size_t bytes); ///< 64-byte aligned, unset; null on failure
void FreeAligned(void* storage);

// --- Threads

struct Mutex;
Mutex* NewMutex(); ///< recursive; null on failure
void DeleteMutex(Mutex* mutex);
void LockMutex(Mutex* mutex);
bool TryLockMutex(Mutex* mutex);
void UnlockMutex(Mutex* mutex); ///< the caller holds it

struct Thread;
/// Starts a thread in `entry(argument)`. @param stackSize bytes, 0 for the system's default; raised to its minimum
/// @return null when the thread could not be started
Thread* StartThread(void (*entry)(void*), void* argument, std::size_t stackSize, bool lowPriority);
void JoinThread(Thread* thread); ///< waits, then frees

/// A number that no other thread of this process has or will have; never 0.
std::uint64_t CurrentThreadNumber();

// --- Files: descriptors as the C library of the system hands out; errors are errno values

enum class FileAccess
{
    Read,
    Truncate, ///< created when missing
    Append,   ///< created when missing
    Create,   ///< must not exist
};

struct FileInfo
{
    std::int64_t bytes = 0;
    bool isRegular = false; ///< has a size and can be replaced; not a folder, pipe or device
    bool isFolder = false;
};

int OpenFile(const std::filesystem::path& path, FileAccess access, int& error); ///< -1 on failure
bool InspectFile(int file, FileInfo& info);
std::int64_t ReadFile(int file, void* out, std::size_t bytes, int& error); ///< -1 on failure, 0 at the end
bool WriteFile(int file, const void* from, std::size_t bytes, int& error); ///< all of them or false
bool CloseFile(int file, int& error);
bool MayWrite(const std::filesystem::path& path, int& error); ///< asks the system, changes nothing
/// Gives `file` the access rights of the file at `path`; nothing when there is none.
void CopyAccessRights(int file, const std::filesystem::path& path);
/// Renames, replacing what is there in one step.
bool RenameOver(const std::filesystem::path& from, const std::filesystem::path& to, int& error);

// --- Others

bool RandomBytes(void* out, std::size_t bytes); ///< from the system's generator; false when it has none
FENWICK_EXPORT std::int64_t Milliseconds();     ///< steadily rising; only differences mean something
FENWICK_EXPORT bool ErrorsGoToTerminal();       ///< standard error is read by somebody who sits before it

/// An OpenGL entry point for the context that is current on this thread, asked of whoever made that context (EGL, GLX,
/// WGL). Loads no library. Null without a context or for an unknown name; some systems hand out stubs for these too.
FENWICK_EXPORT void* FindGLFunction(const char* name);
} // namespace vx::platform
