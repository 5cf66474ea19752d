// The mdb tool end to end: help and usage errors, a catalogue made and scanned, Browse and Search
// answers as well-formed DIDL-Lite with their counters, and the upload story (create, info,
// destroy) with its guard on files outside the upload folder.
#include "sample_tree.h"
#include "temp_dir.h"
#include "tool_runner.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <cstdlib>

namespace mdbtest {
namespace {

const char *const kCommands[] = {"init", "scan", "browse", "search", "create", "destroy", "info"};

bool Exists(const std::string &path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0;
}

TEST(ToolHelp, EveryCommandExplainsItself) {
    ProcessResult overview = RunTool({"--help"});
    EXPECT_EQ(overview.exitCode, 0);
    for (const char *command : kCommands) {
        SCOPED_TRACE(command);
        EXPECT_NE(overview.out.find(std::string("  ") + command + " "), std::string::npos) << overview.out;
        ProcessResult help = RunTool({command, "--help"});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_EQ(help.out.rfind(std::string("usage: mdb ") + command, 0), 0u) << help.out;
    }
    EXPECT_NE(RunTool({"create", "--help"}).out.find("gone when the command ends"), std::string::npos)
        << "create says that its upload note does not outlive it";
    EXPECT_EQ(RunTool({}).exitCode, 2);
}

TEST(ToolUsage, WrongCommandLinesNameTheStatusAndExitWith2) {
    TempDir dir;
    const std::string db = dir.file("c.db");
    const std::vector<std::vector<std::string>> lines = {
        {"frobnicate"},
        {"browse", db},
        {"browse", db, "0", "--bogus"},
        {"browse", db, "0", "--count", "ten"},
        {"browse", db, "0", "--count", "-1"},
        {"browse", db, "0", "--start"},
        {"browse", db, "0", "--format", "json"},
        {"browse", db, "0", "--address", "not-an-address"},
        {"browse", db, "0", "--port", "70000"},
        {"search", db, "0"},
        {"scan", db},
        {"scan", db, dir.path(), "--batch", "0"},
        {"destroy", db, "abc"},
        {"info", db, "0.1.264|"},
        {"init"},
    };
    for (const auto &line : lines) {
        std::string shown;
        for (const std::string &arg : line) {
            shown += arg + " ";
        }
        SCOPED_TRACE(shown);
        ProcessResult r = RunTool(line);
        EXPECT_EQ(r.exitCode, 2) << r.err;
        EXPECT_NE(r.err.find("MDB_ERR_PARA"), std::string::npos) << r.err;
    }
    EXPECT_FALSE(Exists(db)) << "no wrong command line creates the catalogue";
}

TEST(ToolInit, MakesACatalogueOnceAndOpensOnlyCatalogues) {
    TempDir dir;
    const std::string db = dir.file("c.db");
    ProcessResult missing = RunTool({"browse", db, "0"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_NE(missing.err.find("MDB_ERR_NOT_FOUND"), std::string::npos) << missing.err;
    EXPECT_FALSE(Exists(db)) << "browse never creates a catalogue";

    ProcessResult init = RunTool({"init", db});
    ASSERT_EQ(init.exitCode, 0) << init.err;
    EXPECT_TRUE(Exists(db));
    ProcessResult again = RunTool({"init", db});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_NE(again.err.find("MDB_ERR_PARA"), std::string::npos) << again.err;

    ToolAnswer empty = ReadAnswer(RunTool({"browse", db, "0.1.264"}).out);
    EXPECT_TRUE(empty.parsed) << empty.parseError;
    EXPECT_EQ(empty.numberReturned, 0);
    EXPECT_EQ(empty.totalMatches, 0);

    const std::string nowhere = dir.file("no-such-folder/c.db");
    ProcessResult unwritable = RunTool({"init", nowhere});
    EXPECT_EQ(unwritable.exitCode, 1);
    EXPECT_NE(unwritable.err.find("MDB_ERR_DB"), std::string::npos) << unwritable.err;

    const std::string text = dir.write("notes.db", "this is not a database of any kind, just text\n");
    ProcessResult notCatalogue = RunTool({"browse", text, "0"});
    EXPECT_EQ(notCatalogue.exitCode, 1);
    EXPECT_NE(notCatalogue.err.find("MDB_ERR_DB"), std::string::npos) << notCatalogue.err;
}

class ToolOnSampleTree : public ::testing::Test {
protected:
    void SetUp() override {
        std::string made = dir.mkdir("media");
        char real[PATH_MAX];
        ASSERT_NE(realpath(made.c_str(), real), nullptr);
        media = real;
        CopySampleTree(media);
        db = dir.file("catalogue.db");
        ProcessResult scan = RunTool({"scan", db, media, "--quiet"});
        ASSERT_EQ(scan.exitCode, 0) << scan.err;
        scanOutput = scan.out;
        scanMessages = scan.err;
    }

    ToolAnswer Browse(std::vector<std::string> args) {
        args.insert(args.begin(), {"browse", db});
        ProcessResult r = RunTool(args);
        EXPECT_EQ(r.exitCode, 0) << r.err;
        ToolAnswer answer = ReadAnswer(r.out);
        EXPECT_TRUE(answer.parsed) << answer.parseError << "\n" << r.out;
        EXPECT_EQ(answer.numberReturned, static_cast<long long>(answer.objects.size())) << r.out;
        return answer;
    }

    // The object id of the root folder row in the music folder view.
    std::string MusicRootId() {
        ToolAnswer roots = Browse({"0.1.264"});
        return roots.objects.empty() ? std::string() : roots.objects[0].id;
    }

    TempDir dir;
    std::string media;
    std::string db;
    std::string scanOutput;
    std::string scanMessages;
};

TEST_F(ToolOnSampleTree, ScanReportsWhatItCounted) {
    EXPECT_NE(scanOutput.find("created catalogue " + db), std::string::npos) << scanOutput;
    EXPECT_NE(scanOutput.find("items: " + std::to_string(SampleItems().size()) + " added, 0 updated"),
              std::string::npos)
        << scanOutput;
    EXPECT_NE(scanOutput.find("skipped: " + std::to_string(SampleCorruptFiles().size()) + " unreadable or corrupt"),
              std::string::npos)
        << scanOutput;
    EXPECT_NE(scanOutput.find("upload folder: " + media + "/upload"), std::string::npos) << scanOutput;
    EXPECT_EQ(scanMessages.find("\r"), std::string::npos) << "no progress line without a terminal";
    ProcessResult again = RunTool({"scan", db, media, "--quiet"});
    EXPECT_NE(again.out.find("0 added, 0 updated, " + std::to_string(SampleItems().size()) + " unchanged"),
              std::string::npos)
        << again.out;
    ProcessResult missing = RunTool({"scan", db, media + "/nowhere"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_NE(missing.err.find("MDB_ERR_PARA"), std::string::npos) << missing.err;
}

TEST_F(ToolOnSampleTree, BrowseWalksTheFolderTreeOfAMediaClass) {
    ToolAnswer roots = Browse({"0.1.264"});
    ASSERT_EQ(roots.objects.size(), 1u);
    EXPECT_EQ(roots.totalMatches, 1);
    EXPECT_EQ(roots.objects[0].title, media.substr(media.find_last_of('/') + 1));
    ToolAnswer top = Browse({roots.objects[0].id});
    ASSERT_EQ(top.objects.size(), 1u) << "only Music holds music; Video, Pictures and upload don't show";
    EXPECT_EQ(top.objects[0].title, "Music");
    EXPECT_EQ(top.objects[0].element, "container");
    ToolAnswer music = Browse({top.objects[0].id, "--sort", "+dc:title"});
    std::vector<std::string> titles;
    for (const DidlObject &o : music.objects) {
        titles.push_back(o.title);
    }
    EXPECT_EQ(titles, (std::vector<std::string>{"Alpha", "Beta"}));
}

TEST_F(ToolOnSampleTree, BrowsePagesSortsAndDescribes) {
    ToolAnswer all = Browse({"0.1.256", "--sort", "-dc:title"});
    ASSERT_EQ(all.objects.size(), 4u);
    EXPECT_EQ(all.totalMatches, 4);
    EXPECT_TRUE(std::is_sorted(all.objects.begin(), all.objects.end(),
                               [](const DidlObject &a, const DidlObject &b) { return a.title > b.title; }));
    ToolAnswer page = Browse({"0.1.256", "--sort", "-dc:title", "--start", "1", "--count", "2"});
    ASSERT_EQ(page.objects.size(), 2u);
    EXPECT_EQ(page.totalMatches, 4);
    EXPECT_EQ(page.objects[0].id, all.objects[1].id);
    EXPECT_EQ(page.objects[1].id, all.objects[2].id);
    ToolAnswer one = Browse({all.objects[0].id, "--metadata"});
    ASSERT_EQ(one.objects.size(), 1u);
    EXPECT_EQ(one.objects[0].element, "item");
    EXPECT_EQ(one.objects[0].title, all.objects[0].title);

    ProcessResult table = RunTool({"browse", db, "0.1.256", "--format", "table"});
    ASSERT_EQ(table.exitCode, 0) << table.err;
    EXPECT_EQ(std::count(table.out.begin(), table.out.end(), '\n'), 1 + 4 + 2) << "header, objects, counters\n"
                                                                                   << table.out;
    EXPECT_EQ(table.out.rfind("ID ", 0), 0u) << table.out;
    EXPECT_NE(table.out.find("musicTrack"), std::string::npos) << table.out;

    ProcessResult unknown = RunTool({"browse", db, "0.9.9"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_NE(unknown.err.find("MDB_ERR_NOT_FOUND"), std::string::npos) << unknown.err;
}

TEST_F(ToolOnSampleTree, ResourceUrlsFollowTheAddressGiven) {
    const struct {
        std::vector<std::string> options;
        std::string prefix;
    } cases[] = {
        {{}, "/web/mdb/"},
        {{"--address", "192.168.1.20", "--port", "8200"}, "http://192.168.1.20:8200/web/mdb/"},
        {{"--address", "::1", "--port", "8200"}, "http://[::1]:8200/web/mdb/"},
    };
    for (const auto &c : cases) {
        std::vector<std::string> args = {"0.1.256"};
        args.insert(args.end(), c.options.begin(), c.options.end());
        ToolAnswer answer = Browse(args);
        ASSERT_FALSE(answer.objects.empty());
        for (const DidlObject &o : answer.objects) {
            EXPECT_EQ(o.res.rfind(c.prefix, 0), 0u) << o.res;
        }
    }
}

TEST_F(ToolOnSampleTree, CategoriesListTheirValues) {
    ToolAnswer artists = Browse({"0.1.258"});
    std::vector<std::string> names;
    for (const DidlObject &o : artists.objects) {
        names.push_back(o.title);
    }
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"Alpha Band", "Beta"})) << "only artists of music items";
    for (const DidlObject &o : artists.objects) {
        if (o.title == "Alpha Band") {
            ToolAnswer songs = Browse({o.id});
            EXPECT_EQ(songs.totalMatches, 2);
        }
    }
}

TEST_F(ToolOnSampleTree, SearchAnswersAndRefusesBadCriteria) {
    ProcessResult r = RunTool({"search", db, "0", "dc:title contains \"Song\"", "--sort", "+dc:title"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    ToolAnswer songs = ReadAnswer(r.out);
    ASSERT_TRUE(songs.parsed) << songs.parseError;
    std::vector<std::string> titles;
    for (const DidlObject &o : songs.objects) {
        titles.push_back(o.title);
    }
    EXPECT_EQ(titles, (std::vector<std::string>{"First Song", "Second Song", "Third Song"}));
    EXPECT_EQ(songs.totalMatches, 3);

    ProcessResult video = RunTool({"search", db, "0", "upnp:class derivedfrom \"object.item.videoItem\""});
    ToolAnswer videos = ReadAnswer(video.out);
    EXPECT_EQ(videos.totalMatches, 2) << video.out << video.err;

    ProcessResult bad = RunTool({"search", db, "0", "dc:title contains"});
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_NE(bad.err.find("MDB_ERR_PARA"), std::string::npos) << bad.err;
}

TEST_F(ToolOnSampleTree, CreateInfoAndDestroyAnUpload) {
    const std::string elements =
        "<DIDL-Lite><item id=\"\" parentID=\"0.1.264\" restricted=\"0\"><dc:title>memo</dc:title>"
        "<upnp:class>object.item.audioItem.musicTrack</upnp:class>"
        "<res protocolInfo=\"http-get:*:audio/mpeg:DLNA.ORG_PN=MP3\"/></item></DIDL-Lite>";
    ProcessResult created = RunTool({"create", db, "-", "--upload", media + "/Music/Alpha/One.mp3"}, elements);
    ASSERT_EQ(created.exitCode, 0) << created.err << created.out;
    std::string::size_type at = created.out.find("ObjectID: 0.1.264|");
    ASSERT_NE(at, std::string::npos) << created.out;
    const std::string id = std::to_string(atoll(created.out.c_str() + at + 18));
    const std::string uploaded = media + "/upload/memo.mp3";
    EXPECT_TRUE(Exists(uploaded));

    ProcessResult info = RunTool({"info", db, "0.1.264|" + id});
    ASSERT_EQ(info.exitCode, 0) << info.err;
    EXPECT_NE(info.out.find("path: " + uploaded + "\n"), std::string::npos) << info.out;
    EXPECT_NE(info.out.find("MIME type: audio/mpeg\n"), std::string::npos) << info.out;
    EXPECT_NE(info.out.find("DLNA profile: MP3\n"), std::string::npos) << info.out;
    EXPECT_NE(info.out.find("DLNA.ORG_OP: "), std::string::npos) << info.out;

    ToolAnswer item = Browse({"0.1.264|" + id, "--metadata"});
    ASSERT_EQ(item.objects.size(), 1u);
    EXPECT_EQ(item.objects[0].res, "/web/mdb/" + id + ".mp3") << "the upload is complete: a plain resource";

    ProcessResult destroyed = RunTool({"destroy", db, id});
    ASSERT_EQ(destroyed.exitCode, 0) << destroyed.err;
    EXPECT_FALSE(Exists(uploaded));
    ProcessResult gone = RunTool({"info", db, id});
    EXPECT_EQ(gone.exitCode, 1);
    EXPECT_NE(gone.err.find("MDB_ERR_NOT_FOUND"), std::string::npos) << gone.err;
}

TEST_F(ToolOnSampleTree, DestroyGuardsFilesOutsideTheUploadFolder) {
    ToolAnswer all = Browse({"0.1.256"});
    ASSERT_FALSE(all.objects.empty());
    const std::string id = all.objects[0].id;
    ProcessResult info = RunTool({"info", db, id});
    std::string::size_type at = info.out.find("path: ");
    ASSERT_NE(at, std::string::npos) << info.out;
    const std::string path = info.out.substr(at + 6, info.out.find('\n', at) - at - 6);
    ASSERT_TRUE(Exists(path)) << path;

    ProcessResult refused = RunTool({"destroy", db, id});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(refused.err.find("MDB_ERR_PARA"), std::string::npos) << refused.err;
    EXPECT_NE(refused.err.find("--force"), std::string::npos) << refused.err;
    EXPECT_TRUE(Exists(path));

    ToolAnswer folders = Browse({MusicRootId()});
    ASSERT_FALSE(folders.objects.empty());
    ProcessResult folder = RunTool({"destroy", db, folders.objects[0].id, "--force"});
    EXPECT_EQ(folder.exitCode, 1) << "folders are never destroyed";

    ProcessResult forced = RunTool({"destroy", db, id, "--force"});
    EXPECT_EQ(forced.exitCode, 0) << forced.err;
    EXPECT_FALSE(Exists(path));
    EXPECT_EQ(Browse({"0.1.256"}).totalMatches, static_cast<long long>(all.objects.size()) - 1);
}

TEST_F(ToolOnSampleTree, CreateRefusesABadDescription) {
    ProcessResult r = RunTool({"create", db, "<DIDL-Lite><item restricted=\"1\"/></DIDL-Lite>"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("MDB_ERR_PARA"), std::string::npos) << r.err;
}

}  // namespace
}  // namespace mdbtest
