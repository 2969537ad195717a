// Arrays, maps, bit arrays and block storage against the standard library's containers.
#include "base/BArray.h"
#include "base/BBitArray.h"
#include "base/BMap.h"
#include "base/BPlex.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace
{
// An entry that owns memory, so that a lost or doubled destructor shows; and knows how many of it are alive.
struct Counted
{
    Counted(int number = 0) : text(std::to_string(number) + " is longer than what fits inside") { ++alive; }
    Counted(const Counted& other) : text(other.text) { ++alive; }
    Counted(Counted&& other) noexcept : text(std::move(other.text)) { ++alive; }
    Counted& operator=(const Counted&) = default;
    Counted& operator=(Counted&&) = default;
    ~Counted() { --alive; }
    friend bool operator==(const Counted& a, const Counted& b) { return a.text == b.text; }

    std::string text;
    static inline int alive = 0;
};

template <class T>
void ChangeAtRandom(BArray<T>& array, std::vector<T>& model, std::mt19937& random)
{
    const int number = int(random() % 1000);
    const std::int64_t at = model.empty() ? 0 : std::int64_t(random() % model.size());
    switch (random() % 10)
    {
    case 0:
        array.Insert(at, T(number));
        model.insert(model.begin() + at, T(number));
        break;
    case 1:
    case 2:
        if (!model.empty())
        {
            array.RemoveAt(at);
            model.erase(model.begin() + at);
        }
        break;
    case 3:
        array.SetCount(at);
        model.resize(std::size_t(at));
        break;
    case 4:
        array.SetCount(array.Count() + 3);
        model.resize(model.size() + 3);
        break;
    case 5:
        array.Trim();
        break;
    default:
        array.Append(T(number));
        model.push_back(T(number));
        if (random() % 4 == 0) // an entry of the array itself, which growing moves
        {
            array.Append(array[0]);
            model.push_back(T(model[0]));
        }
        break;
    }
}

class ContainerFailure : public testing::Test
{
protected:
    void TearDown() override { MEM_FailAfter(0); }
};
} // namespace

TEST(Array, BehavesAsAVector)
{
    std::mt19937 random(1);
    {
        BArray<Counted> array(0, 1);
        BArray<int> numbers;
        std::vector<Counted> model;
        std::vector<int> numberModel;
        for (int step = 0; step < 3000; ++step)
        {
            ChangeAtRandom(array, model, random);
            ChangeAtRandom(numbers, numberModel, random);
            ASSERT_TRUE(std::equal(array.begin(), array.end(), model.begin(), model.end())) << step;
            ASSERT_TRUE(std::equal(numbers.begin(), numbers.end(), numberModel.begin(), numberModel.end())) << step;
        }
        BArray<Counted> copy = array, moved = std::move(array);
        EXPECT_TRUE(std::equal(copy.begin(), copy.end(), moved.begin(), moved.end()));
        EXPECT_TRUE(array.IsEmpty());
        copy = moved;
        moved = BArray<Counted>();
        EXPECT_TRUE(std::equal(copy.begin(), copy.end(), model.begin(), model.end()));
    }
    EXPECT_EQ(Counted::alive, 0);
}

TEST_F(ContainerFailure, EmptiesAnArrayAndLeaksNothing)
{
    struct Row
    {
        const char* name;
        bool (*act)(BArray<Counted>&);
    };
    const Row rows[] = {
        {"append", [](BArray<Counted>& array) { return array.Append(Counted(1)); }},
        {"insert", [](BArray<Counted>& array) { return array.Insert(0, Counted(1)); }},
        {"set count", [](BArray<Counted>& array) { return array.SetCount(100); }},
        {"reserve", [](BArray<Counted>& array) { return array.Reserve(100); }},
        {"append raw", [](BArray<Counted>& array) { return array.AppendRaw(100) != nullptr; }},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        BArray<Counted> array(8, 4);
        for (int i = 0; i < 8; ++i)
            array.Append(Counted(i));
        MEM_FailAfter(1);
        EXPECT_FALSE(row.act(array));
        MEM_FailAfter(0);
        EXPECT_TRUE(array.IsEmpty());
        EXPECT_EQ(array.Capacity(), 0);
        EXPECT_EQ(Counted::alive, 0);
        EXPECT_TRUE(array.Append(Counted(2))) << "usable again";
    }
    EXPECT_FALSE(BArray<double>().SetCount(INT64_MAX / 2)) << "a size that wraps";
}

TEST_F(ContainerFailure, SparesWhatAppendOrKeepHolds)
{
    BArray<int> numbers(2, 1);
    numbers.Append(1);
    numbers.Append(2);
    MEM_FailAfter(1);
    EXPECT_FALSE(numbers.AppendOrKeep(3));
    EXPECT_EQ(numbers.Count(), 2);
    EXPECT_TRUE(numbers.AppendOrKeep(3));
    EXPECT_EQ(numbers[2], 3);
}

TEST(Map, BehavesAsAMapAndWalksInOrderOfInsertion)
{
    std::mt19937 random(2);
    BMapIntToInt map;
    std::map<std::int64_t, std::int64_t> model;
    std::vector<std::int64_t> order;
    for (int step = 0; step < 20000; ++step)
    {
        const std::int64_t key = (std::int64_t(random() % 500) - 250) << (step % 3 * 16); // also far apart
        const bool known = model.count(key) > 0;
        if (random() % 3 == 0)
        {
            ASSERT_EQ(map.Remove(key), known);
            model.erase(key);
            std::erase(order, key);
        }
        else
        {
            ASSERT_TRUE(map.Set(key, step));
            model[key] = step;
            if (!known)
                order.push_back(key);
        }
        ASSERT_EQ(map.Count(), std::int64_t(model.size()));
        if (step % 500 != 0)
            continue;
        std::vector<std::int64_t> walked;
        map.ForEach(
            [&](std::int64_t each, std::int64_t value)
            {
                walked.push_back(each);
                EXPECT_EQ(model.at(each), value);
            });
        ASSERT_EQ(walked, order) << step;
        for (std::int64_t absent = 1; absent < 40; ++absent)
            ASSERT_EQ(map.Contains(absent), model.count(absent) > 0);
    }
}

// Positions, pointers and sums of powers of two: what keys of a mesh look like, and what a weak hash piles up.
TEST(Map, StaysFastForRegularKeys)
{
    for (const int shift : {0, 6, 20, 32})
    {
        BMapIntToInt map;
        for (std::int64_t i = 0; i < 200000; ++i)
            ASSERT_TRUE(map.Set(i << shift, i));
        for (std::int64_t i = 0; i < 200000; ++i)
            ASSERT_EQ(map.Get(i << shift, -1), i);
    }
}

TEST_F(ContainerFailure, EmptiesAMap)
{
    BMapStringToPtr map;
    int failures = 0;
    for (int i = 0; i < 100; ++i)
    {
        MEM_FailAfter(2);
        if (map.Set(BString::Format("key %d", i), &map))
            continue;
        ++failures;
        EXPECT_TRUE(map.IsEmpty());
        EXPECT_EQ(map.Find("key 0"), nullptr);
    }
    MEM_FailAfter(0);
    EXPECT_GT(failures, 0);
    EXPECT_TRUE(map.Set("again", &map));
    EXPECT_EQ(map.Get("again"), &map);
}

// The value handed in lies in the map, and growing moves it.
TEST(Map, TakesReferencesToItsOwnValues)
{
    BMap<std::int64_t, BString> map(1, 1);
    map.Set(0, "a text that is too long to be kept inside the string");
    for (std::int64_t i = 1; i < 200; ++i)
        map.Set(i, *map.Find(i - 1));
    EXPECT_EQ(*map.Find(199), "a text that is too long to be kept inside the string");
}

TEST(BitArray, CopiesAndMovesLeaveNothingHalfDone)
{
    BBitArray bits;
    bits.Set(100);
    MEM_FailAfter(1);
    BBitArray copy = bits;
    MEM_FailAfter(0);
    EXPECT_EQ(copy.Count(), 0) << "there was no memory for it";
    copy.Set(3);
    EXPECT_TRUE(copy[3]);
    const BBitArray moved = std::move(bits);
    EXPECT_TRUE(moved[100]);
    bits.ClearAll(); // what was moved from is empty, and of use
    bits.Set(5);
    EXPECT_EQ(bits.Count(), 6);
}

TEST(BitArray, BehavesAsAVectorOfBool)
{
    std::mt19937 random(3);
    BBitArray bits;
    std::vector<bool> model;
    for (int step = 0; step < 4000; ++step)
    {
        const std::size_t at = random() % 200;
        switch (random() % 12)
        {
        case 0:
            bits.SetCount(std::int64_t(at));
            model.resize(at);
            break;
        case 1:
            bits.SetAll(at % 2 != 0);
            model.assign(model.size(), at % 2 != 0);
            break;
        case 2:
        case 3:
            bits.Set(std::int64_t(at), false);
            if (at < model.size())
                model[at] = false;
            break;
        default:
            bits.Set(std::int64_t(at));
            model.resize(std::max(model.size(), at + 1));
            model[at] = true;
            break;
        }
        ASSERT_EQ(bits.Count(), std::int64_t(model.size()));
        std::vector<bool> walked(model.size());
        std::int64_t number = 0;
        for (std::int64_t i = bits.NextSet(-5); i >= 0; i = bits.NextSet(i + 1), ++number)
            walked[std::size_t(i)] = true;
        ASSERT_EQ(walked, model) << step;
        ASSERT_EQ(bits.NumSet(), number);
        ASSERT_FALSE(bits.Get(-1) || bits.Get(bits.Count()) || bits.Get(bits.Count() + 63));
    }
    BBitArray same = bits;
    EXPECT_TRUE(same == bits);
    same.Set(same.Count() + 10);
    same.Set(same.Count() - 1, false);
    EXPECT_FALSE(same == bits) << "the count differs";
}

TEST_F(ContainerFailure, LeavesPlexEntriesWhereTheyAre)
{
    struct Entry
    {
        std::int64_t value;
        char more[20];
    };
    BPlex<Entry> plex(10);
    std::vector<Entry*> entries;
    for (int i = 0; i < 100; ++i)
    {
        if (i == 50)
        {
            MEM_FailAfter(1);
            EXPECT_EQ(plex.New(), nullptr) << "the fifth block is full";
        }
        entries.push_back(plex.New());
        ASSERT_NE(entries.back(), nullptr);
        EXPECT_EQ(entries.back()->value, 0);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(entries.back()) % alignof(Entry), 0u);
        entries.back()->value = i + 1;
        std::fill(std::begin(entries.back()->more), std::end(entries.back()->more), char(0x7F));
    }
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(entries[std::size_t(i)]->value, i + 1);
    EXPECT_EQ(std::set<Entry*>(entries.begin(), entries.end()).size(), 100u);
    EXPECT_EQ(plex.Count(), 100);
    plex.FreeAll();
    EXPECT_EQ(plex.Count(), 0);
    EXPECT_EQ(plex.New()->value, 0) << "storage of before must not shine through";
}
