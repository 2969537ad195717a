// Mutexes and threads; what is here must also be silent under the thread sanitizer.
#include "base/BMutex.h"
#include "base/BThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>

namespace
{
// Runs a function on a thread of its own.
class Worker : public BThread
{
public:
    explicit Worker(std::function<void()> work, std::size_t stackSize = 0, bool lowPriority = false)
        : BThread(false, stackSize, lowPriority), mWork(std::move(work))
    {
    }
    ~Worker() override { Join(); }

protected:
    void DoBegin() override { mWork(); }

private:
    std::function<void()> mWork;
};

void RunElsewhere(const std::function<void()>& work)
{
    Worker worker(work);
    ASSERT_TRUE(worker.Run());
    worker.Join();
}

// Writes down what is called.
class Steps : public BThread
{
public:
    explicit Steps(int repeats) : BThread(false, 1 << 20, false), mRepeats(repeats) {}
    ~Steps() override { Join(); }
    std::string log;

protected:
    void DoBegin() override { log += "begin "; }
    bool DoRepeatedly() override
    {
        log += "repeat ";
        return --mRepeats > 0;
    }
    void DoDone() override { log += "done "; }

private:
    int mRepeats;
};

class Endless : public BThread
{
public:
    Endless() : BThread(false, 0, false) {}
    ~Endless() override
    {
        RequestStop();
        Join();
    }
    std::atomic<int> rounds{0};

protected:
    bool DoRepeatedly() override
    {
        ++rounds;
        return true;
    }
};

// Uses about that much stack; the sum keeps the compiler from leaving it out.
int UseStack(std::size_t bytes) // NOLINT(misc-no-recursion)
{
    volatile char page[16384];
    page[0] = char(bytes);
    return bytes < sizeof page ? page[0] : UseStack(bytes - sizeof page) + page[0];
}
} // namespace

TEST(Mutex, KeepsThreadsApart)
{
    BMutex mutex;
    std::int64_t counter = 0; // plain: two threads inside at once would lose counts
    const auto count = [&]
    {
        for (int i = 0; i < 20000; ++i)
        {
            const BMutexLock outer(mutex);
            const BMutexLock inner(mutex);
            counter += 1;
        }
    };
    Worker a(count), b(count), c(count);
    ASSERT_TRUE(a.Run() && b.Run() && c.Run());
    a.Join();
    b.Join();
    c.Join();
    EXPECT_EQ(counter, 60000);
}

TEST(Mutex, IsHeldUntilUnlockedAsOftenAsLocked)
{
    BMutex mutex;
    const auto isFree = [&]
    {
        bool got = false;
        RunElsewhere(
            [&]
            {
                got = mutex.TryLock();
                if (got)
                    mutex.Unlock();
            });
        return got;
    };
    for (int i = 0; i < 3; ++i)
        mutex.Lock();
    EXPECT_TRUE(mutex.TryLock());
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_FALSE(isFree());
        mutex.Unlock();
    }
    EXPECT_TRUE(isFree());
}

TEST(Mutex, UnlockingWithoutHoldingDoesNothing)
{
    BMutex mutex;
    mutex.Unlock();
    mutex.Unlock();
    mutex.Lock();
    RunElsewhere([&] { mutex.Unlock(); });
    bool taken = true;
    RunElsewhere([&] { taken = mutex.TryLock(); });
    EXPECT_FALSE(taken) << "the other thread's unlock must not have opened it";
    mutex.Unlock();
    RunElsewhere(
        [&]
        {
            taken = mutex.TryLock();
            mutex.Unlock();
        });
    EXPECT_TRUE(taken) << "the early unlocks must not have been saved up";
    mutex.Lock(); // and is destroyed while held
}

TEST(Thread, RunsBeginThenRepeatsThenDone)
{
    Steps steps(3);
    EXPECT_EQ(steps.log, "");
    ASSERT_TRUE(steps.Run());
    steps.Join();
    EXPECT_EQ(steps.log, "begin repeat repeat repeat done ");
    steps.log.clear();
    ASSERT_TRUE(steps.Run()) << "again, once it has ended";
    steps.Join();
    EXPECT_EQ(steps.log, "begin repeat done ");
    steps.Join();
}

TEST(Thread, StopsWhenAsked)
{
    Endless thread;
    ASSERT_TRUE(thread.Run());
    while (thread.rounds < 10)
        ;
    EXPECT_FALSE(thread.Run()) << "it runs already";
    thread.RequestStop();
    thread.Join();
    const int rounds = thread.rounds;
    EXPECT_TRUE(thread.StopRequested());
    EXPECT_GE(rounds, 10);
    ASSERT_TRUE(thread.Run()); // and the destructor ends it
    EXPECT_FALSE(thread.StopRequested());
}

TEST(Thread, KnowsItself)
{
    bool inside = false, other = true;
    BThread here(false, 0, false);
    EXPECT_FALSE(here.IsCurrentThread());
    here.AdoptCurrentThread();
    EXPECT_TRUE(here.IsCurrentThread());
    Worker* self = nullptr;
    Worker worker(
        [&]
        {
            inside = self->IsCurrentThread();
            other = here.IsCurrentThread();
            self->Join(); // would wait for ever
        });
    self = &worker;
    ASSERT_TRUE(worker.Run());
    worker.Join();
    EXPECT_TRUE(inside);
    EXPECT_FALSE(other);
    EXPECT_FALSE(worker.IsCurrentThread());
}

TEST(Thread, GetsTheStackItAsksFor)
{
    // Far beyond the usual 8 MiB: without the room this ends the program.
    int sum = -1;
    Worker worker([&] { sum = UseStack(std::size_t(48) << 20); }, std::size_t(64) << 20, true);
    ASSERT_TRUE(worker.Run());
    worker.Join();
    EXPECT_NE(sum, -1);

    bool ran = false;
    Worker tiny([&] { ran = true; }, 1); // raised to what the system needs
    ASSERT_TRUE(tiny.Run());
    tiny.Join();
    EXPECT_TRUE(ran);

    Worker huge([] {}, SIZE_MAX / 2);
    EXPECT_FALSE(huge.Run()) << "and says when there is no such room";
    huge.Join();
}
