// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

/// @file
/// Memory handles: arrays that know their own entry size, count and capacity.
///
/// A handle is a plain pointer to the first entry. The header with its sizes lies in front of it, so a handle is used
/// like any array and needs no wrapper type. Payloads are aligned to 64 bytes; handles of 4 MiB and more are aligned to
/// huge pages and advised as such, because touching fresh memory page by page is what dominates large meshes.
/// Every function accepts null. A pointer that did not come from here (an array that a host lends) must never be passed
/// to a function that changes or frees a handle; debug builds assert the header's magic number.
/// Not synchronised: one handle belongs to one thread at a time.

/// Uninitialised array of `count` entries of `entrySize` bytes. Null when memory ran out or the size overflows.
/// A handle with count 0 is valid and not null.
FENWICK_EXPORT void* MEM_Alloc(std::size_t entrySize, std::size_t count);

/// As MEM_Alloc, every byte zero.
FENWICK_EXPORT void* MEM_Calloc(std::size_t entrySize, std::size_t count);

/// Changes the count. Entries below the smaller count keep their bytes, new ones are zero. The first growth is exact,
/// later ones are geometric; storage is kept when the count shrinks. Returns the possibly moved handle; null when
/// memory ran out, and then the old handle is still valid and unchanged. Null stays null: its entry size is not known.
FENWICK_EXPORT void* MEM_Resize(void* handle, std::size_t count);

/// Makes room for at least `capacity` entries without changing the count, exactly as much as asked for. Returned value
/// as MEM_Resize.
FENWICK_EXPORT void* MEM_Reserve(void* handle, std::size_t capacity);

/// Changes the count within the capacity and leaves new entries as they are, for those who write them in full. False,
/// with nothing changed, when the capacity is too small or the handle null.
FENWICK_EXPORT bool MEM_SetCount(void* handle, std::size_t count);

/// Appends `count` entries read from `entries`, which may lie in the handle itself. Growth is geometric. Returned value
/// as MEM_Resize.
FENWICK_EXPORT void* MEM_Append(void* handle, const void* entries, std::size_t count);

/// A copy with the same entry size and count. Null for null, or when memory ran out.
FENWICK_EXPORT void* MEM_Copy(const void* handle);

/// Gives back storage beyond the count. Returns the possibly moved handle; never fails (keeps the storage instead).
FENWICK_EXPORT void* MEM_Trim(void* handle);

FENWICK_EXPORT std::size_t MEM_TotalSize(const void* handle); ///< bytes in use: entry size times count; 0 for null
FENWICK_EXPORT std::size_t MEM_Count(const void* handle);     ///< entries in use; 0 for null
FENWICK_EXPORT std::size_t MEM_Capacity(const void* handle);  ///< entries that fit without growing; 0 for null
FENWICK_EXPORT std::size_t MEM_EntrySize(const void* handle); ///< bytes per entry; 0 for null

FENWICK_EXPORT void MEM_Empty(void* handle); ///< count 0; the storage is kept
FENWICK_EXPORT void MEM_Free(void* handle);

/// Test seam: the n-th allocation from now on (1 is the next) fails once, in handles, arrays and maps alike.
/// 0 switches it off. Allocations are counted process-wide.
FENWICK_EXPORT void MEM_FailAfter(std::int64_t n);

/// Raw storage under BArray, the maps and the handles: 64-byte aligned, huge pages when large, null on failure.
FENWICK_EXPORT void* MEM_RawAlloc(std::size_t bytes);
FENWICK_EXPORT void MEM_RawFree(void* storage, std::size_t bytes);

/// The library-wide allocation-failure flag. Normal and crease passes raise it; whoever reports it to the user lowers
/// it.
FENWICK_EXPORT bool MEM_AllocationFailed();
FENWICK_EXPORT void MEM_SetAllocationFailed(bool failed);

// --- The same for typed arrays: what almost all code uses

/// Uninitialised array of `count` T; null when memory ran out.
template <class T>
T* MEM_AllocArray(std::size_t count)
{
    static_assert(std::is_trivially_copyable_v<T>, "handles are moved bytewise");
    return static_cast<T*>(MEM_Alloc(sizeof(T), count));
}

/// Zeroed array of `count` T; null when memory ran out.
template <class T>
T* MEM_CallocArray(std::size_t count)
{
    static_assert(std::is_trivially_copyable_v<T>, "handles are moved bytewise");
    return static_cast<T*>(MEM_Calloc(sizeof(T), count));
}

/// Gives `handle` the count, allocating it (zeroed) when it is null. False when memory ran out; `handle` is unchanged.
template <class T>
bool MEM_SizeArray(T*& handle, std::size_t count)
{
    void* const sized = handle ? MEM_Resize(handle, count) : MEM_Calloc(sizeof(T), count);
    if (!sized)
        return false;
    handle = static_cast<T*>(sized);
    return true;
}

/// Gives `handle` the count without keeping or clearing its entries: for arrays that are about to be written in full.
/// False when memory ran out; `handle` is unchanged.
template <class T>
bool MEM_SizeArrayForWriting(T*& handle, std::size_t count)
{
    static_assert(std::is_trivially_copyable_v<T>, "handles are moved bytewise");
    if (MEM_SetCount(handle, count))
        return true;
    T* const fresh = MEM_AllocArray<T>(count);
    if (!fresh)
        return false;
    MEM_Free(handle);
    handle = fresh;
    return true;
}

/// Appends one entry, allocating the array when it is null. False when memory ran out; `handle` is unchanged.
template <class T>
bool MEM_AppendEntry(T*& handle, const T& entry)
{
    void* base = handle;
    if (!base && !(base = MEM_Alloc(sizeof(T), 0)))
        return false;
    handle = static_cast<T*>(base);
    void* const grown = MEM_Append(handle, &entry, 1);
    if (!grown)
        return false;
    handle = static_cast<T*>(grown);
    return true;
}

/// Frees the array and forgets it.
template <class T>
void MEM_Release(T*& handle)
{
    MEM_Free(handle);
    handle = nullptr;
}
