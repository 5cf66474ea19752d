// The ContentDirectory actions.
#include "content_directory.h"

#include "eventing.h"
#include "list_answers.h"
#include "log.h"
#include "service_ids.h"
#include "soap.h"
#include "upload_actions.h"

#include <mdb_platform.h>

#include <arpa/inet.h>

#include <chrono>
#include <cstring>
#include <string>

namespace mdbd {

namespace {

/* The properties of the table that criteria can compare (those with an operator recognizer). */
std::string SearchCapabilities() {
    std::string caps;
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        if (g_astDlnaCols[i].pfnSearchValue != nullptr && g_astDlnaCols[i].pcPropName != nullptr) {
            caps += (caps.empty() ? "" : ",") + std::string(g_astDlnaCols[i].pcPropName);
        }
    }
    return caps;
}

/* The properties the library sorts by: every one that is not for containers only and that a
 * filter may name. */
std::string SortCapabilities() {
    std::string caps;
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        const MdbDlnaCol &col = g_astDlnaCols[i];
        if ((col.usFlags & (MDB_COL_CONTAINER_ONLY | MDB_COL_NOT_FILTERED)) == 0 && col.pcPropName != nullptr) {
            caps += (caps.empty() ? "" : ",") + std::string(col.pcPropName);
        }
    }
    return caps;
}

/* Samsung's feature list: where the TV finds audio, video and pictures. */
std::string FeatureList() {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
           "<Features xmlns=\"urn:schemas-upnp-org:av:avs\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
           "xsi:schemaLocation=\"urn:schemas-upnp-org:av:avs http://www.upnp.org/schemas/av/avs.xsd\">"
           "<Feature name=\"samsung.com_BASICVIEW\" version=\"1\">"
           "<container id=\"0.1\" type=\"object.item.audioItem\"/>"
           "<container id=\"0.2\" type=\"object.item.videoItem\"/>"
           "<container id=\"0.3\" type=\"object.item.imageItem\"/>"
           "</Feature></Features>";
}

/* The control point's address, for the log. */
std::string ClientAddress(const UpnpActionRequest *request) {
    const struct sockaddr_storage *address = UpnpActionRequest_get_CtrlPtIPAddr(request);
    char text[INET6_ADDRSTRLEN] = "?";
    if (address->ss_family == AF_INET) {
        inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in *>(address)->sin_addr, text, sizeof text);
    } else if (address->ss_family == AF_INET6) {
        inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6 *>(address)->sin6_addr, text, sizeof text);
    }
    return text;
}

/* Reads the arguments a Browse and a Search share. false (402 answered) when one is missing or
 * StartingIndex or RequestedCount is no number. */
bool ReadListArguments(UpnpActionRequest *request, const char *idName, ListRequest &list) {
    ActionArguments args(request);
    if (!args.Text(idName, list.objectId) || !args.Text("Filter", list.filter) ||
        !args.Text("SortCriteria", list.sort) || !args.Number("StartingIndex", list.start) ||
        !args.Number("RequestedCount", list.count)) {
        AnswerError(request, kInvalidArgs, "Invalid Args");
        return false;
    }
    return true;
}

}  // namespace

void ContentDirectory::Handle(UpnpActionRequest *request) {
    const std::string action = UpnpActionRequest_get_ActionName_cstr(request);
    if (action == "Browse") {
        Browse(request);
    } else if (action == "Search") {
        Search(request);
    } else if (action == "CreateObject") {
        m_uploads.CreateObject(request);
    } else if (action == "DestroyObject") {
        m_uploads.DestroyObject(request);
    } else if (action == "GetSearchCapabilities") {
        Answer(request, kContentDirectoryType, {{"SearchCaps", SearchCapabilities()}});
    } else if (action == "GetSortCapabilities") {
        Answer(request, kContentDirectoryType, {{"SortCaps", SortCapabilities()}});
    } else if (action == "GetSystemUpdateID") {
        Answer(request, kContentDirectoryType, {{"Id", std::to_string(m_eventing.SystemUpdateId())}});
    } else if (action == "X_GetFeatureList") {
        Answer(request, kContentDirectoryType, {{"FeatureList", FeatureList()}});
    } else {
        AnswerError(request, kInvalidAction, "Invalid Action");
    }
}

void ContentDirectory::Browse(UpnpActionRequest *request) {
    ListRequest list;
    std::string flag;
    if (!ReadListArguments(request, "ObjectID", list)) {
        return;
    }
    if (!ActionArguments(request).Text("BrowseFlag", flag) ||
        (flag != "BrowseMetadata" && flag != "BrowseDirectChildren")) {
        AnswerError(request, kInvalidArgs, "Invalid Args");
        return;
    }
    list.metadata = flag == "BrowseMetadata";
    AnswerList(request, list, AnswerBrowse, list.metadata ? "metadata" : "children");
}

void ContentDirectory::Search(UpnpActionRequest *request) {
    ListRequest list;
    if (!ReadListArguments(request, "ContainerID", list)) {
        return;
    }
    if (!ActionArguments(request).Text("SearchCriteria", list.criteria)) {
        AnswerError(request, kInvalidArgs, "Invalid Args");
        return;
    }
    AnswerList(request, list, AnswerSearch, ("[" + list.criteria + "]").c_str());
}

/* Answers a Browse or Search with Result, NumberReturned, TotalMatches and UpdateID (the
 * SystemUpdateID: mdbd keeps no update ids per container), or its error; logs it. */
void ContentDirectory::AnswerList(UpnpActionRequest *request, const ListRequest &list,
                                  ListAnswer (*answerOf)(const ListRequest &), const char *what) {
    const auto started = std::chrono::steady_clock::now();
    const ListAnswer answer = answerOf(list);
    if (answer.error != 0) {
        AnswerError(request, answer.error, answer.errorText);
    } else {
        Answer(request, kContentDirectoryType,
               {{"Result", answer.result},
                {"NumberReturned", std::to_string(answer.returned)},
                {"TotalMatches", std::to_string(answer.total)},
                {"UpdateID", std::to_string(m_eventing.SystemUpdateId())}});
    }
    const long micros = static_cast<long>(
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - started).count());
    LogRequest("%s %s %s %s %u+%u -> %s %u/%u %ld.%03ld ms", ClientAddress(request).c_str(),
               UpnpActionRequest_get_ActionName_cstr(request), list.objectId.c_str(), what, list.start, list.count,
               answer.error != 0 ? std::to_string(answer.error).c_str() : "ok", answer.returned, answer.total,
               micros / 1000, micros % 1000);
}

}  // namespace mdbd
