// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "base/MEM.h"

#include <cstdint>
#include <new>
#include <utility>

/// Storage for many small entries that must not move: entries are handed out one by one from blocks and given back all
/// at once. T must be trivial; entries come value-initialised.
template <class T>
class BPlex
{
public:
    explicit BPlex(std::int64_t blockSize = 1024) : mBlockSize(blockSize < 1 ? 1 : blockSize) {}
    ~BPlex() { FreeAll(); }
    BPlex(const BPlex&) = delete;
    BPlex& operator=(const BPlex&) = delete;
    BPlex(BPlex&& other) noexcept { Swap(other); }
    void Swap(BPlex& other) noexcept
    {
        std::swap(mLast, other.mLast);
        std::swap(mBlockSize, other.mBlockSize);
        std::swap(mCount, other.mCount);
        std::swap(mUsed, other.mUsed);
    }

    /// A new entry at an address that holds until FreeAll; null when memory ran out, and earlier entries still hold.
    T* New()
    {
        static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T> && alignof(T) <= kHeader);
        if (!mLast || mUsed == mBlockSize)
        {
            void* const storage = MEM_RawAlloc(BlockBytes());
            if (!storage)
                return nullptr;
            mLast = ::new (storage) Block{mLast};
            mUsed = 0;
        }
        ++mCount;
        char* const entries = reinterpret_cast<char*>(mLast) + kHeader;
        return ::new (static_cast<void*>(entries + std::size_t(mUsed++) * sizeof(T))) T();
    }
    std::int64_t Count() const { return mCount; }
    std::size_t MemoryUsed() const ///< bytes of all blocks
    {
        return mLast ? std::size_t((mCount + mBlockSize - 1) / mBlockSize) * BlockBytes() : 0;
    }
    void FreeAll()
    {
        while (mLast)
        {
            Block* const block = std::exchange(mLast, mLast->previous);
            MEM_RawFree(block, BlockBytes());
        }
        mCount = mUsed = 0;
    }

private:
    struct Block
    {
        Block* previous;
    };
    static constexpr std::size_t kHeader = 64; ///< the block's link, padded so that entries stay aligned

    std::size_t BlockBytes() const { return kHeader + std::size_t(mBlockSize) * sizeof(T); }

    Block* mLast = nullptr; ///< blocks form a list, newest first
    std::int64_t mBlockSize = 1024;
    std::int64_t mCount = 0;
    std::int64_t mUsed = 0; ///< entries handed out from the newest block
};
