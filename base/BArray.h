// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "base/MEM.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

/// A growing contiguous array of any T that never throws.
///
/// Growth is geometric, with the growth step as a minimum. When memory fails the array is released and left empty, as
/// every list of the library promises: the entries are lost (entries that are pointers are not deleted), and the
/// operation says so with false. T's own constructors must not throw.
template <class T>
class BArray
{
public:
    explicit BArray(std::int64_t initialCapacity = 8, std::int64_t growthStep = 4)
        : mInitialCapacity(initialCapacity), mGrowthStep(std::max<std::int64_t>(growthStep, 1))
    {
    }
    BArray(const BArray& other) : BArray(other.mInitialCapacity, other.mGrowthStep)
    {
        Assign(other.mData, other.mCount);
    }
    BArray(BArray&& other) noexcept : BArray(other.mInitialCapacity, other.mGrowthStep) { Swap(other); }
    BArray& operator=(const BArray& other)
    {
        if (this != &other)
            Assign(other.mData, other.mCount);
        return *this;
    }
    BArray& operator=(BArray&& other) noexcept
    {
        Swap(other);
        return *this;
    }
    ~BArray() { Release(); }

    // --- Reading
    std::int64_t Count() const { return mCount; }
    std::int64_t Capacity() const { return mCapacity; }
    bool IsEmpty() const { return mCount == 0; }
    T* Data() { return mData; }
    const T* Data() const { return mData; }
    T& operator[](std::int64_t i)
    {
        assert(i >= 0 && i < mCount);
        return mData[i];
    }
    const T& operator[](std::int64_t i) const
    {
        assert(i >= 0 && i < mCount);
        return mData[i];
    }
    T* Begin() { return mData; }
    T* End() { return mData + mCount; }
    const T* Begin() const { return mData; }
    const T* End() const { return mData + mCount; }
    T* begin() { return mData; }
    T* end() { return mData + mCount; }
    const T* begin() const { return mData; }
    const T* end() const { return mData + mCount; }

    /// Index of the first entry equal to `value`, -1 when there is none.
    std::int64_t Find(const T& value) const
    {
        const T* const found = std::find(begin(), end(), value);
        return found == end() ? -1 : found - mData;
    }

    // --- Growing: false when memory ran out, and then the array is empty

    bool Append(const T& value)
    {
        if (mCount == mCapacity)
            return Insert(mCount, value);
        ::new (static_cast<void*>(mData + mCount)) T(value);
        ++mCount;
        return true;
    }
    bool Append(T&& value)
    {
        if (mCount == mCapacity)
            return Insert(mCount, std::move(value));
        ::new (static_cast<void*>(mData + mCount)) T(std::move(value));
        ++mCount;
        return true;
    }

    /// As Append, but when memory fails the entries stay: for lists whose loss would leave links dangling.
    bool AppendOrKeep(const T& value)
    {
        if (mCount == mCapacity && !Reallocate(GrownCapacity(mCount + 1), true))
            return false;
        return Append(value);
    }

    /// Inserts before `at` (0 .. Count()).
    bool Insert(std::int64_t at, T value)
    {
        assert(at >= 0 && at <= mCount);
        if (mCount == mCapacity && !Grow(mCount + 1))
            return false;
        ::new (static_cast<void*>(mData + mCount)) T(std::move(value));
        ++mCount;
        std::rotate(mData + at, mData + mCount - 1, mData + mCount);
        return true;
    }

    /// Exactly `count` entries; new ones are value-initialised.
    bool SetCount(std::int64_t count)
    {
        if (count > mCapacity && !Grow(count))
            return false;
        if (count > mCount)
            std::uninitialized_value_construct(mData + mCount, mData + count);
        else
            std::destroy(mData + count, mData + mCount);
        mCount = count;
        return true;
    }

    /// Exactly `count` entries of a trivial T whose values are left unset: for arrays about to be written in full.
    bool SetCountForWriting(std::int64_t count)
    {
        static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);
        if (count > mCapacity && !Reserve(count))
            return false;
        mCount = count;
        return true;
    }

    /// Makes the count larger by `count` and returns where those entries lie: raw storage in which the caller must
    /// construct every one of them. Null when memory ran out.
    T* AppendRaw(std::int64_t count)
    {
        if (mCount + count > mCapacity && !Grow(mCount + count))
            return nullptr;
        T* const first = mData + mCount;
        mCount += count;
        return first;
    }

    /// Room for at least `capacity` entries, exactly as much as asked for.
    bool Reserve(std::int64_t capacity) { return capacity <= mCapacity || Reallocate(capacity); }

    /// Replaces the contents by `count` copies from `from`, which must not lie inside this array.
    bool Assign(const T* from, std::int64_t count)
    {
        Empty();
        if (!Reserve(count))
            return false;
        std::uninitialized_copy(from, from + count, mData);
        mCount = count;
        return true;
    }

    // --- Shrinking
    void Empty() ///< count 0, storage kept
    {
        std::destroy(mData, mData + mCount);
        mCount = 0;
    }
    void Release() ///< count 0, storage given back
    {
        Empty();
        MEM_RawFree(mData, std::size_t(mCapacity) * kEntryBytes);
        mData = nullptr;
        mCapacity = 0;
    }
    void Trim() ///< gives back storage beyond the count; keeps it when that needs memory that is not there
    {
        if (mCount == 0)
            Release();
        else if (mCount < mCapacity)
            Reallocate(mCount, true);
    }

    /// Removes one entry, keeping the order; gives storage back when the count falls below half the capacity.
    void RemoveAt(std::int64_t at)
    {
        assert(at >= 0 && at < mCount);
        std::move(mData + at + 1, mData + mCount, mData + at);
        std::destroy_at(mData + --mCount);
        if (mCount < mCapacity / 2 && mCapacity > mInitialCapacity)
            Reallocate(std::max(mCount, mInitialCapacity), true);
    }

    /// Removes the first entry equal to `value`; false when there is none.
    bool Remove(const T& value)
    {
        const std::int64_t at = Find(value);
        if (at < 0)
            return false;
        RemoveAt(at);
        return true;
    }

    void Swap(BArray& other) noexcept
    {
        std::swap(mData, other.mData);
        std::swap(mCount, other.mCount);
        std::swap(mCapacity, other.mCapacity);
        std::swap(mInitialCapacity, other.mInitialCapacity);
        std::swap(mGrowthStep, other.mGrowthStep);
    }

private:
    std::int64_t GrownCapacity(std::int64_t needed) const
    {
        const std::int64_t first = mCapacity == 0 ? mInitialCapacity : 0;
        return std::max({needed, first, mCapacity + std::max(mGrowthStep, mCapacity / 2)});
    }
    bool Grow(std::int64_t needed) { return Reallocate(GrownCapacity(needed)); }

    bool Reallocate(std::int64_t capacity, bool keepOnFailure = false)
    {
        const bool fits = std::uint64_t(capacity) <= std::uint64_t(INT64_MAX) / kEntryBytes;
        T* const fresh = fits ? static_cast<T*>(MEM_RawAlloc(std::size_t(capacity) * kEntryBytes)) : nullptr;
        if (!fresh)
        {
            if (!keepOnFailure)
                Release();
            return false;
        }
        const std::int64_t count = mCount;
        if constexpr (std::is_trivially_copyable_v<T>)
        {
            if (count > 0)
                std::memcpy(static_cast<void*>(fresh), static_cast<const void*>(mData),
                            std::size_t(count) * kEntryBytes);
        }
        else
            std::uninitialized_move(mData, mData + count, fresh);
        Release();
        mData = fresh;
        mCount = count;
        mCapacity = capacity;
        return true;
    }

    static constexpr std::size_t kEntryBytes =
        sizeof(T); // NOLINT(bugprone-sizeof-expression): T may be a pointer itself

    T* mData = nullptr;
    std::int64_t mCount = 0;
    std::int64_t mCapacity = 0;
    std::int64_t mInitialCapacity;
    std::int64_t mGrowthStep;
};
