// Observers, dependents, string texts and bitmaps.
#include "base/BDependentProvider.h"
#include "base/BDir.h"
#include "base/BFile.h"
#include "base/BSubject.h"
#include "base/BText.h"
#include "base/CPB_Offscreen.h"
#include "base/XMLStringRes.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace
{
// Every call goes into a log that the objects of a test share.
class LogObserver : public BObserver
{
public:
    LogObserver(std::string& log, char name) : mLog(log), mName(name) {}
    void Update(BSubject* subject, int message) override
    {
        mLog += mName + std::to_string(message) + " ";
        if (whenUpdated)
            whenUpdated(subject);
    }
    std::function<void(BSubject*)> whenUpdated;

private:
    std::string& mLog;
    char mName;
};

class LogDependent : public BDependentProvider
{
public:
    LogDependent(std::string& log, char name) : mLog(log), mName(name) {}
    void DeletingProvider(BDependentProvider* provider) override
    {
        mLog += std::string(1, mName) + "-provider ";
        BDependentProvider::DeletingProvider(provider);
    }
    void DeletingDependent(BDependentProvider* dependent) override
    {
        mLog += std::string(1, mName) + "-dependent ";
        BDependentProvider::DeletingDependent(dependent);
    }
    void ProcessProviderMessage(BDependentProvider*, int message, void* data) override
    {
        mLog += mName + std::to_string(message) + " ";
        if (data)
            (*static_cast<std::function<void()>*>(data))();
    }

private:
    std::string& mLog;
    char mName;
};

// A file that is gone at the end, and texts that are unloaded.
class StringTexts : public testing::Test
{
protected:
    int Load(const std::string& xml, BString* error = nullptr)
    {
        BFile file(mPath);
        EXPECT_EQ(file.Open(BFile::Mode::Write), 0);
        file.Write(xml);
        file.Close();
        return XMLStringRes::Load(mPath, error);
    }
    void TearDown() override
    {
        XMLStringRes::Unload();
        std::filesystem::remove(mPath.Std());
    }
    BPath mPath = BDir::Temporary().Joined("velmar-texts-" + MakeUuidString() + ".xml");
};
} // namespace

TEST(Subject, NotifiesOnceEachInOrderOfAttaching)
{
    std::string log;
    BSubject subject;
    LogObserver a(log, 'a'), b(log, 'b');
    {
        LogObserver c(log, 'c');
        for (BObserver* each : {static_cast<BObserver*>(&b), static_cast<BObserver*>(&c), static_cast<BObserver*>(&a)})
        {
            subject.Attach(each);
            subject.Attach(each);
        }
        subject.Attach(nullptr);
        subject.Notify(1);
    }
    subject.Notify(2); // c is dead
    subject.Detach(&b);
    subject.Detach(&b);
    subject.Notify(3);
    EXPECT_EQ(log, "b1 c1 a1 b2 a2 a3 ");
}

TEST(Subject, LetsObserversComeAndGoWhileNotifying)
{
    std::string log;
    BSubject subject;
    LogObserver a(log, 'a'), b(log, 'b'), late(log, 'l');
    auto victim = std::make_unique<LogObserver>(log, 'v');
    for (LogObserver* each : {&a, victim.get(), &b})
        subject.Attach(each);
    a.whenUpdated = [&](BSubject* s)
    {
        victim.reset();   // dies before its turn
        s->Detach(&a);    // itself
        s->Attach(&late); // hears of the next message
        a.whenUpdated = nullptr;
        s->Notify(7); // nested
    };
    subject.Notify(1);
    subject.Notify(2);
    EXPECT_EQ(log, "a1 b7 l7 b1 b2 l2 ");
}

TEST(Subject, MayDieBeforeItsObservers)
{
    std::string log;
    LogObserver a(log, 'a');
    {
        BSubject one, two;
        one.Attach(&a);
        two.Attach(&a);
    }
    BSubject three;
    three.Attach(&a);
    three.Notify(1);
    EXPECT_EQ(log, "a1 ");
}

TEST(DependentProvider, TellsBothSidesOfADeath)
{
    std::string log;
    auto provider = std::make_unique<LogDependent>(log, 'p');
    LogDependent a(log, 'a');
    auto b = std::make_unique<LogDependent>(log, 'b');
    provider->AddDependent(&a);
    provider->AddDependent(b.get());
    provider->AddDependent(b.get());
    provider->AddDependent(nullptr);
    provider->MessageDependents(5, nullptr);
    b.reset();
    EXPECT_TRUE(provider->HasDependent(&a));
    EXPECT_FALSE(provider->HasDependent(nullptr));
    provider->MessageDependents(6, nullptr);
    provider.reset();
    EXPECT_EQ(log, "a5 b5 p-dependent a6 a-provider ");
}

TEST(DependentProvider, SurvivesChainsCirclesAndDeathsWhileMessaging)
{
    std::string log;
    auto a = std::make_unique<LogDependent>(log, 'a'), b = std::make_unique<LogDependent>(log, 'b');
    a->AddDependent(b.get());
    b->AddDependent(a.get());
    a->AddDependent(a.get());
    a.reset();
    // a goes as provider of b, then of itself, which hears nothing any more, then as dependent of b.
    EXPECT_EQ(log, "b-provider b-dependent ");
    b.reset();

    log.clear();
    LogDependent provider(log, 'p'), last(log, 'z');
    auto first = std::make_unique<LogDependent>(log, 'f'), victim = std::make_unique<LogDependent>(log, 'v');
    for (LogDependent* each : {first.get(), victim.get(), &last})
        provider.AddDependent(each);
    std::function<void()> kill = [&] { victim.reset(); };
    provider.MessageDependents(1, &kill);
    EXPECT_EQ(log, "f1 p-dependent z1 ");
    provider.RemoveDependent(first.get());
    first.reset();
    EXPECT_EQ(log, "f1 p-dependent z1 ") << "no longer of interest to the provider";
}

TEST(DependentProvider, NeverKeepsHalfALink)
{
    for (int n = 1; n <= 2; ++n) // the provider's list, the dependent's
    {
        std::string log;
        LogDependent provider(log, 'p');
        auto dependent = std::make_unique<LogDependent>(log, 'd');
        MEM_FailAfter(n);
        provider.AddDependent(dependent.get());
        MEM_FailAfter(0);
        EXPECT_FALSE(provider.HasDependent(dependent.get()));
        dependent.reset();
        provider.MessageDependents(1, nullptr);
        EXPECT_EQ(log, "");
    }
}

TEST_F(StringTexts, AnswerTheFallbackForWhatIsMissing)
{
    EXPECT_FALSE(XMLStringRes::IsLoaded());
    EXPECT_EQ(XMLStringRes::Get(82, 561, "otherwise"), "otherwise");
    ASSERT_EQ(Load("<strings><table id='82'><entry id='561'>K\xC3\xA4mera &lt;1&gt;</entry><entry id='-1'/></table>"
                   "<table id='-3'><entry id='561'>other</entry></table></strings>"),
              0);
    EXPECT_TRUE(XMLStringRes::IsLoaded());
    EXPECT_EQ(XMLStringRes::Get(82, 561, "otherwise"), "K\xC3\xA4mera <1>");
    EXPECT_EQ(XMLStringRes::Get(82, -1, "otherwise"), "") << "an empty text is a text";
    EXPECT_EQ(XMLStringRes::Get(-3, 561, "otherwise"), "other");
    EXPECT_EQ(XMLStringRes::Get(82, 562, "otherwise"), "otherwise");
    EXPECT_EQ(XMLStringRes::Get(83, 561, "otherwise"), "otherwise");
    EXPECT_EQ(XMLStringRes::Get(83, 561, nullptr), "");
}

TEST_F(StringTexts, StayWhenAFileIsNoGood)
{
    ASSERT_EQ(Load("<strings><table id='1'><entry id='2'>kept</entry></table></strings>"), 0);
    struct Row
    {
        const char *xml, *where;
    };
    const Row rows[] = {
        {"", ": line 1: "},
        {"noise", ": line 1: "},
        {"<other/>", ": line 1: no <strings>"},
        {"<strings>\n<table id='1'>\n<entry id='2'>x</table></strings>", ": line 3: "},
        {"<strings>\n\n<table><entry id='2'>x</entry></table></strings>", ": line 3: <table>"},
        {"<strings>\n<table id='1'>\n\n<entry id='2x'>x</entry></table></strings>", ": line 4: <entry>"},
        {"<strings><table id='99999999999'/></strings>", ": line 1: <table>"},
    };
    for (const Row& row : rows)
    {
        BString error;
        EXPECT_EQ(Load(row.xml, &error), -1) << row.xml;
        EXPECT_NE(error.Find(row.where), -1) << row.xml << " gives " << error.CString();
        EXPECT_TRUE(error.StartsWith(mPath.FullPath())) << error.CString();
        EXPECT_EQ(XMLStringRes::Get(1, 2, "lost"), "kept");
    }
    BString error;
    EXPECT_EQ(XMLStringRes::Load("/no/such.xml", &error), -1);
    EXPECT_EQ(error, "/no/such.xml: no such file");
}

TEST_F(StringTexts, HoldWhatTheLibraryAsksFor)
{
    BString error;
    ASSERT_EQ(XMLStringRes::Load(VELMAR_SOURCE_DIR "/resources/strings.xml", &error), 0) << error.CString();
    EXPECT_EQ(XMLStringRes::Get(82, 561, ""), "Perspective Camera");
    EXPECT_EQ(XMLStringRes::Get(3026, 1, ""), "Default");
}

TEST(Offscreen, HasRowsOfTheStatedLayout)
{
    struct Row
    {
        int width, bits;
        bool align;
        int rowBytes;
    };
    for (const Row& row : {Row{5, 24, true, 16}, Row{5, 24, false, 15}, Row{4, 24, true, 12}, Row{5, 8, true, 8},
                           Row{5, 8, false, 5}, Row{5, 32, true, 20}})
    {
        const std::unique_ptr<CPB_Offscreen> image(CPB_Offscreen::Create(row.width, 3, row.bits, row.align));
        ASSERT_NE(image, nullptr);
        ASSERT_EQ(image->RowBytes(), row.rowBytes);
        EXPECT_EQ(image->HasAlpha(), row.bits == 32);
        const std::uint8_t colour[4] = {10, 20, 30, 40};
        image->Fill(10, 20, 30, 40);
        const std::unique_ptr<CPB_Offscreen> copy(image->Clone());
        image->Fill(0, 0, 0, 0);
        const int pixelBytes = row.bits / 8;
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < row.rowBytes; ++x)
            {
                const int expected = x < row.width * pixelBytes ? colour[x % pixelBytes] : 0; // padding is not touched
                ASSERT_EQ(copy->Row(y)[x], expected) << x << " " << y;
                ASSERT_EQ(image->Row(y)[x], 0);
            }
    }
}

TEST(Offscreen, IsRefusedWhenItCannotBe)
{
    struct Row
    {
        int width, height, bits;
    };
    for (const Row& row :
         {Row{0, 1, 32}, Row{1, 0, 32}, Row{-1, 4, 32}, Row{4, 4, 16}, Row{1 << 30, 1, 32}, Row{INT_MAX, INT_MAX, 8}})
        EXPECT_EQ(CPB_Offscreen::Create(row.width, row.height, row.bits, false), nullptr) << row.width;
    MEM_FailAfter(1);
    EXPECT_EQ(CPB_Offscreen::Create(4, 4), nullptr);
    MEM_FailAfter(0);
}
