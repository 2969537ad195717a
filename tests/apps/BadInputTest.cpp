// What velmar says and does when arguments or files are no good.
#include "Command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#ifndef _WIN32
#include <unistd.h>
#endif

namespace
{

const std::string kTriangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
const std::string kGood = kTriangle + "f 1 2 3\n";

std::string Noise(std::size_t bytes)
{
    std::string noise;
    for (std::uint32_t state = 12345; noise.size() < bytes; state = state * 1664525u + 1013904223u)
        noise += char(state >> 24);
    return noise;
}

/// Runs velmar, and holds it to what every failure must keep: the code, one line that matches, nothing on standard
/// output, and a folder in which nothing has changed.
void ExpectFailure(Workplace& place, const std::vector<std::string>& arguments, int exitCode, const std::string& line)
{
    place.Write("old.png", "an older picture");
    const std::vector<std::string> before = place.Names();
    const Outcome outcome = place.Run(VELMAR_PROGRAM, arguments);
    EXPECT_EQ(outcome.exitCode, exitCode);
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err.substr(0, 2000);
    EXPECT_TRUE(std::regex_match(outcome.err, std::regex(line + "\n"))) << outcome.err.substr(0, 2000);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(place.Names(), before);
    EXPECT_EQ(place.Read("old.png"), "an older picture");
}

struct BadFile
{
    const char* name;
    std::string content;
    const char* line; ///< where and what, behind the file's name
};

std::vector<BadFile> BadFiles()
{
    const std::string packed = Gzipped(kGood + Noise(5000));
    return {
        {"empty file", "", ": .*empty.*expected.*"},
        {"only white space", " \n\n  \n", ":.*"},
        {"binary noise", Noise(20000), ":.*"},
        {"index above", kTriangle + "f 1 2 4\n", ":4: .*4.*"},
        {"index below", kTriangle + "f 1 2 -4\n", ":4: .*-4.*"},
        {"index zero", kTriangle + "f 1 0 3\n", ":4: .*"},
        {"texture index above", kTriangle + "vt 0 0\n\nf 1/1 2/1 3/2\n", ":6: .*"},
        {"normal index above", kTriangle + "vn 0 0 1\nf 1//1 2//1 3//7\n", ":5: .*"},
        {"line index above", kTriangle + "f 1 2 3\nl 1 5\n", ":5: .*"},
        {"point index above", kTriangle + "f 1 2 3\np 5\n", ":5: .*"},
        {"index beyond 32 bits", kTriangle + "f 1 2 99999999999\n", ":4: .*"},
        {"NaN coordinate", "v 0 0 0\nv nan 0 0\nv 0 1 0\nf 1 2 3\n", ":2: .*"},
        {"infinite coordinate", "v 0 0 0\nv 1 0 0\nv 0 inf 0\nf 1 2 3\n", ":3: .*"},
        {"coordinate beyond float", "v 0 0 0\nv 1e99 0 0\nv 0 1 0\nf 1 2 3\n", ":2: .*"},
        {"coordinate missing", "v 0 0 0\nv 1 0\nf 1 2 2\n", ":2: .*"},
        {"no number", "v 0 0 0\nv one 0 0\nf 1 2 2\n", ":2: .*"},
        {"corner that is no index", kTriangle + "f 1 2 x\n", ":4: .*"},
        {"10 MB line", kTriangle + "f 1 2 3\nv " + std::string(10u << 20, '7') + " 0 0\n", ":5: .{0,300}"},
        {"10 MB without a line break", std::string(10u << 20, 'v'), ":.{0,300}"},
        {"truncated gzip", packed.substr(0, packed.size() / 2), ": .*gzip.*"},
        {"damaged gzip", packed.substr(0, 12) + Noise(500), ": .*gzip.*"},
    };
}

} // namespace

TEST(BadInput, IsOneLineThatNamesFileAndLine)
{
    for (const BadFile& row : BadFiles())
    {
        SCOPED_TRACE(row.name);
        Workplace place;
        place.Write("bad model.obj", row.content);
        ExpectFailure(place, {"info", "bad model.obj"}, 1, std::string("velmar: bad model\\.obj") + row.line);
        ExpectFailure(place, {"preview", "bad model.obj", "-o", "old.png"}, 1,
                      std::string("velmar: bad model\\.obj") + row.line);
        ExpectFailure(place, {"weld", "bad model.obj", "-o", "out.obj"}, 1,
                      std::string("velmar: bad model\\.obj") + row.line);
    }
}

TEST(BadInput, ThatIsNoFileIsNamed)
{
    Workplace place;
    place.Write("folder.obj/inside", "");
    const std::string missing = "velmar: mod\xC3\xA8le\\.obj: no such file, expected .*";
    for (const std::string verb : {"info", "preview", "styles", "turntable"})
    {
        SCOPED_TRACE(verb);
        ExpectFailure(place, {verb, "mod\xC3\xA8le.obj"}, 1, missing);
        ExpectFailure(place, {verb, "folder.obj"}, 1, "velmar: folder\\.obj: is a folder, expected .*");
        ExpectFailure(place, {verb, "no/such/folder.obj"}, 1,
                      "velmar: no/such/folder\\.obj: no such file, expected .*");
        ExpectFailure(place, {verb, "two\nlines.obj"}, 1, "velmar: two\\?lines\\.obj: no such file, expected .*");
    }
}

TEST(BadInput, OnStandardInputIsNamedSo)
{
    Workplace place;
    place.Write("bad.obj", kTriangle + "f 1 2 4\n");
    const Outcome outcome = place.Run(VELMAR_PROGRAM, {"info", "-"}, "bad.obj");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.err.substr(0, 19), "velmar: <stdin>:4: ");
}

TEST(BadOutput, IsFoundBeforeAnythingIsDrawn)
{
    Workplace place;
    place.Write("good.obj", kGood);
    place.Write("some folder.png/inside", "");
    place.Write("file", "");
    ExpectFailure(place, {"preview", "good.obj", "-o", "no/where/out.png"}, 1,
                  "velmar: no/where/out\\.png: no such folder, expected .*");
    ExpectFailure(place, {"preview", "good.obj", "-o", "some folder.png"}, 1,
                  "velmar: some folder\\.png: is a folder, expected .*");
    ExpectFailure(place, {"preview", "good.obj", "-o", "file/out.png"}, 1, "velmar: file/out\\.png: .*, expected .*");
    ExpectFailure(place, {"styles", "good.obj", "-o", "no/where.png"}, 1, "velmar: no/where\\.png: no such folder, .*");
    ExpectFailure(place, {"turntable", "good.obj", "-o", "no/%d.png"}, 1, "velmar: no/1\\.png: no such folder, .*");
    place.Write("frame-03.png", "");
    ExpectFailure(place, {"turntable", "good.obj", "--texture", "frame-03.png", "-o", "frame-%02d.png"}, 1,
                  "velmar: frame-03\\.png: is also an input, expected another name");
    const std::vector<std::vector<std::string>> makers = {
        {"weld", "good.obj"}, {"subdivide", "good.obj"}, {"transfer-groups", "file", "good.obj"}};
    for (std::vector<std::string> maker : makers)
    {
        SCOPED_TRACE(maker[0]);
        maker.insert(maker.end(), {"-o", "no/where.obj"});
        ExpectFailure(place, maker, 1, "velmar: no/where\\.obj: no such folder, expected .*");
        maker.back() = "./good.obj";
        ExpectFailure(place, maker, 1, "velmar: \\./good\\.obj: is also an input, expected another name");
    }
    place.Write("paint.png", "");
    ExpectFailure(place, {"preview", "good.obj", "--texture", "paint.png", "-o", "paint.png"}, 1,
                  "velmar: paint\\.png: is also an input, expected another name");
}

TEST(BadOutput, MayNotBeWritable)
{
#ifndef _WIN32
    if (geteuid() == 0)
        GTEST_SKIP() << "root may write everywhere";
#endif
    Workplace place;
    place.Write("good.obj", kGood);
    place.Write("locked/old.png", "an older picture");
    namespace fs = std::filesystem;
    fs::permissions(place.Folder() / "locked", fs::perms::owner_read | fs::perms::owner_exec);
    ExpectFailure(place, {"preview", "good.obj", "-o", "locked/new.png"}, 1,
                  "velmar: locked/new\\.png: permission denied, expected .*");
    EXPECT_EQ(place.Read("locked/old.png"), "an older picture");
    fs::permissions(place.Folder() / "locked", fs::perms::owner_all);
}

TEST(Usage, ThatMakesNoSenseIsOneLineAndCode2)
{
    struct Row
    {
        std::vector<std::string> arguments;
        const char* line;
    };
    const Row rows[] = {
        {{}, "velmar: no verb, expected preview, .*info, .* or .*, .*"},
        {{"draw", "good.obj"}, "velmar: unknown verb 'draw', expected preview, .*"},
        {{"info"}, "velmar: .*INPUT.*'velmar info --help'"},
        {{"info", "good.obj", "--jsn"}, "velmar: --jsn: unknown option, see 'velmar info --help'"},
        {{"info", "good.obj", "--crease-angle", "200"}, "velmar: .*--crease-angle.*"},
        {{"preview", "good.obj", "--no-such-option"}, "velmar: --no-such-option: unknown option, .*"},
        {{"preview", "good.obj", "--size", "0x0"}, "velmar: --size: .*0x0.*expected WIDTHxHEIGHT.*"},
        {{"preview", "good.obj", "--size", "100000x100000"}, "velmar: --size: .*100000x100000.*expected.*"},
        {{"preview", "good.obj", "--size", "640x-1"}, "velmar: --size: .*expected.*"},
        {{"preview", "good.obj", "--size", "640"}, "velmar: --size: .*expected.*"},
        {{"preview", "good.obj", "--size", "99999999999999999999x1"}, "velmar: --size: .*expected.*"},
        {{"preview", "good.obj", "--mode", "shiny"}, "velmar: --mode: .*shiny.*expected one of .*smooth-textured.*"},
        {{"preview", "good.obj", "--mode", "Wire"}, "velmar: --mode: .*"},
        {{"preview", "good.obj", "--azimuth", "nan"}, "velmar: --azimuth: .*"},
        {{"preview", "good.obj", "--elevation", "91"}, "velmar: --elevation: .*"},
        {{"preview", "good.obj", "--zoom", "0"}, "velmar: --zoom: .*"},
        {{"preview", "good.obj", "--zoom", "inf"}, "velmar: --zoom: .*"},
        {{"preview", "good.obj", "--fov", "180"}, "velmar: --fov: .*"},
        {{"preview", "good.obj", "--fov", "40", "--ortho"}, "velmar: .*(--fov|--ortho).*"},
        {{"preview", "good.obj", "--background", "mauvve"}, "velmar: --background: .*mauvve.*expected.*"},
        {{"preview", "good.obj", "--samples", "3"}, "velmar: --samples: .*"},
        {{"preview", "good.obj", "--crease-angle", "-1"}, "velmar: --crease-angle: .*"},
        {{"preview", "good.obj", "--crease-angle", "30", "--no-creases"}, "velmar: .*--no-creases.*"},
        {{"preview", "good.obj", "--up", "x"}, "velmar: --up: .*"},
        {{"preview", "good.obj", "-o"}, "velmar: .*--output.*"},
        {{"preview", "good.obj", "-o", ""}, "velmar: --output: .*"},
        {{"preview", "good.obj", "-o", "picture.jpg"}, "velmar: --output: .*expected one that ends in \\.png.*"},
        {{"preview", "-o", "good.obj"}, "velmar: --output: .*expected one that ends in \\.png.*"},
        {{"preview", "good.obj", "--crease-method", "3"}, "velmar: --crease-method: .*expected 0, 1 or 2,.*"},
        {{"preview", "good.obj", "--show", "edges"}, "velmar: --show: .*edges.*expected normals or tangents,.*"},
        {{"styles", "good.obj", "--mode", "wire"}, "velmar: --mode: unknown option, see 'velmar styles --help'"},
        {{"styles", "good.obj", "--columns", "0"}, "velmar: --columns: '0' .*from 1 to 16,.*"},
        {{"turntable", "good.obj", "-o", "old.png"}, "velmar: --output: 'old.png' .*expected one %d,.*"},
        {{"turntable", "good.obj", "-o", "%s%d.png"}, "velmar: --output: .*"},
        {{"turntable", "good.obj", "-o", "%d%d.png"}, "velmar: --output: .*"},
        {{"turntable", "good.obj", "-o", "%d%%.png"}, "velmar: --output: .*"},
        {{"turntable", "good.obj", "-o", "%n.png"}, "velmar: --output: .*"},
        {{"turntable", "good.obj", "-o", "%099d.png"}, "velmar: --output: .*"},
        {{"turntable", "good.obj", "-o", "%*d.png"}, "velmar: --output: .*"},
        {{"turntable", "good.obj", "-o", "%d.jpg"}, "velmar: --output: .*expected one that ends in \\.png.*"},
        {{"turntable", "good.obj", "--frames", "0"}, "velmar: --frames: '0' .*from 1 to 9999,.*"},
        {{"pick", "good.obj"}, "velmar: --at is required, .*"},
        {{"pick", "good.obj", "--at", "7"}, "velmar: --at: '7' is no pixel, expected X,Y.*"},
        {{"pick", "good.obj", "--at", "-1,5"}, "velmar: --at: .*"},
        {{"pick", "good.obj", "--at", "1,5x"}, "velmar: --at: .*"},
        {{"pick", "good.obj", "--at", "99999999999,5"}, "velmar: --at: .*"},
        {{"pick", "good.obj", "--at", "1280,5"}, "velmar: --at: 1280,5 lies outside .*1280 x 720 pixels, .*"},
        {{"pick", "good.obj", "--at", "1,5", "--kind", "face"}, "velmar: --kind: 'face' .*expected object, .*"},
        {{"pick", "good.obj", "--at", "1,5", "--radius", "-1"}, "velmar: --radius: .*"},
        {{"weld", "good.obj"}, "velmar: --output is required, .*"},
        {{"weld", "good.obj", "-o", "old.png"}, "velmar: --output: .*expected one that ends in \\.obj.*"},
        {{"weld", "good.obj", "-o", "x.obj", "--tolerance", "-1"}, "velmar: --tolerance: '-1' .*from 0 to .*"},
        {{"weld", "good.obj", "-o", "x.obj", "--tolerance", "nan"}, "velmar: --tolerance: 'nan' .*from 0 to .*"},
        {{"weld", "good.obj", "x.obj"}, "velmar: .*'velmar weld --help'"},
        {{"preview", "good.obj", "--subdivide", "7"}, "velmar: --subdivide: '7' .*whole number from 0 to 6,.*"},
        {{"preview", "good.obj", "--cage"}, "velmar: --cage requires --subdivide, .*"},
        {{"subdivide", "good.obj", "-o", "x.obj", "--levels", "0"}, "velmar: --levels: '0' .*from 1 to 15,.*"},
        {{"subdivide", "good.obj", "-o", "x.obj", "--levels", "-1"}, "velmar: --levels: '-1' .*from 1 to 15,.*"},
        {{"subdivide", "good.obj", "-o", "x.obj", "--levels", "16"}, "velmar: --levels: '16' .*from 1 to 15,.*"},
        {{"subdivide", "good.obj", "-o", "x.obj", "--levels", "1.5"}, "velmar: --levels: '1.5' .*from 1 to 15,.*"},
        {{"subdivide", "good.obj", "-o", "x.obj", "--scheme", "loop"}, "velmar: --scheme: 'loop' .*catmull-clark,.*"},
        {{"transfer-groups", "good.obj", "-o", "x.obj"}, "velmar: .*TO.*required.*"},
        {{"transfer-groups", "good.obj", "good.obj", "-o", "x.obj", "--by", "name"},
         "velmar: --by: 'name' .*expected proximity or polygon,.*"},
        {{"transfer-groups", "-", "-", "-o", "x.obj"}, "velmar: FROM and TO are both standard input, expected .*"},
    };
    Workplace place;
    place.Write("good.obj", kGood);
    for (const Row& row : rows)
    {
        std::string all;
        for (const std::string& argument : row.arguments)
            all += argument + " ";
        SCOPED_TRACE(all);
        ExpectFailure(place, row.arguments, 2, row.line);
    }
}
