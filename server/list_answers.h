// Browse and Search as mdbd answers them: the library called exactly as its contract says (filter
// and sort converted by the library, a fresh DIDL-Lite document per request, every call that
// reads the catalogue under the library mutex), and mended around the call where the contract
// answers in a way that clients misread. Folder and all-items lists go to the library's row
// workers directly, so that their totals can be kept (list_cache.h). Each mend is described where
// it is made, in list_answers.cpp.
#pragma once

#include <cstdint>
#include <string>

namespace mdbd {

// RequestedCount 0 means "all" to a client; mdbd answers at most this many objects at once
// (also when more are asked for), and TotalMatches tells the client to ask for the rest. A page
// of 1000 objects is about 600 KB of DIDL-Lite: large answers are what small devices run out of
// memory on, and clients that ask for 0, 200 or 5000 all page on.
constexpr uint32_t kMaxObjectsPerAnswer = 1000;

struct ListRequest {
    std::string objectId;     // Browse: ObjectID; Search: ContainerID
    bool metadata = false;    // Browse: BrowseMetadata rather than BrowseDirectChildren
    std::string criteria;     // Search: SearchCriteria
    std::string filter;
    std::string sort;         // SortCriteria
    uint32_t start = 0;       // StartingIndex
    uint32_t count = 0;       // RequestedCount
};

struct ListAnswer {
    int error = 0;            // a UPnP error code, 0 on success
    const char *errorText = "";
    std::string result;       // the DIDL-Lite text
    uint32_t returned = 0;
    uint32_t total = 0;
};

ListAnswer AnswerBrowse(const ListRequest &request);
ListAnswer AnswerSearch(const ListRequest &request);

}  // namespace mdbd
