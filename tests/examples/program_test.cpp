/* SPDX-License-Identifier: MIT */
#include "program.h"

#include <regex>

#include <sys/stat.h>

#include "countries.h"

using namespace atlas;

TEST_F(Atlas, DrawsTheMapInItsColours)
{
    const Outcome outcome = run({shipped_path("110m"), "--out", "map.png", "--width", "361"});
    EXPECT_EQ("", outcome.err);
    ASSERT_EQ(0, outcome.code);
    const Pixels expected = draw_map(decode(shipped_world("110m")), 361);
    EXPECT_TRUE(pixels_of(expected) == pixels_of(scratch_ / "map.png", 361));
    EXPECT_EQ(1, scratch_.entries());
}

TEST_F(Atlas, ReportsWhatItDrew)
{
    const Outcome outcome = run({shipped_path("110m")});
    const std::string path = std::filesystem::canonical(scratch_ / "atlas.png").string();
    const std::string bytes = std::to_string(std::filesystem::file_size(path));
    const std::regex report(
        "picture  " + path + "\n" + "size     2048 x 1024 pixels, " + bytes + " bytes\n" +
        "drawn    177 countries, 286 rings, 8246 points\n" +
        "cache    1048576 bytes for 128 tiles: 128 evictions, 68 write-backs, 64 fetches, 0 blocks moved\n" +
        "time     read [0-9.]+ ms, decode [0-9.]+ ms, prepare [0-9.]+ ms, draw [0-9.]+ ms, write [0-9.]+ ms\n");
    EXPECT_TRUE(std::regex_match(outcome.out, report)) << outcome.out;
}

TEST_F(Atlas, DrawsTheSamePictureWhateverItsCachesBudget)
{
    ASSERT_EQ(0, run({shipped_path("110m"), "--width=1200"}).code);
    const std::string expected = read_whole(scratch_ / "atlas.png");
    for (const char *budget : {"32768", "32769", "50000", "536870912"}) {
        const Outcome outcome = run({shipped_path("110m"), "--width=1200", "--cache-budget", budget, "--out", "b.png"});
        EXPECT_EQ(0, outcome.code) << outcome.err;
        EXPECT_TRUE(expected == read_whole(scratch_ / "b.png")) << budget;
    }
}

TEST_F(Atlas, ReplacesAnOlderPicture)
{
    write_whole(scratch_ / "atlas.png", "old");
    EXPECT_EQ(0, run({shipped_path("110m"), "--width=64"}).code);
    EXPECT_EQ(64u * 32 * 3, pixels_of(scratch_ / "atlas.png", 64).size());
}

TEST_F(Atlas, CountsLines)
{
    write_whole(scratch_ / "in", world_of("LineString", "[0]", "[[0,0],[1,1]]"));
    EXPECT_NE(std::string::npos, run({"in"}).out.find("drawn    1 country, 0 rings, 1 line, 2 points\n"));
}

TEST_F(Atlas, DrawsTheSelectedCountries)
{
    const Outcome outcome = run({shipped_path("110m"), "--width", "64", "--select", " Chad , Fiji", "--select=Niger"});
    EXPECT_EQ("", outcome.err);
    EXPECT_NE(std::string::npos, outcome.out.find("\ndrawn    3 countries, 4 rings, 133 points")) << outcome.out;
    Topology topology = decode(shipped_world("110m"));
    select_countries(topology, {"Chad", "Fiji", "Niger"});
    EXPECT_TRUE(pixels_of(draw_map(topology, 64)) == pixels_of(scratch_ / "atlas.png", 64));
}

TEST_F(Atlas, RefusesToSelectWhatIsNotThere)
{
    const std::string world = shipped_path("110m");
    expect_refusal({world, "--select", "Chad,Atlantis"}, world + ": no country is named Atlantis");
    expect_refusal({world, "--select", "Chad, Nigr"}, world + ": no country is named Nigr: did you mean Niger?");
    expect_refusal({world, "--select"}, "--select needs names of countries, as in --select \"Chad,South Sudan\"");
    expect_refusal({world, "--select", "--print-tree"},
                   "--select needs names of countries, and is followed by --print-tree");
    expect_refusal({world, "--select", "a\nb"}, world + ": no country is named a?b");
    for (const char *names : {"", ",", " ", "Chad,", "Chad, ", ",Chad", "Chad,,Fiji"})
        expect_refusal({world, "--select", names},
                       std::string("--select takes names of countries, with a comma between them, not ") + names);
}

TEST_F(Atlas, PrintsTheTreeOfItsCountriesAheadOfItsReport)
{
    const Outcome outcome =
        run({shipped_path("110m"), "--width", "64", "--select", "Chad,Brazil,Niger", "--print-tree"});
    EXPECT_EQ("", outcome.err);
    EXPECT_EQ(0u, outcome.out.find("   Brazil, 854"));
    EXPECT_NE(std::string::npos, outcome.out.find(" km2\nChad, 1274"));
    EXPECT_NE(std::string::npos, outcome.out.find(" km2\n   Niger, 118"));
    EXPECT_NE(std::string::npos, outcome.out.find(" km2\npicture "));
}

/* Names of countries, files and options, out of the file and from the command line. */
TEST_F(Atlas, SaysNothingThatATerminalWouldActUpon)
{
    const std::string hostile = "\xc2\x9b"
                                "2J\xe2\x80\xae\x1b[31m\xef\xbb\xbf\n\x9b",
                      plain = "?2J??[31m???";
    write_whole(scratch_ / "odd.json",
                world(R"("a":{"type":"Polygon","arcs":[[0]],"properties":{"name":"\u009b2J\u202e\u001b[31m\u200d\n"}})",
                      "[[0,0],[60,0],[60,60],[0,0]]"));
    EXPECT_EQ(0u, run({"odd.json", "--print-tree"}).out.find("?2J??[31m??, "));
    expect_refusal({"odd.json", "--select", "2J[31m"}, "odd.json: no country is named 2J[31m");
    expect_refusal({"odd.json", "--select", "2J\u202e\x1b[31m\u206f\n"},
                   "odd.json: no country is named 2J??[31m??: did you mean ?2J??[31m???");
    expect_refusal({hostile}, plain + ": cannot be opened: No such file or directory");
    expect_refusal({"odd.json", "--out", "none/" + hostile},
                   "none/" + plain + ": cannot be written: No such file or directory");
    expect_refusal({"--width", hostile}, "--width takes a whole number from 16 to 32768, not " + plain);
    const Outcome written = run({"odd.json", "--out", hostile});
    EXPECT_NE(std::string::npos, written.out.find("/" + plain + "\n")) << written.out;
}

TEST_F(Atlas, WarnsAndDraws)
{
    write_whole(scratch_ / "odd.json",
                R"({"a\u009bb":1,"a\u009bb":2,)" + world_of("LineString", "[0]", "[[0,0],[0,0]]").substr(1));
    const Outcome outcome = run({"odd.json"});
    EXPECT_EQ("atlas: odd.json: warning: an object has several \"a?b\": the last one counts\n"
              "atlas: odd.json: warning: all of its points are one point: there is little to see\n",
              outcome.err);
    EXPECT_EQ(0, outcome.code);
}

TEST_F(Atlas, ShowsItsUsage)
{
    const Outcome outcome = run({"--help"});
    EXPECT_EQ(0, outcome.code);
    EXPECT_EQ(
        0u,
        outcome.out.find(
            "usage: atlas FILE [--out PNG] [--width N] [--cache-budget BYTES] [--select NAME,...] [--tiles MBTILES] "
            "[--page DIRECTORY] [--zoom N] [--attribution TEXT] [--print-tree]\n"));
    EXPECT_EQ("", outcome.err);
}

TEST_F(Atlas, RefusesABadCommandLine)
{
    expect_refusal({}, "no FILE given (see atlas --help)");
    expect_refusal({"a", "b"}, "more than one FILE (see atlas --help)");
    expect_refusal({"--colour", "a"}, "unknown option --colour (see atlas --help)");
    expect_refusal({"-xy"}, "unknown option -x (see atlas --help)");
    for (const char *letter : {"-\x1b[2J", "-\xc2\x9b", "-\xe2\x80\xae"})
        expect_refusal({letter}, "unknown option -? (see atlas --help)");
    expect_refusal({"--\xc2\x9b\x1b[2J"}, "unknown option --??[2J (see atlas --help)");
    expect_refusal({"a", "--out"}, "--out needs a value (see atlas --help)");
    for (const char *width : {"15", "32769", "65536", "-5", "0x40", "64.", "", "99999999999999999999"})
        expect_refusal({"a", "--width", width},
                       std::string("--width takes a whole number from 16 to 32768, not ") + width);
}

TEST_F(Atlas, RefusesABudgetThatTwoTilesDoNotFitInto)
{
    for (const char *budget : {"32767", "536870913", "0", "-65536", "64K", "1e6", "", "99999999999999999999"})
        expect_refusal({"a", "--cache-budget", budget},
                       std::string("--cache-budget takes a whole number from 32768 to 536870912, not ") + budget);
}

TEST_F(Atlas, RefusesAFileThatItCannotRead)
{
    expect_refusal({"none.json"}, "none.json: cannot be opened: No such file or directory");
    expect_refusal({""}, "cannot be opened: No such file or directory");
    expect_refusal({"/"}, "/: cannot be read: Is a directory");
    expect_refusal({"a\nb\x1b"}, "a?b?: cannot be opened: No such file or directory");
}

TEST_F(Atlas, RefusesADamagedFile)
{
    const std::string whole = shipped_world("110m");
    write_whole(scratch_ / "cut", whole.substr(0, 50000));
    expect_refusal({"cut"}, "cut: the JSON ends too early, after 50000 bytes");
    write_whole(scratch_ / "text", "Once upon a time");
    expect_refusal({"text"}, "text: not JSON");
    write_whole(scratch_ / "open", world_of("Polygon", "[[0]]", "[[0,0],[1,1]]"));
    expect_refusal({"open"}, "open: a ring is not closed");
}

TEST_F(Atlas, KeepsAnOlderPictureWhenItFails)
{
    write_whole(scratch_ / "atlas.png", "old");
    expect_refusal({"none.json"}, "none.json: cannot be opened: No such file or directory");
    EXPECT_EQ("old", read_whole(scratch_ / "atlas.png"));
}

TEST_F(Atlas, SaysWhyThePictureCannotBeWritten)
{
    const std::string world = shipped_path("110m");
    expect_refusal({world, "--out", "none/a.png"}, "none/a.png: cannot be written: No such file or directory");
    expect_refusal({world, "--out", "."}, ".: cannot be written: not an ordinary file");
    ASSERT_EQ(0, mkfifo((scratch_ / "pipe").c_str(), 0600));
    expect_refusal({world, "--out", "pipe"}, "pipe: cannot be written: not an ordinary file");
}

TEST_F(Atlas, LeavesNoPartOfAPictureWhenTheDiskIsFull)
{
    write_whole(scratch_ / "atlas.png", "old");
    const TemporaryDirectory temporary(".");
    for (const auto &[budget, message] : {std::pair("2097152", "cannot be written: File too large"),
                                          {"1048576", "the temporary file in . cannot be written: File too large"}}) {
        const Outcome outcome = run_command({"sh", "-c", "ulimit -f 8; exec \"$0\" \"$1\" --cache-budget \"$2\"",
                                             ATLAS_PROGRAM, shipped_path("110m"), budget});
        EXPECT_EQ("atlas: atlas.png: " + std::string(message) + "\n", outcome.err);
        EXPECT_EQ(1, outcome.code);
        EXPECT_EQ("old", read_whole(scratch_ / "atlas.png"));
        EXPECT_EQ(1, scratch_.entries());
    }
}

TEST_F(Atlas, SaysWhenThereIsNoPlaceForATemporaryFile)
{
    const TemporaryDirectory nowhere("/none");
    expect_refusal({shipped_path("110m")},
                   "atlas.png: the temporary file in /none cannot be made: No such file or directory");
    EXPECT_EQ(0, run({shipped_path("110m"), "--cache-budget=2097152"}).code);
}

/* Sanitizers map more memory than the limit, and have their own way to run out of it. */
#ifdef MOVA_MEMORY_CAN_BE_LIMITED
TEST_F(Atlas, SaysWhenMemoryRunsOut)
{
    std::string arrays = "{\"arcs\":[[]";
    for (int i = 0; i < 4000000; ++i)
        arrays += ",[]";
    write_whole(scratch_ / "arrays", arrays + "]}");
    for (const std::string &arguments : {shipped_path("110m") + " --cache-budget 536870912", std::string("arrays")}) {
        const Outcome outcome = run_command({"sh", "-c", "ulimit -v 150000; exec \"$0\" " + arguments, ATLAS_PROGRAM});
        EXPECT_EQ("atlas: " + arguments.substr(0, arguments.find(' ')) + ": out of memory\n", outcome.err);
        EXPECT_EQ(1, outcome.code);
        EXPECT_EQ(1, scratch_.entries());
    }
}

TEST_F(Atlas, DrawsAPictureLargerThanItsMemory)
{
    const std::string command = "ulimit -v 32000; exec \"$0\" \"$1\" --width 8192";
    const Outcome outcome = run_command({"sh", "-c", command, ATLAS_PROGRAM, shipped_path("110m")});
    EXPECT_EQ("", outcome.err);
    EXPECT_EQ(0, outcome.code);
    EXPECT_NE(std::string::npos, outcome.out.find("size     8192 x 4096 pixels"));
}

TEST_F(Atlas, StopsReadingWhatHasNoEnd)
{
    const Outcome outcome = run_command({"sh", "-c", "ulimit -v 300000; exec \"$0\" /dev/zero", ATLAS_PROGRAM});
    EXPECT_EQ("atlas: /dev/zero: larger than 64 MiB\n", outcome.err);
    EXPECT_EQ(1, outcome.code);
}

#endif

TEST_F(Atlas, NeverReplacesTheFileThatItReads)
{
    const std::string text = world_of("LineString", "[0]", "[[0,0],[1,1]]");
    write_whole(scratch_ / "in", text);
    expect_refusal({"in", "--out", "./in"}, "in: the picture would replace the file that it is drawn from");
    EXPECT_EQ(text, read_whole(scratch_ / "in"));
}

TEST_F(Atlas, SaysWhenItsReportIsLost)
{
    const Outcome outcome =
        run_command({"sh", "-c", "exec \"$0\" \"$1\" >/dev/full", ATLAS_PROGRAM, shipped_path("110m")});
    EXPECT_EQ("atlas: the report could not be printed\n", outcome.err);
    EXPECT_EQ(1, outcome.code);
}
