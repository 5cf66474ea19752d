// A catalogue with a copy of the sample media tree beside it, scanned with the media scanner, and
// lookups of the rows the scan made by their path below the tree.
#pragma once

#include "catalogue.h"
#include "sample_tree.h"

#include <media_scanner.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace mdbtest {

class ScanFixture : public ::testing::Test {
protected:
    void SetUp() override;

    // Scans the given directories (default: the tree); the scanner's messages are kept in messages.
    uint32_t Scan(const std::vector<std::string> &dirs = {}, uint32_t batchSize = 1000);
    // The id of the row for a path below the tree ("" is the root row), or -1.
    long long IdOf(const std::string &rel);
    // The whole row of a path below the tree; fails the test when there is none.
    MdbItemDetail Row(const std::string &rel);
    std::string Absolute(const std::string &rel) const { return rel.empty() ? media : media + "/" + rel; }
    long long ItemCount() { return std::stoll(catalogue.scalar("select count(*) from ITEM")); }

    Catalogue catalogue;
    std::string media;  // the tree's copy (real path)
    mdbscan::ScanCounts counts;
    std::vector<mdbscan::SkippedFile> skipped;
    std::string messages;
};

}  // namespace mdbtest
