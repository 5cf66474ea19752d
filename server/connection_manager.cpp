// The ConnectionManager actions.
#include "connection_manager.h"

#include "service_ids.h"
#include "soap.h"

#include <mdb_platform.h>

#include <set>

namespace mdbd {

namespace {

// Profiles of one media format family are numbered from 0 up, without gaps, below this.
constexpr uint32_t kProfilesPerFamily = 60;

}  // namespace

const std::string &SourceProtocolInfo() {
    static const std::string s_source = [] {
        std::string source;
        std::set<std::string> seen;
        for (uint32_t i = 0; i < g_ulNumOfMediaClasses; ++i) {
            for (uint32_t j = 0; j < kProfilesPerFamily; ++j) {
                char info[512];
                if (QRV_MDB_GetProtocolInfo(g_astMediaClasses[i].ulFlagsCode + (j << 16), info, sizeof info) != MDB_OK) {
                    break;
                }
                if (seen.insert(info).second) {
                    source += (source.empty() ? "" : ",") + std::string(info);
                }
            }
        }
        return source;
    }();
    return s_source;
}

void HandleConnectionManager(UpnpActionRequest *request) {
    const std::string action = UpnpActionRequest_get_ActionName_cstr(request);
    if (action == "GetProtocolInfo") {
        Answer(request, kConnectionManagerType, {{"Source", SourceProtocolInfo()}, {"Sink", ""}});
    } else if (action == "GetCurrentConnectionIDs") {
        Answer(request, kConnectionManagerType, {{"ConnectionIDs", "0"}});
    } else if (action == "GetCurrentConnectionInfo") {
        std::string id;
        if (!ActionArguments(request).Text("ConnectionID", id)) {
            AnswerError(request, kInvalidArgs, "Invalid Args");
        } else if (id != "0") {
            AnswerError(request, 706, "Invalid connection reference");
        } else {
            Answer(request, kConnectionManagerType,
                   {{"RcsID", "-1"}, {"AVTransportID", "-1"}, {"ProtocolInfo", ""}, {"PeerConnectionManager", ""},
                    {"PeerConnectionID", "-1"}, {"Direction", "Output"}, {"Status", "OK"}});
        }
    } else {
        AnswerError(request, kInvalidAction, "Invalid Action");
    }
}

}  // namespace mdbd
