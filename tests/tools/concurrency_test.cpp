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

std::string Count(const std::string &db, const std::string &criteria) {
    ToolRun run = RunTool({"search", db, "0", criteria, "--count", "1"}, "", kRunSeconds);
    return std::to_string(ReadAnswer(run.out).totalMatches);
}

// Two scans of a second root find the same new files while other processes upload into the first
// and destroy, browse and search.
TEST(Concurrency, TwoScansAndRequestsOfOtherProcessesShareOneCatalogue) {
    TempDir dir;
    const std::string media = CopySampleTree(dir.path()), db = dir.file("catalogue.db"), more = dir.mkdir("more");
    ASSERT_EQ(RunTool({"scan", db, media, "--quiet"}).exitCode, 0);
    const std::string track = std::string(MDB_TEST_SAMPLE_TREE) + "/Music/Alpha/One.mp3";
    const int folders = 20, files = 20;
    for (int f = 0; f < folders; ++f) {
        const std::string folder = more + "/f" + std::to_string(f);
        fs::create_directories(folder);
        for (int i = 0; i < files; ++i) fs::copy_file(track, folder + "/t" + std::to_string(i) + ".mp3");
    }
    std::atomic<int> scanning{2};
    ToolRun scans[2];
    std::vector<std::thread> threads;
    for (ToolRun &scan : scans) {
        threads.emplace_back([&] {
            scan = RunTool({"scan", db, more, "--quiet", "--batch", "1"}, "", kRunSeconds);
            --scanning;
        });
    }
    const std::string elements =
        "<DIDL-Lite><item id=\"\" parentID=\"0\" restricted=\"0\"><dc:title>memo</dc:title>"
        "<upnp:class>object.item.audioItem.musicTrack</upnp:class>"
        "<res protocolInfo=\"http-get:*:audio/mpeg:DLNA.ORG_PN=MP3\"/></item></DIDL-Lite>";
    int uploads = 0, requests = 0;
    threads.emplace_back([&] {  // one process after another uploads and destroys
        for (; uploads < 200 && scanning > 0; ++uploads) {
            ToolRun created = RunTool({"create", db, elements}, "", kRunSeconds);
            const std::string::size_type at = created.out.find("ObjectID: 0.1.264|");
            ASSERT_TRUE(created.exitCode == 0 && at != std::string::npos) << created.err;
            const std::string id = created.out.substr(at + 10, created.out.find('\n', at) - at - 10);
            ToolRun destroyed = RunTool({"destroy", db, id}, "", kRunSeconds);
            ASSERT_EQ(destroyed.exitCode, 0) << destroyed.err;
        }
    });
    for (; requests < 400 && scanning > 0; ++requests) {
        ToolRun browsed = RunTool({"browse", db, "0.1.264", "--format", "table"}, "", kRunSeconds);
        ASSERT_EQ(browsed.exitCode, 0) << browsed.err;
        ToolRun searched = RunTool({"search", db, "0", "dc:title contains \"o\"", "--count", "5"}, "", kRunSeconds);
        ASSERT_EQ(searched.exitCode, 0) << searched.err;
    }
    for (std::thread &t : threads) t.join();
    for (const ToolRun &scan : scans) EXPECT_EQ(scan.exitCode, 0) << scan.err;
    EXPECT_GT(uploads, 0);
    EXPECT_GT(requests, 0);
    EXPECT_EQ(Count(db, "upnp:class derivedfrom \"object.item\""), std::to_string(folders * files + kSampleItems.size()));
    EXPECT_EQ(Count(db, "upnp:class = \"object.container.storageFolder\""),
              std::to_string(kSampleFolders.size() + 1 + folders));
}

}  // namespace
}  // namespace mdbtest
