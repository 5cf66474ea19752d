// Several mdb processes on one catalogue at once, as a media server, a scanner and a user's tool
// share it: every run ends (each is bounded in time), every call succeeds, and a file is never
// catalogued twice.
#include "sample_tree.h"
#include "temp_dir.h"
#include "tool_runner.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <thread>

namespace mdbtest {
namespace {

namespace fs = std::filesystem;

constexpr int kRunSeconds = 90;

// Adds folders*files copies of one track below dir/name; returns how many files it made.
int AddCopies(const std::string &dir, const std::string &name, int folders, int files) {
    const std::string track = std::string(MDB_TEST_SAMPLE_TREE) + "/Music/Alpha/One.mp3";
    for (int f = 0; f < folders; ++f) {
        const std::string folder = dir + "/" + name + "/f" + std::to_string(f);
        fs::create_directories(folder);
        for (int i = 0; i < files; ++i) fs::copy_file(track, folder + "/t" + std::to_string(i) + ".mp3");
    }
    return folders * files;
}

std::string Count(const std::string &db, const std::string &criteria) {
    ToolRun run = RunTool({"search", db, "0", criteria, "--count", "1"}, "", kRunSeconds);
    return std::to_string(ReadAnswer(run.out).totalMatches);
}

TEST(Concurrency, TwoScansOfOneCatalogueBothEndAndCatalogueEachFileOnce) {
    TempDir dir;
    const std::string media = CopySampleTree(dir.path());
    const int copies = AddCopies(media, "Copies", 12, 12);
    const std::string db = dir.file("catalogue.db");
    ASSERT_EQ(RunTool({"init", db}).exitCode, 0);
    ToolRun first, second;
    std::thread other([&] { second = RunTool({"scan", db, media, "--quiet", "--batch", "1"}, "", kRunSeconds); });
    first = RunTool({"scan", db, media, "--quiet", "--batch", "1"}, "", kRunSeconds);
    other.join();
    EXPECT_EQ(first.exitCode, 0) << first.err;
    EXPECT_EQ(second.exitCode, 0) << second.err;
    const std::string items = std::to_string(copies + static_cast<int>(kSampleItems.size()));
    EXPECT_EQ(Count(db, "upnp:class derivedfrom \"object.item\""), items);
    EXPECT_EQ(Count(db, "upnp:class = \"object.container.storageFolder\""),
              std::to_string(kSampleFolders.size() + 1 + 12));
}

TEST(Concurrency, RequestsFromOtherProcessesSucceedWhileAScanWrites) {
    TempDir dir;
    const std::string media = CopySampleTree(dir.path());
    const std::string db = dir.file("catalogue.db");
    ASSERT_EQ(RunTool({"scan", db, media, "--quiet"}).exitCode, 0);
    const std::string more = dir.mkdir("more");
    const int copies = AddCopies(more, "Copies", 30, 20);
    std::atomic<bool> scanning{true};
    ToolRun scan;
    std::thread scanner([&] {
        scan = RunTool({"scan", db, more, "--quiet", "--batch", "1"}, "", kRunSeconds);
        scanning = false;
    });
    // One process after another uploads and destroys, while others browse and search.
    const std::string elements =
        "<DIDL-Lite><item id=\"\" parentID=\"0\" restricted=\"0\"><dc:title>memo</dc:title>"
        "<upnp:class>object.item.audioItem.musicTrack</upnp:class>"
        "<res protocolInfo=\"http-get:*:audio/mpeg:DLNA.ORG_PN=MP3\"/></item></DIDL-Lite>";
    int uploads = 0;
    std::thread uploader([&] {
        for (; uploads < 200 && scanning; ++uploads) {
            ToolRun created = RunTool({"create", db, elements}, "", kRunSeconds);
            const std::string::size_type at = created.out.find("ObjectID: 0.1.264|");
            ASSERT_TRUE(created.exitCode == 0 && at != std::string::npos) << created.err;
            const std::string id = created.out.substr(at + 10, created.out.find('\n', at) - at - 10);
            ToolRun destroyed = RunTool({"destroy", db, id}, "", kRunSeconds);
            ASSERT_EQ(destroyed.exitCode, 0) << destroyed.err;
        }
    });
    int requests = 0;
    for (; requests < 400 && scanning; ++requests) {
        ToolRun browsed = RunTool({"browse", db, "0.1.264", "--format", "table"}, "", kRunSeconds);
        ASSERT_EQ(browsed.exitCode, 0) << browsed.err;
        ToolRun searched = RunTool({"search", db, "0", "dc:title contains \"o\"", "--count", "5"}, "", kRunSeconds);
        ASSERT_EQ(searched.exitCode, 0) << searched.err;
    }
    uploader.join();
    scanner.join();
    EXPECT_EQ(scan.exitCode, 0) << scan.err;
    EXPECT_GT(uploads, 0);
    EXPECT_GT(requests, 0);
    EXPECT_EQ(Count(db, "upnp:class derivedfrom \"object.item\""), std::to_string(copies + kSampleItems.size()));
}

}  // namespace
}  // namespace mdbtest
