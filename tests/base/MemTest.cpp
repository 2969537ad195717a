// Memory handles: a model of plain vectors, and what must hold when memory fails.
#include "base/MEM.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

namespace
{
constexpr std::size_t kLarge = std::size_t(4) << 20; // from here on storage comes in pages

// A handle and what it has to contain.
class Modelled
{
public:
    Modelled(std::size_t entrySize, std::size_t count) : mEntrySize(entrySize)
    {
        mHandle = MEM_Calloc(entrySize, count);
        mModel.resize(entrySize * count);
    }
    ~Modelled() { MEM_Free(mHandle); }
    Modelled(const Modelled&) = delete;
    Modelled& operator=(const Modelled&) = delete;

    void Resize(std::size_t count)
    {
        mHandle = MEM_Resize(mHandle, count);
        mModel.resize(count * mEntrySize);
    }
    void Append(std::size_t count, unsigned char value)
    {
        const std::vector<unsigned char> entries(count * mEntrySize, value);
        mHandle = MEM_Append(mHandle, entries.data(), count);
        mModel.insert(mModel.end(), entries.begin(), entries.end());
    }
    void Reserve(std::size_t capacity)
    {
        mHandle = MEM_Reserve(mHandle, capacity);
        EXPECT_GE(MEM_Capacity(mHandle), capacity);
    }
    void Trim()
    {
        mHandle = MEM_Trim(mHandle);
        EXPECT_EQ(MEM_Capacity(mHandle), MEM_Count(mHandle));
    }
    void Empty()
    {
        MEM_Empty(mHandle);
        mModel.clear();
    }
    void Copy()
    {
        void* const copy = MEM_Copy(mHandle);
        MEM_Free(mHandle);
        mHandle = copy;
    }
    void Scribble(unsigned char value) // so that storage given back and taken again is not zero by chance
    {
        std::memset(mHandle, value, MEM_TotalSize(mHandle));
        std::fill(mModel.begin(), mModel.end(), value);
    }

    void Check() const
    {
        ASSERT_NE(mHandle, nullptr);
        ASSERT_EQ(MEM_TotalSize(mHandle), mModel.size());
        EXPECT_EQ(MEM_EntrySize(mHandle), mEntrySize);
        EXPECT_EQ(MEM_Count(mHandle) * mEntrySize, mModel.size());
        EXPECT_GE(MEM_Capacity(mHandle), MEM_Count(mHandle));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(mHandle) % 64, 0u);
        EXPECT_TRUE(mModel.empty() || std::memcmp(mHandle, mModel.data(), mModel.size()) == 0);
    }

private:
    std::size_t mEntrySize;
    void* mHandle = nullptr;
    std::vector<unsigned char> mModel;
};

// No failure outlives a test.
class MemFailure : public testing::Test
{
protected:
    void TearDown() override { MEM_FailAfter(0); }
};
} // namespace

TEST(Mem, BehavesAsAVectorWhoseNewEntriesAreZero)
{
    std::mt19937 random(7);
    for (const std::size_t entrySize : {1, 12, 100})
        for (const std::size_t mostBytes : {std::size_t(600), 3 * kLarge})
        {
            SCOPED_TRACE(testing::Message() << entrySize << " bytes, up to " << mostBytes);
            const auto some = [&] { return random() % (mostBytes / entrySize); };
            Modelled array(entrySize, some());
            array.Check();
            for (int step = 0; step < 60; ++step)
            {
                const unsigned char value = std::uint8_t(random() | 1);
                switch (random() % 8)
                {
                case 0:
                    array.Append(some() / 4, value);
                    break;
                case 1:
                    array.Reserve(some());
                    break;
                case 2:
                    array.Trim();
                    break;
                case 3:
                    array.Empty();
                    break;
                case 4:
                    array.Copy();
                    break;
                case 5:
                    array.Scribble(value);
                    break;
                default:
                    array.Resize(some());
                    break;
                }
                array.Check();
                if (HasFailure())
                    FAIL() << "in step " << step;
            }
        }
}

// A cut of the mapping leaves the rest of its last page behind, which the next growth meets again.
TEST(Mem, EntriesBehindATrimAreZeroWhenTheyComeBack)
{
    Modelled array(1, 3 * kLarge);
    array.Scribble(0xEE);
    array.Resize(2 * kLarge + 100);
    array.Trim();
    array.Resize(3 * kLarge);
    array.Check();
}

TEST(Mem, AppendsItsOwnEntries)
{
    int* numbers = MEM_AllocArray<int>(3);
    for (int i = 0; i < 3; ++i)
        numbers[i] = i;
    for (int doubling = 0; doubling < 12; ++doubling)
        numbers = static_cast<int*>(MEM_Append(numbers, numbers, MEM_Count(numbers)));
    ASSERT_EQ(MEM_Count(numbers), 3u << 12);
    for (int i = 0; i < 3 << 12; ++i)
        ASSERT_EQ(numbers[i], i % 3);
    MEM_Free(numbers);
}

TEST(Mem, SizesExactlyFirstAndGrowsGeometricallyThen)
{
    float* values = MEM_CallocArray<float>(8);
    EXPECT_EQ(MEM_Capacity(values), 8u);
    ASSERT_TRUE(MEM_SizeArray(values, 1000));
    EXPECT_EQ(MEM_Capacity(values), 1000u);

    std::size_t moves = 0, capacity = MEM_Capacity(values);
    for (std::size_t count = 1001; count <= 100000; ++count)
    {
        ASSERT_TRUE(MEM_SizeArray(values, count));
        moves += MEM_Capacity(values) != capacity ? 1 : 0;
        capacity = MEM_Capacity(values);
    }
    EXPECT_LE(moves, 12u); // a factor of 100 in steps of a half: log(100) / log(1.5) = 11.4
    EXPECT_LE(capacity, 150000u);
    MEM_Release(values);
    EXPECT_EQ(values, nullptr);

    char* letters = nullptr;
    moves = 0;
    for (int i = 0; i < 100000; ++i)
    {
        capacity = MEM_Capacity(letters);
        ASSERT_TRUE(MEM_AppendEntry(letters, char(i)));
        moves += MEM_Capacity(letters) != capacity ? 1 : 0;
    }
    EXPECT_LE(moves, 20u);
    MEM_Release(letters);
}

TEST(Mem, SizingForWritingKeepsStorageThatSuffices)
{
    int* numbers = MEM_AllocArray<int>(100);
    int* const first = numbers;
    ASSERT_TRUE(MEM_SizeArrayForWriting(numbers, 50));
    ASSERT_TRUE(MEM_SizeArrayForWriting(numbers, 100));
    EXPECT_EQ(numbers, first);
    EXPECT_FALSE(MEM_SetCount(numbers, 101));
    EXPECT_EQ(MEM_Count(numbers), 100u);
    ASSERT_TRUE(MEM_SizeArrayForWriting(numbers, 5000));
    EXPECT_EQ(MEM_Count(numbers), 5000u);
    MEM_Free(numbers);
}

TEST(Mem, NullIsAnArrayOfNothing)
{
    EXPECT_EQ(MEM_Resize(nullptr, 4), nullptr);
    EXPECT_EQ(MEM_Append(nullptr, "abc", 3), nullptr);
    EXPECT_EQ(MEM_Copy(nullptr), nullptr);
    EXPECT_EQ(MEM_Trim(nullptr), nullptr);
    EXPECT_EQ(MEM_TotalSize(nullptr), 0u);
    MEM_Empty(nullptr);
    MEM_Free(nullptr);
}

TEST(Mem, SizesBeyondTheAddressSpaceGiveNull)
{
    EXPECT_EQ(MEM_Alloc(1, SIZE_MAX), nullptr);
    EXPECT_EQ(MEM_Alloc(SIZE_MAX, 2), nullptr);
    EXPECT_EQ(MEM_Calloc(std::size_t(1) << 33, std::size_t(1) << 33), nullptr); // the product wraps to 4
    int* numbers = MEM_CallocArray<int>(3);
    numbers[2] = 5;
    EXPECT_EQ(MEM_Resize(numbers, SIZE_MAX / 2), nullptr);
    EXPECT_EQ(MEM_Append(numbers, numbers, SIZE_MAX - 1), nullptr);
    EXPECT_EQ(MEM_Count(numbers), 3u);
    EXPECT_EQ(numbers[2], 5);
    MEM_Free(numbers);
}

TEST_F(MemFailure, LeavesTheHandleAsItWas)
{
    struct Row
    {
        const char* name;
        void* (*act)(void* handle, std::size_t count);
        bool answersNull;
    };
    const Row rows[] = {
        {"resize", [](void* handle, std::size_t count) { return MEM_Resize(handle, 2 * count); }, true},
        {"reserve", [](void* handle, std::size_t count) { return MEM_Reserve(handle, 2 * count); }, true},
        {"append", [](void* handle, std::size_t count) { return MEM_Append(handle, handle, count / 2 + 1); }, true},
        {"copy", [](void* handle, std::size_t) { return MEM_Copy(handle); }, true},
        {"trim", [](void* handle, std::size_t) { return MEM_Trim(handle); }, false},
    };
    for (const std::size_t count : {std::size_t(10), 2 * kLarge})
        for (const Row& row : rows)
        {
            SCOPED_TRACE(testing::Message() << row.name << " " << count);
            void* const handle = MEM_Alloc(1, count);
            std::memset(handle, 0x5A, count);
            MEM_Resize(handle, count - 1); // so that there is something to trim
            MEM_FailAfter(1);
            EXPECT_EQ(row.act(handle, count), row.answersNull ? nullptr : handle);
            MEM_FailAfter(0);
            ASSERT_EQ(MEM_Count(handle), count - 1);
            EXPECT_EQ(MEM_Capacity(handle), count);
            const std::vector<char> expected(count - 1, 0x5A);
            EXPECT_EQ(std::memcmp(handle, expected.data(), count - 1), 0);
            MEM_Free(handle);
        }
}

TEST_F(MemFailure, HitsExactlyTheOneThatWasAskedFor)
{
    MEM_FailAfter(3);
    bool failed[5];
    for (bool& each : failed)
    {
        void* const handle = MEM_Alloc(4, 4);
        each = !handle;
        MEM_Free(handle);
    }
    EXPECT_TRUE(!failed[0] && !failed[1] && failed[2] && !failed[3] && !failed[4]);
}
