// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"
#include "base/BArray.h"
#include "base/BString.h"

#include <cstdint>

/// @file
/// Hash maps of the three kinds the library uses. Open addressing over flat arrays; iteration goes in order of
/// insertion, so nothing that walks a map depends on addresses or on the hash.

template <class Key>
struct BMapHash;
template <>
struct BMapHash<std::int64_t>
{
    static std::uint64_t Of(std::int64_t key)
    {
        std::uint64_t h = std::uint64_t(key) * 0x9E3779B97F4A7C15ull;
        return h ^ (h >> 32);
    }
};
template <>
struct BMapHash<const void*>
{
    static std::uint64_t Of(const void* key) { return BMapHash<std::int64_t>::Of(std::int64_t(std::uintptr_t(key))); }
};
template <>
struct BMapHash<BString>
{
    static FENWICK_EXPORT std::uint64_t Of(const BString& key); ///< FNV-1a, the same on every machine
};

/// The common part of the maps. Entries keep their order of insertion; removing one moves none (its slot stays as a
/// gap until the next growth).
template <class Key, class Value>
class BMap
{
public:
    struct Entry
    {
        Key key;
        Value value;
        bool used = true;
    };

    /// @param tableSize expected number of entries  @param blockSize entries to grow by at least
    explicit BMap(std::int64_t tableSize = 10, std::int64_t blockSize = 17) : mEntries(tableSize, blockSize) {}

    std::int64_t Count() const { return mEntries.Count() - mGaps; }
    bool IsEmpty() const { return Count() == 0; }
    std::size_t MemoryUsed() const ///< bytes, capacities included
    {
        return std::size_t(mEntries.Capacity()) * sizeof(Entry) + std::size_t(mSlots.Capacity()) * sizeof(std::int32_t);
    }

    /// Sets or replaces. False when memory ran out; the map is then empty.
    bool Set(const Key& key, const Value& value)
    {
        if (Entry* const entry = FindEntry(key))
        {
            entry->value = value;
            return true;
        }
        Entry added{key, value, true}; // before entries move, since key and value may be references into the map
        if ((mEntries.Count() + 1) * 2 > mSlots.Count() && !Rehash())
            return false;
        if (!mEntries.Append(std::move(added)))
        {
            Empty();
            return false;
        }
        PutSlot(mEntries.Count() - 1);
        return true;
    }

    Value* Find(const Key& key)
    {
        Entry* const entry = FindEntry(key);
        return entry ? &entry->value : nullptr;
    }
    const Value* Find(const Key& key) const { return const_cast<BMap*>(this)->Find(key); }
    bool Contains(const Key& key) const { return Find(key) != nullptr; }

    /// The value, or `otherwise` when the key is absent.
    Value Get(const Key& key, Value otherwise = Value()) const
    {
        const Value* const found = Find(key);
        return found ? *found : otherwise;
    }

    bool Remove(const Key& key)
    {
        Entry* const entry = FindEntry(key);
        if (!entry)
            return false;
        entry->used = false; // the slot keeps pointing here, so that probing goes on past it
        ++mGaps;
        return true;
    }

    void Empty()
    {
        mEntries.Empty();
        mSlots.Empty();
        mGaps = 0;
    }

    /// Calls visit(key, value) for each entry in order of insertion.
    template <class Visit>
    void ForEach(Visit visit) const
    {
        for (const Entry& entry : mEntries)
            if (entry.used)
                visit(entry.key, entry.value);
    }

private:
    Entry* FindEntry(const Key& key)
    {
        if (mSlots.IsEmpty())
            return nullptr;
        const std::uint64_t mask = std::uint64_t(mSlots.Count()) - 1;
        for (std::uint64_t slot = BMapHash<Key>::Of(key) & mask;; slot = (slot + 1) & mask)
        {
            const std::int32_t at = mSlots.Data()[slot];
            if (at < 0)
                return nullptr;
            Entry& entry = mEntries.Data()[at];
            if (entry.used && entry.key == key)
                return &entry;
        }
    }

    void PutSlot(std::int64_t at)
    {
        const std::uint64_t mask = std::uint64_t(mSlots.Count()) - 1;
        std::uint64_t slot = BMapHash<Key>::Of(mEntries.Data()[at].key) & mask;
        while (mSlots.Data()[slot] >= 0)
            slot = (slot + 1) & mask;
        mSlots.Data()[slot] = std::int32_t(at);
    }

    /// Closes the gaps and doubles the table when it is more than a quarter full.
    bool Rehash()
    {
        if (mGaps > 0)
        {
            std::int64_t kept = 0;
            for (std::int64_t i = 0; i < mEntries.Count(); ++i)
                if (mEntries[i].used)
                {
                    if (kept != i)
                        mEntries[kept] = std::move(mEntries[i]);
                    ++kept;
                }
            while (mEntries.Count() > kept)
                mEntries.RemoveAt(mEntries.Count() - 1);
            mGaps = 0;
        }
        std::int64_t size = std::max<std::int64_t>(mSlots.Count(), 32);
        while ((mEntries.Count() + 1) * 4 > size)
            size *= 2;
        if (!mSlots.SetCountForWriting(size))
        {
            Empty();
            return false;
        }
        std::fill(mSlots.begin(), mSlots.end(), -1);
        for (std::int64_t i = 0; i < mEntries.Count(); ++i)
            PutSlot(i);
        return true;
    }

    BArray<Entry> mEntries;
    BArray<std::int32_t> mSlots; ///< power of two many; index into mEntries or -1
    std::int64_t mGaps = 0;      ///< removed entries still in mEntries
};

using BMapIntToInt = BMap<std::int64_t, std::int64_t>;
using BMapPtrToPtr = BMap<const void*, void*>;
using BMapStringToPtr = BMap<BString, void*>;
