// Files, folders and paths, on real files in a folder of their own.
#include "base/BDir.h"
#include "base/BFile.h"
#include "base/BText.h"
#include "base/MEM.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>

namespace
{
namespace fs = std::filesystem;

class File : public testing::Test
{
protected:
    void SetUp() override
    {
        // A name with a space and letters outside ASCII, so that every test tries both.
        mFolder = BDir::Temporary().Joined(BString("velmar t\xC3\xA4st \xE2\x82\xAC ") + MakeUuidString());
        ASSERT_EQ(BDir::Create(mFolder), 0);
    }
    void TearDown() override
    {
        MEM_FailAfter(0);
        fs::permissions(mFolder.Std(), fs::perms::owner_all);
        fs::remove_all(mFolder.Std());
    }

    BPath At(const char* name) const { return mFolder.Joined(name); }

    BPath Written(const char* name, const std::string& bytes, BFile::Mode mode = BFile::Mode::Write, bool gzip = false)
    {
        BFile file(At(name));
        if (gzip)
            file.SetCompression(true);
        EXPECT_EQ(file.Open(mode), 0) << file.LastError().CString();
        EXPECT_EQ(file.Write(bytes), 0);
        EXPECT_EQ(file.Close(), 0);
        return At(name);
    }

    std::int64_t FilesInFolder()
    {
        BDir folder(mFolder);
        EXPECT_EQ(folder.Open(), 0);
        return folder.List().Count();
    }

    BPath mFolder;
};

struct Content
{
    std::string bytes;
    BString error; // empty when all could be read
};

Content ReadWhole(const BPath& path, bool compression = true)
{
    BFile file(path);
    file.SetCompression(compression);
    if (file.Open(BFile::Mode::Read) != 0)
        return {{}, file.LastError()};
    char* const text = file.ReadAll();
    Content content{text ? std::string(text, MEM_Count(text)) : std::string(), text ? BString() : file.LastError()};
    EXPECT_TRUE(!text || text[MEM_Count(text)] == 0) << "the spare byte";
    MEM_Free(text);
    return content;
}

std::string ReadInPieces(const BPath& path, std::size_t piece)
{
    BFile file(path);
    EXPECT_EQ(file.Open(BFile::Mode::Read), 0);
    std::string all, buffer(piece, 0);
    std::int64_t got;
    while ((got = file.Read(buffer.data(), piece)) > 0)
        all.append(buffer, 0, std::size_t(got));
    EXPECT_EQ(got, 0) << file.LastError().CString();
    EXPECT_EQ(file.Read(buffer.data(), piece), 0) << "the end stays the end";
    return all;
}

std::string Noise(std::size_t bytes, unsigned seed)
{
    std::mt19937 random(seed);
    std::string noise(bytes, 0);
    for (char& c : noise)
        c = char(random() % 7 == 0 ? random() : 0); // compresses, but not to nothing; full of zero bytes
    return noise;
}
} // namespace

TEST_F(File, ReadsBackWhatWasWritten)
{
    // Around the buffer's size of 64 KiB, and beyond the size from which storage comes in pages.
    for (const std::size_t size : {0, 1, 2, 65535, 65536, 65537, 6000000})
        for (const bool gzip : {false, true})
        {
            SCOPED_TRACE(testing::Message() << size << (gzip ? " compressed" : " plain"));
            const std::string bytes = Noise(size, unsigned(size));
            const BPath path = Written("a file", bytes, BFile::Mode::Write, gzip);
            const Content all = ReadWhole(path);
            EXPECT_EQ(all.error, "");
            EXPECT_TRUE(all.bytes == bytes);
            EXPECT_TRUE(ReadInPieces(path, 10007) == bytes);
            EXPECT_EQ(ReadWhole(path, false).bytes == bytes, !gzip) << "as it lies on the disk";
        }
}

TEST_F(File, ReadAllTakesTheRestIntoStorageOfTheRightSize)
{
    const std::string bytes = Noise(5000000, 1);
    BFile file(Written("a", bytes));
    ASSERT_EQ(file.Open(BFile::Mode::Read), 0);
    EXPECT_EQ(file.Size(), 5000000);
    char head[100];
    ASSERT_EQ(file.Read(head, sizeof head), 100);
    char* const rest = file.ReadAll();
    ASSERT_NE(rest, nullptr);
    EXPECT_TRUE(std::string(head, 100) + std::string(rest, MEM_Count(rest)) == bytes);
    EXPECT_LE(MEM_Capacity(rest), 5000002u);
    MEM_Free(rest);
}

TEST_F(File, AppendsPlainBytesAndGzipMembers)
{
    for (const bool gzip : {false, true})
    {
        const char* const name = gzip ? "members" : "plain";
        std::string expected;
        for (const std::size_t size : {70000, 0, 3, 100})
        {
            expected += Noise(size, unsigned(size));
            Written(name, Noise(size, unsigned(size)), BFile::Mode::Append, gzip);
        }
        EXPECT_TRUE(ReadWhole(At(name)).bytes == expected) << name;
    }
    // What follows the last member is padding, whatever it looks like.
    const std::string members = ReadWhole(At("members"), false).bytes;
    for (const char* padding : {"\1", "abc", "\x1F", "\x1Fx"})
        EXPECT_TRUE(ReadWhole(Written("padded", members + padding)).bytes == ReadWhole(At("members")).bytes);
}

TEST_F(File, CompressionGivesTheSameBytesEveryTime)
{
    const std::string bytes = Noise(100000, 9);
    Written("a", bytes, BFile::Mode::Write, true);
    Written("b", bytes, BFile::Mode::WriteAtomic, true);
    EXPECT_TRUE(ReadWhole(At("a"), false).bytes == ReadWhole(At("b"), false).bytes);
}

TEST_F(File, EveryTruncationOfGzipDataIsAnError)
{
    const std::string whole = ReadWhole(Written("whole", Noise(300, 3), BFile::Mode::Write, true), false).bytes;
    for (std::size_t length = 2; length < whole.size(); ++length)
        EXPECT_EQ(ReadWhole(Written("cut", whole.substr(0, length))).error, "truncated gzip data") << length;
}

TEST_F(File, DamagedGzipDataIsFoundOut)
{
    const std::string bytes = Noise(3000, 4);
    const std::string whole = ReadWhole(Written("whole", bytes, BFile::Mode::Write, true), false).bytes;
    for (std::size_t at = 2; at < whole.size(); at += 3)
    {
        std::string damaged = whole;
        damaged[at] = char(damaged[at] ^ 0x55);
        const Content content = ReadWhole(Written("damaged", damaged));
        // The head has bytes that do not matter (time, system); whatever else is changed, the checksum notices.
        EXPECT_TRUE(content.error.EndsWith("gzip data") || (at < 10 && content.bytes == bytes)) << at;
    }
}

TEST_F(File, SaysWhyItCannotBeOpened)
{
    Written("file", "x");
    struct Row
    {
        const char* name;
        BFile::Mode mode;
        const char* expected;
    };
    const Row rows[] = {
        {"absent", BFile::Mode::Read, "no such file"},
        {"", BFile::Mode::Read, "is a folder"},
        {"", BFile::Mode::Write, "is a folder"},
        {"", BFile::Mode::WriteAtomic, "is a folder"},
        {"file/below", BFile::Mode::Read, "a part of the path is not a folder"},
        {"absent/new", BFile::Mode::Write, "no such folder"},
        {"absent/new", BFile::Mode::WriteAtomic, "no such folder"},
    };
    for (const Row& row : rows)
    {
        BFile file(At(row.name));
        EXPECT_EQ(file.Open(row.mode), -1) << row.name;
        EXPECT_EQ(file.LastError(), row.expected) << row.name;
        EXPECT_FALSE(file.IsOpen());
        char byte;
        EXPECT_EQ(file.Read(&byte, 1), -1);
        EXPECT_EQ(file.ReadAll(), nullptr);
        EXPECT_EQ(file.Write("x"), -1);
        EXPECT_EQ(file.Close(), 0);
    }
    EXPECT_EQ(FilesInFolder(), 1);
}

TEST_F(File, RespectsAccessRights)
{
    const BPath path = Written("locked", "old");
    fs::permissions(path.Std(), fs::perms::none);
    fs::permissions(mFolder.Std(), fs::perms::owner_read | fs::perms::owner_exec);
    BFile probe(path);
    if (probe.Open(BFile::Mode::Read) == 0)
        GTEST_SKIP() << "this user may read and write everything";
    EXPECT_EQ(probe.LastError(), "permission denied");
    for (const BFile::Mode mode : {BFile::Mode::Write, BFile::Mode::Append, BFile::Mode::WriteAtomic})
    {
        BFile old(path), fresh(At("new"));
        EXPECT_EQ(old.Open(mode), -1);
        EXPECT_EQ(old.LastError(), "permission denied");
        EXPECT_EQ(fresh.Open(mode), -1);
        EXPECT_EQ(fresh.LastError(), "permission denied");
    }
}

TEST_F(File, AtomicWritingReplacesOnCloseOnly)
{
    const BPath path = Written("target", "old");
    fs::permissions(path.Std(), fs::perms::owner_read | fs::perms::owner_write);
    {
        BFile forgotten(path);
        ASSERT_EQ(forgotten.Open(BFile::Mode::WriteAtomic), 0);
        ASSERT_EQ(forgotten.Write(Noise(200000, 1)), 0);
        EXPECT_EQ(ReadWhole(path).bytes, "old");
    }
    EXPECT_EQ(ReadWhole(path).bytes, "old");
    EXPECT_EQ(FilesInFolder(), 1) << "the temporary file is gone";

    BFile file(path);
    ASSERT_EQ(file.Open(BFile::Mode::WriteAtomic), 0);
    ASSERT_EQ(file.Write("new"), 0);
    EXPECT_EQ(ReadWhole(path).bytes, "old");
    ASSERT_EQ(file.Close(), 0);
    EXPECT_EQ(file.Close(), 0);
    EXPECT_EQ(ReadWhole(path).bytes, "new");
    EXPECT_EQ(FilesInFolder(), 1);
#if !defined(_WIN32)
    EXPECT_EQ(fs::status(path.Std()).permissions(), fs::perms::owner_read | fs::perms::owner_write);

    fs::create_symlink("target", At("link").Std());
    Written("link", "through the link", BFile::Mode::WriteAtomic);
    EXPECT_TRUE(fs::is_symlink(At("link").Std()));
    EXPECT_EQ(ReadWhole(path).bytes, "through the link");
#endif
}

#if !defined(_WIN32)
TEST_F(File, DevicesAreWrittenAndNotReplaced)
{
    BFile file(BPath("/dev/null"));
    ASSERT_EQ(file.Open(BFile::Mode::WriteAtomic), 0) << file.LastError().CString();
    EXPECT_EQ(file.Write("x"), 0);
    EXPECT_EQ(file.Close(), 0);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_EQ(ReadWhole("/dev/null").error, "");
    EXPECT_NE(ReadWhole("/proc/self/status").bytes.find("VmSize"), std::string::npos) << "a file that claims size 0";
}

TEST_F(File, AFullDeviceIsAnError)
{
    if (!fs::exists("/dev/full"))
        GTEST_SKIP() << "no /dev/full here";
    for (const std::size_t size : {10, 1000000}) // noticed on closing, and while writing
    {
        BFile file(BPath("/dev/full"));
        ASSERT_EQ(file.Open(BFile::Mode::WriteAtomic), 0);
        const int written = file.Write(std::string(size, 'x'));
        EXPECT_EQ(written, size > 65536 ? -1 : 0);
        EXPECT_EQ(file.Close(), -1);
        EXPECT_EQ(file.LastError(), "no space left on the device");
    }
}
#endif

TEST_F(File, ReadAllSaysWhenMemoryRunsOut)
{
    const BPath path = Written("a", Noise(5000000, 2), BFile::Mode::Write, true);
    for (int n = 1; n <= 3; ++n) // the empty handle, the first guess, a later growth
    {
        BFile file(path);
        ASSERT_EQ(file.Open(BFile::Mode::Read), 0);
        MEM_FailAfter(n);
        char* const text = file.ReadAll();
        MEM_FailAfter(0);
        EXPECT_TRUE(!text || n == 3);
        EXPECT_EQ(file.LastError(), text ? "" : "out of memory");
        MEM_Free(text);
    }
}

TEST_F(File, FoldersListNamesInOrderByPattern)
{
    for (const char* name : {"b.ttf", "a.otf", "B.TTF", "\xC3\xA4.ttf", "a.ttf.bak", "sub"})
        Written(name, "");
    ASSERT_EQ(BDir::Create(At("folder/deep")), 0);
    ASSERT_EQ(BDir::Create(At("folder")), 0);
    EXPECT_EQ(BDir::Create(At("sub")), -1) << "a file is in the way";
    BDir folder(mFolder);
    EXPECT_TRUE(folder.List().IsEmpty()) << "not read yet";
    ASSERT_EQ(folder.Open(), 0);
    struct Row
    {
        const char *pattern, *expected;
    };
    const Row rows[] = {
        {"*", "B.TTF a.otf a.ttf.bak b.ttf folder sub \xC3\xA4.ttf "},
        {"*.ttf", "b.ttf \xC3\xA4.ttf "},
        {"?.ttf", "b.ttf "}, // one byte; the other letter has two
        {"*a*", "a.otf a.ttf.bak "},
        {"*t*t*f*b*", "a.ttf.bak "},
        {"sub", "sub "},
        {"su", ""},
        {"", ""},
        {"**", "B.TTF a.otf a.ttf.bak b.ttf folder sub \xC3\xA4.ttf "},
    };
    for (const Row& row : rows)
    {
        std::string listed;
        for (const BString& name : folder.List(row.pattern))
            listed += name.Std() + " ";
        EXPECT_EQ(listed, row.expected) << row.pattern;
    }
    EXPECT_EQ(BDir(At("absent")).Open(), -1);
    EXPECT_EQ(BDir(At("sub")).Open(), -1) << "a file";
}

TEST(Path, TakesNamesApart)
{
    struct Row
    {
        const char *path, *file, *base, *extension, *parent;
    };
    const Row rows[] = {
        {"a/b.obj", "b.obj", "b", "obj", "a"},
        {"a/b.tar.gz", "b.tar.gz", "b.tar", "gz", "a"},
        {"b", "b", "b", "", ""},
        {"a/.hidden", ".hidden", ".hidden", "", "a"},
        {"a.d/b", "b", "b", "", "a.d"},
        {"\xC3\xA4/\xE2\x82\xAC.obj", "\xE2\x82\xAC.obj", "\xE2\x82\xAC", "obj", "\xC3\xA4"},
        {"", "", "", "", ""},
    };
    for (const Row& row : rows)
    {
        const BPath path(row.path);
        EXPECT_EQ(path.FileName(), row.file) << row.path;
        EXPECT_EQ(path.BaseName(), row.base) << row.path;
        EXPECT_EQ(path.Extension(), row.extension) << row.path;
        EXPECT_EQ(path.Parent(), BPath(row.parent)) << row.path;
        EXPECT_EQ(path.Parent().Joined(path.FileName()), path) << row.path;
    }
    EXPECT_EQ(BPath("a/b.obj").WithExtension("mtl"), BPath("a/b.mtl"));
    EXPECT_EQ(BPath("a/b.obj").WithExtension(""), BPath("a/b"));
    EXPECT_EQ(BPath("a").Joined("b/c"), BPath("a/b/c"));
}

TEST(Path, KelvoPathStaysWhereItWasMade)
{
    const fs::path before = fs::current_path();
    const BKelvoPath path("debug.log");
    EXPECT_TRUE(path.IsAbsolute());
    EXPECT_EQ(path, BPath("debug.log").Absolute());
    fs::current_path(fs::temp_directory_path());
    const bool same = path.Absolute() == path;
    fs::current_path(before);
    EXPECT_TRUE(same);
}
