// FenwickBase: foundation of the VelmarBase project.
#include "base/MEM.h"
#include "base/platform/Platform.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <cstring>

namespace
{
// From this size on storage comes in pages straight from the system: aligned to huge pages, zero without being written,
// and grown by moving page tables. Below it the C library's allocator is faster.
#if defined(__SANITIZE_ADDRESS__)
// Only what the C library hands out is watched for overruns, and it stops the program when asked for more than this.
constexpr std::size_t kPagesFrom = SIZE_MAX;
constexpr std::size_t kMostBytes = std::size_t(1) << 38;
#else
constexpr std::size_t kPagesFrom = std::size_t(4) << 20;
constexpr std::size_t kMostBytes = PTRDIFF_MAX / 2;
#endif

constexpr std::uint64_t kMagic = 0x656C646E61484D46; // "FMHandle" in a little-endian dump
constexpr std::uint64_t kDeadMagic = 0x6465657246484D46;

// Lies in front of the payload.
struct alignas(64) Header
{
    std::uint64_t magic;
    std::size_t entrySize;
    std::size_t count;
    std::size_t capacity;
    std::size_t dirty;     // entries from here on are known to be zero, because nobody has had them yet
    std::size_t bytes;     // of the block, this header included
    std::uint64_t growths; // how often the storage was enlarged
};
static_assert(sizeof(Header) == 64, "the payload behind it is aligned to 64 bytes");

std::atomic<std::int64_t> gFailAfter{0};
std::atomic<bool> gAllocationFailed{false};

Header* HeaderOf(void* handle)
{
    Header* const header = static_cast<Header*>(handle) - 1;
    assert(header->magic == kMagic && "not a memory handle, or one that was freed");
    return header;
}

const Header* HeaderOf(const void* handle) { return HeaderOf(const_cast<void*>(handle)); }

char* Payload(Header* header) { return reinterpret_cast<char*>(header + 1); }

// True when the test seam wants this allocation to fail.
bool MustFail()
{
    std::int64_t left = gFailAfter.load(std::memory_order_relaxed);
    while (left > 0)
        if (gFailAfter.compare_exchange_weak(left, left - 1, std::memory_order_relaxed))
            return left == 1;
    return false;
}

void* AllocBlock(std::size_t bytes)
{
    if (bytes > kMostBytes)
        return nullptr;
    return bytes >= kPagesFrom ? vx::platform::AllocPages(bytes) : vx::platform::AllocAligned(bytes);
}

void FreeBlock(void* block, std::size_t bytes)
{
    if (bytes >= kPagesFrom)
        vx::platform::FreePages(block, bytes);
    else
        vx::platform::FreeAligned(block);
}

// Bytes of a block for that many entries; 0 when they do not fit into the address space.
std::size_t BlockBytes(std::size_t entrySize, std::size_t capacity)
{
    if (capacity > (kMostBytes - sizeof(Header)) / entrySize)
        return 0;
    return sizeof(Header) + entrySize * capacity;
}

// A block with room for `capacity` entries and a count of 0.
Header* NewHandle(std::size_t entrySize, std::size_t capacity)
{
    if (entrySize == 0)
        return nullptr;
    const std::size_t bytes = BlockBytes(entrySize, capacity);
    void* const block = bytes == 0 || MustFail() ? nullptr : AllocBlock(bytes);
    if (!block)
        return nullptr;
    Header* const header = static_cast<Header*>(block);
    *header = {kMagic, entrySize, 0, capacity, bytes >= kPagesFrom ? 0 : capacity, bytes, 0};
    return header;
}

void FreeHandle(Header* header)
{
    header->magic = kDeadMagic;
    FreeBlock(header, header->bytes);
}

// The same entries in a block of another capacity, which is not below the count. Null on failure, and then nothing has
// changed.
Header* MoveHandle(Header* header, std::size_t capacity)
{
    const std::size_t bytes = BlockBytes(header->entrySize, capacity);
    if (bytes == 0)
        return nullptr;
    if (header->bytes >= kPagesFrom && bytes >= kPagesFrom)
    {
        if (MustFail())
            return nullptr;
        if (void* const moved = vx::platform::ResizePages(header, header->bytes, bytes))
        {
            header = static_cast<Header*>(moved);
            header->capacity = capacity;
            header->bytes = bytes; // dirty stays: the rest of a cut page still holds what lay there
            return header;
        }
        void* const block = AllocBlock(bytes);
        if (!block)
            return nullptr;
        Header* const fresh = static_cast<Header*>(block);
        std::memcpy(fresh, header, sizeof(Header) + header->count * header->entrySize);
        fresh->capacity = capacity;
        fresh->dirty = header->count;
        fresh->bytes = bytes;
        FreeHandle(header);
        return fresh;
    }
    Header* const fresh = NewHandle(header->entrySize, capacity);
    if (!fresh)
        return nullptr;
    std::memcpy(Payload(fresh), Payload(header), header->count * header->entrySize);
    fresh->count = header->count;
    fresh->dirty = std::max(fresh->dirty, fresh->count);
    fresh->growths = header->growths;
    FreeHandle(header);
    return fresh;
}

// Half as much again, so that appending stays linear; at least a cache line's worth.
std::size_t GeometricCapacity(const Header* header, std::size_t needed)
{
    const std::size_t line = std::max<std::size_t>(64 / header->entrySize, 1);
    return std::max(needed, header->capacity + std::max(header->capacity / 2, line));
}

Header* GrowHandle(Header* header, std::size_t capacity)
{
    Header* const grown = MoveHandle(header, capacity);
    if (grown)
        ++grown->growths;
    return grown;
}

void SetCount(Header* header, std::size_t count)
{
    header->count = count;
    header->dirty = std::max(header->dirty, count);
}
} // namespace

void* MEM_Alloc(std::size_t entrySize, std::size_t count)
{
    Header* const header = NewHandle(entrySize, count);
    if (!header)
        return nullptr;
    SetCount(header, count);
    return Payload(header);
}

void* MEM_Calloc(std::size_t entrySize, std::size_t count)
{
    Header* const header = NewHandle(entrySize, count);
    if (!header)
        return nullptr;
    std::memset(Payload(header), 0, std::min(count, header->dirty) * entrySize);
    SetCount(header, count);
    return Payload(header);
}

void* MEM_Resize(void* handle, std::size_t count)
{
    if (!handle)
        return nullptr;
    Header* header = HeaderOf(handle);
    if (count > header->capacity)
    {
        // Most arrays are sized twice in their life, once when made and once when their final size is known; only those
        // that go on growing get room to spare.
        header = GrowHandle(header, header->growths == 0 ? count : GeometricCapacity(header, count));
        if (!header)
            return nullptr;
    }
    const std::size_t unclean = std::min(count, header->dirty);
    if (unclean > header->count)
        std::memset(Payload(header) + header->count * header->entrySize, 0,
                    (unclean - header->count) * header->entrySize);
    SetCount(header, count);
    return Payload(header);
}

void* MEM_Reserve(void* handle, std::size_t capacity)
{
    if (!handle)
        return nullptr;
    Header* header = HeaderOf(handle);
    if (capacity > header->capacity)
        header = GrowHandle(header, capacity);
    return header ? Payload(header) : nullptr;
}

bool MEM_SetCount(void* handle, std::size_t count)
{
    if (!handle || count > HeaderOf(handle)->capacity)
        return false;
    SetCount(HeaderOf(handle), count);
    return true;
}

void* MEM_Append(void* handle, const void* entries, std::size_t count)
{
    if (!handle)
        return nullptr;
    Header* header = HeaderOf(handle);
    if (count > SIZE_MAX - header->count)
        return nullptr;
    const std::size_t total = header->count + count;
    if (total > header->capacity)
    {
        // The entries may be the handle's own, and growing moves those.
        const char* const from = static_cast<const char*>(entries);
        const char* const first = Payload(header);
        const bool own = from >= first && from < first + header->count * header->entrySize;
        const std::size_t offset = own ? std::size_t(from - first) : 0;
        header = GrowHandle(header, GeometricCapacity(header, total));
        if (!header)
            return nullptr;
        if (own)
            entries = Payload(header) + offset;
    }
    if (count > 0)
        std::memcpy(Payload(header) + header->count * header->entrySize, entries, count * header->entrySize);
    SetCount(header, total);
    return Payload(header);
}

void* MEM_Copy(const void* handle)
{
    if (!handle)
        return nullptr;
    const Header* const header = HeaderOf(handle);
    void* const copy = MEM_Alloc(header->entrySize, header->count);
    if (copy)
        std::memcpy(copy, handle, header->count * header->entrySize);
    return copy;
}

void* MEM_Trim(void* handle)
{
    if (!handle)
        return nullptr;
    Header* const header = HeaderOf(handle);
    if (header->count == header->capacity)
        return handle;
    Header* const trimmed = MoveHandle(header, header->count);
    return trimmed ? Payload(trimmed) : handle;
}

std::size_t MEM_TotalSize(const void* handle)
{
    return handle ? HeaderOf(handle)->count * HeaderOf(handle)->entrySize : 0;
}

std::size_t MEM_Count(const void* handle) { return handle ? HeaderOf(handle)->count : 0; }

std::size_t MEM_Capacity(const void* handle) { return handle ? HeaderOf(handle)->capacity : 0; }

std::size_t MEM_EntrySize(const void* handle) { return handle ? HeaderOf(handle)->entrySize : 0; }

void MEM_Empty(void* handle)
{
    if (handle)
        HeaderOf(handle)->count = 0;
}

void MEM_Free(void* handle)
{
    if (handle)
        FreeHandle(HeaderOf(handle));
}

void MEM_FailAfter(std::int64_t n) { gFailAfter.store(std::max<std::int64_t>(n, 0), std::memory_order_relaxed); }

void* MEM_RawAlloc(std::size_t bytes) { return MustFail() ? nullptr : AllocBlock(std::max<std::size_t>(bytes, 1)); }

void MEM_RawFree(void* storage, std::size_t bytes)
{
    if (storage)
        FreeBlock(storage, std::max<std::size_t>(bytes, 1));
}

bool MEM_AllocationFailed() { return gAllocationFailed.load(std::memory_order_relaxed); }

void MEM_SetAllocationFailed(bool failed) { gAllocationFailed.store(failed, std::memory_order_relaxed); }
