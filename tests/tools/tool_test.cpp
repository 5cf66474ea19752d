// The mdb tool end to end on a scanned copy of the sample tree: help, errors by status name and
// exit code, the scan's report, Browse and Search answers as well-formed DIDL-Lite with their
// counters, and uploads made, described and destroyed, with the guard on scanned objects.
#include "sample_tree.h"
#include "temp_dir.h"
#include "tool_runner.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace mdbtest {
namespace {

using Strings = std::vector<std::string>;
constexpr auto npos = std::string::npos;

TEST(ToolHelp, EveryCommandExplainsItself) {
    const ToolRun overview = RunTool({"--help"});
    EXPECT_EQ(overview.exitCode, 0);
    for (const char *command : {"init", "scan", "browse", "search", "create", "destroy", "info"}) {
        EXPECT_NE(overview.out.find(std::string("  ") + command + " "), npos) << overview.out;
        const ToolRun help = RunTool({command, "--help"});
        EXPECT_EQ(help.exitCode, 0) << command;
        EXPECT_EQ(help.out.rfind(std::string("usage: mdb ") + command, 0), 0u) << help.out;
    }
    EXPECT_EQ(RunTool({}).exitCode, 2);
}

class Tool : public ::testing::Test {
protected:
    void SetUp() override {
        scan = RunTool({"scan", db, media, "--quiet"});
        ASSERT_EQ(scan.exitCode, 0) << scan.err;
    }
    // Runs a browse or search (the catalogue goes after the command) that must succeed.
    ToolAnswer Ask(Strings args) {
        args.insert(args.begin() + 1, db);
        const ToolRun run = RunTool(args);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        ToolAnswer answer = ReadAnswer(run.out);
        EXPECT_EQ(answer.error, "");
        EXPECT_EQ(answer.numberReturned, static_cast<long long>(answer.objects.size())) << run.out;
        return answer;
    }

    TempDir dir;
    std::string media = CopySampleTree(dir.path());
    std::string db = dir.file("catalogue.db");
    ToolRun scan;
};

TEST_F(Tool, ErrorsNameTheirStatusAndEndNonZero) {
    const std::string fresh = dir.file("fresh.db");
    const std::string text = dir.write("notes.db", "this is not a database of any kind, just text\n");
    std::string bytes = readFile(db);
    ASSERT_GT(bytes.size(), 12288u);
    bytes.replace(8192, 64, std::string(64, '\x55'));  // a b-tree page's header
    const std::string damaged = dir.write("damaged.db", bytes);
    // exitCode 2: a wrong command line, 1: a request that failed; says: a part of the message
    const struct { Strings args; int exitCode; const char *status; const char *says = ""; } cases[] = {
        {{"frobnicate"}, 2, "MDB_ERR_PARA"}, {{"init"}, 2, "MDB_ERR_PARA"}, {{"browse", fresh}, 2, "MDB_ERR_PARA"},
        {{"browse", fresh, "0", "--bogus"}, 2, "MDB_ERR_PARA"}, {{"browse", fresh, "0", "--start"}, 2, "MDB_ERR_PARA"},
        {{"browse", fresh, "0", "--count", "ten"}, 2, "MDB_ERR_PARA"},
        {{"browse", fresh, "0", "--count", "-1"}, 2, "MDB_ERR_PARA"},
        {{"browse", fresh, "0", "--format", "json"}, 2, "MDB_ERR_PARA"},
        {{"browse", fresh, "0", "--address", "not-an-address"}, 2, "MDB_ERR_PARA"},
        {{"browse", fresh, "0", "--port", "70000"}, 2, "MDB_ERR_PARA"}, {{"search", fresh, "0"}, 2, "MDB_ERR_PARA"},
        {{"scan", fresh}, 2, "MDB_ERR_PARA"}, {{"scan", fresh, media, "--batch", "0"}, 2, "MDB_ERR_PARA"},
        {{"destroy", fresh, "abc"}, 2, "MDB_ERR_PARA"}, {{"info", fresh, "0.1.264|"}, 2, "MDB_ERR_PARA"},
        {{"browse", fresh, "0"}, 1, "MDB_ERR_NOT_FOUND"}, {{"init", db}, 1, "MDB_ERR_PARA"},
        {{"init", dir.file("no-such-folder/c.db")}, 1, "MDB_ERR_DB"},
        {{"browse", text, "0"}, 1, "MDB_ERR_DB", "is not an SQLite database"},
        {{"scan", text, media}, 1, "MDB_ERR_DB", "is not an SQLite database"},
        {{"scan", damaged, media}, 1, "MDB_ERR_DB", "is damaged (PRAGMA quick_check: "},
        {{"browse", db, "0.9.9"}, 1, "MDB_ERR_NOT_FOUND"}, {{"search", db, "0", "dc:title contains"}, 1, "MDB_ERR_PARA"},
        {{"scan", db, media + "/nowhere"}, 1, "MDB_ERR_PARA"},
        {{"create", db, "<DIDL-Lite><item restricted=\"1\"/></DIDL-Lite>"}, 1, "MDB_ERR_PARA"},
        {{"info", db, "999999"}, 1, "MDB_ERR_NOT_FOUND"}, {{"destroy", db, "999999"}, 1, "MDB_ERR_NOT_FOUND"},
        {{"destroy", db}, 2, "MDB_ERR_PARA"}, {{"info", db}, 2, "MDB_ERR_PARA"},
        {{"info", db, "1", "--x"}, 2, "MDB_ERR_PARA"},
        {{"info", db, "1"}, 1, "MDB_ERR_NOT_FOUND", "names no file"},  // the root folder
        {{"browse", db, "0", "--metadata=yes"}, 2, "MDB_ERR_PARA", "takes no value"},
        {{"create", db}, 2, "MDB_ERR_PARA"}, {{"create", db, "x", "--port", "99999"}, 2, "MDB_ERR_PARA"},
        {{"create", db, "x", "--address", "nowhere"}, 2, "MDB_ERR_PARA"},
        {{"create", db, "@" + dir.file("missing.xml")}, 1, "MDB_ERR_FAIL", "cannot read"},
        {{"create", db, "x", "--upload", media + "/missing.mp3"}, 1, "MDB_ERR_PARA", "--upload needs a readable file"},
    };
    for (const auto &c : cases) {
        const std::string shown = ::testing::PrintToString(c.args);
        const ToolRun run = RunTool(c.args);
        EXPECT_EQ(run.exitCode, c.exitCode) << shown << "\n" << run.err;
        EXPECT_NE(run.err.find(c.status), npos) << shown << "\n" << run.err;
        EXPECT_NE(run.err.find(c.says), npos) << shown << "\n" << run.err;
    }
    EXPECT_FALSE(fileExists(fresh)) << "only init creates a catalogue";
}

// The scan reports its counts; browse sorts, pages, describes one object, prints a table, and
// makes resource URLs absolute with an address; titles with XML's special characters come out
// escaped; search finds by title and by class. Which folders list what is shown by the scanner
// tests and the tree walk.
TEST_F(Tool, ScanReportsAndBrowseAndSearchAnswer) {
    for (const std::string &line :
         {"created catalogue " + db, "items: " + std::to_string(kSampleItems.size()) + " added, 0 updated",
          "skipped: " + std::to_string(kSampleCorruptFiles.size()) + " unreadable or corrupt",
          "upload folder: " + media + "/upload"}) {
        EXPECT_NE(scan.out.find(line), npos) << line << " in\n" << scan.out;
    }
    EXPECT_EQ(scan.err.find('\r'), npos) << "no progress line without a terminal";
    std::filesystem::copy_file(media + "/Music/Beta/memo.wav", media + "/Music/Beta/Tom & Jerry <Live>.wav");
    ASSERT_EQ(RunTool({"scan", db, media, "--quiet"}).exitCode, 0);
    const ToolAnswer all = Ask({"browse", "0.1.256", "--sort", "-dc:title"});
    EXPECT_EQ(TitlesOf(all.objects), (Strings{"memo", "Tom & Jerry <Live>", "Third Song", "Second Song", "First Song"}));
    const ToolAnswer page = Ask({"browse", "0.1.256", "--sort", "-dc:title", "--start", "1", "--count", "2"});
    EXPECT_EQ(TitlesOf(page.objects), (Strings{"Tom & Jerry <Live>", "Third Song"}));
    EXPECT_EQ(std::to_string(all.totalMatches) + " " + std::to_string(page.totalMatches), "5 5");
    const ToolAnswer one = Ask({"browse", all.objects[1].id, "--metadata"});
    EXPECT_EQ(one.objects.at(0).element + " " + one.objects[0].title, "item Tom & Jerry <Live>");
    const ToolRun table = RunTool({"browse", db, "0.1.256", "--format", "table"});
    EXPECT_EQ(table.out.rfind("ID ", 0), 0u) << table.out;
    EXPECT_EQ(std::count(table.out.begin(), table.out.end(), '\n'), 1 + 5 + 2) << "header, objects, counters";
    EXPECT_NE(table.out.find("musicTrack"), npos) << table.out;
    const std::pair<Strings, std::string> urls[] = {
        {{}, "/web/mdb/"}, {{"--address", "192.168.1.20", "--port", "8200"}, "http://192.168.1.20:8200/web/mdb/"},
        {{"--address", "::1", "--port", "8200"}, "http://[::1]:8200/web/mdb/"},
    };
    for (const auto &[options, prefix] : urls) {
        Strings args = {"browse", "0.1.256"};
        args.insert(args.end(), options.begin(), options.end());
        for (const DidlObject &o : Ask(args).objects) EXPECT_EQ(o.res.rfind(prefix, 0), 0u) << o.res;
    }
    EXPECT_EQ(TitlesOf(Ask({"search", "0", "dc:title contains \"Song\"", "--sort", "+dc:title"}).objects),
              (Strings{"First Song", "Second Song", "Third Song"}));
    EXPECT_EQ(Ask({"search", "0", "upnp:class derivedfrom \"object.item.videoItem\""}).totalMatches, 2);
}

TEST_F(Tool, CreateInfoAndDestroyOnlyWhatWasUploaded) {
    const std::string elements =
        "<DIDL-Lite><item id=\"\" parentID=\"0.1.264\" restricted=\"0\"><dc:title>memo</dc:title>"
        "<upnp:class>object.item.audioItem.musicTrack</upnp:class>"
        "<res protocolInfo=\"http-get:*:audio/mpeg:DLNA.ORG_PN=MP3\"/></item></DIDL-Lite>";
    const ToolRun created = RunTool({"create", db, "-", "--upload", media + "/Music/Alpha/One.mp3"}, elements);
    ASSERT_EQ(created.exitCode, 0) << created.err << created.out;
    const std::string::size_type at = created.out.find("ObjectID: 0.1.264|");
    ASSERT_NE(at, npos) << created.out;
    const std::string id = std::to_string(atoll(created.out.c_str() + at + 18));
    const std::string uploaded = media + "/upload/memo.mp3";
    EXPECT_TRUE(fileExists(uploaded));
    const ToolRun info = RunTool({"info", db, "0.1.264|" + id});
    for (const std::string &line : {"path: " + uploaded + "\n", std::string("MIME type: audio/mpeg\n"),
                                    std::string("DLNA profile: MP3\n"), std::string("DLNA.ORG_OP: ")}) {
        EXPECT_NE(info.out.find(line), npos) << line << " in\n" << info.out << info.err;
    }
    const ToolAnswer item = Ask({"browse", "0.1.264|" + id, "--metadata"});
    ASSERT_EQ(item.objects.size(), 1u);
    EXPECT_EQ(item.objects[0].res, "/web/mdb/" + id + ".mp3") << "the upload is complete: a plain resource";
    EXPECT_EQ(item.objects[0].restricted, "0") << "a client's upload is the client's to destroy";

    // Scanned objects, an item, a folder and a root, are restricted: refused with 711, and nothing
    // of them goes, neither a file nor a row.
    const ToolAnswer all = Ask({"browse", "0.1.256"}), roots = Ask({"browse", "0.1.264"});
    ASSERT_FALSE(roots.objects.empty());
    const ToolAnswer folders = Ask({"browse", roots.objects[0].id});
    auto track = std::find_if(all.objects.begin(), all.objects.end(),
                              [](const DidlObject &o) { return o.title == "First Song"; });
    auto folder = std::find_if(folders.objects.begin(), folders.objects.end(),
                               [](const DidlObject &o) { return o.title == "Music"; });
    ASSERT_TRUE(track != all.objects.end() && folder != folders.objects.end());
    const std::string rowsBefore = RunTool({"search", db, "0", "*", "--format", "table", "--count", "0"}).out;
    for (const DidlObject &o : {*track, *folder, roots.objects[0]}) {
        SCOPED_TRACE(o.title);
        const ToolAnswer shown = Ask({"browse", o.id, "--metadata"});
        ASSERT_EQ(shown.objects.size(), 1u);
        EXPECT_EQ(shown.objects[0].restricted, "1");
        const ToolRun refused = RunTool({"destroy", db, o.id});
        EXPECT_EQ(refused.exitCode, 1);
        EXPECT_NE(refused.err.find("MDB_UPNP_ERR_RESTRICTED_OBJECT"), npos) << refused.err;
        EXPECT_EQ(RunTool({"destroy", db, o.id, "--force"}).exitCode, 2) << "no option lifts the guard";
    }
    EXPECT_TRUE(fileExists(media + "/Music/Alpha/One.mp3"));
    EXPECT_EQ(RunTool({"search", db, "0", "*", "--format", "table", "--count", "0"}).out, rowsBefore);

    const ToolRun destroyed = RunTool({"destroy", db, id});
    EXPECT_EQ(destroyed.exitCode, 0) << destroyed.err;
    EXPECT_FALSE(fileExists(uploaded));
    EXPECT_NE(RunTool({"info", db, id}).err.find("MDB_ERR_NOT_FOUND"), npos) << "the row went with the file";
}

}  // namespace
}  // namespace mdbtest
