// mdb create: a UPnP ContentDirectory CreateObject through QRV_MDB_ParseElements and
// QRV_MDB_CreateObject, optionally followed by the upload of a local file into the new object.
#include "commands.h"
#include "command_line.h"
#include "didl_answer.h"
#include "tool_context.h"

#include <mdb_platform.h>

#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>

namespace mdbtool {

namespace {

const char kName[] = "create";

// The Elements text: the argument itself, "-" for standard input, "@FILE" for a file's content.
bool ReadElements(const std::string &argument, std::string &elements, std::string &error) {
    if (argument == "-") {
        elements.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
        return true;
    }
    if (!argument.empty() && argument[0] == '@') {
        std::ifstream in(argument.substr(1), std::ios::binary);
        if (!in) {
            error = "cannot read " + argument.substr(1);
            return false;
        }
        std::ostringstream text;
        text << in.rdbuf();
        elements = text.str();
        return true;
    }
    elements = argument;
    return true;
}

// The value of the first parentID="..." in the Elements text, the way the library finds it.
std::string ParentIdOf(const std::string &elements) {
    const std::string marker = "parentID=\"";
    std::string::size_type start = elements.find(marker);
    if (start == std::string::npos) {
        return std::string();
    }
    start += marker.size();
    std::string::size_type end = elements.find('"', start);
    return end == std::string::npos ? std::string() : elements.substr(start, end - start);
}

// The texts the parse and CreateObject allocate into the request; the server's to release.
void ReleaseRequest(MdbNewObject &request) {
    char *texts[] = {request.pcParentId, request.pcTitle,        request.pcDate,       request.pcClass,
                     request.pcSize,     request.pcProtocolInfo, request.pcIfoFileUri, request.pcObjectId};
    for (char *text : texts) {
        free(text);
    }
}

/* What a media server does when an upload completes: the file goes to the object's path, the
 * row gets the file's size, and the upload note is deleted. */
int CompleteUpload(sqlite3 *db, long long id, const std::string &source) {
    char *path = nullptr;
    int32_t found = QRV_MDB_GetFileInfoById(id, &path, nullptr, nullptr, nullptr, nullptr);
    if (found != 0 || path == nullptr) {
        free(path);
        return Fail(kName, MDB_ERR_NOT_FOUND, "the new object's file path could not be looked up");
    }
    const std::string target = path;
    free(path);
    uint32_t status = QRV_MDB_Copyfile(target.c_str(), source.c_str());
    if (status != MDB_OK) {
        return Fail(kName, status, "the upload of " + source + " to " + target + " failed");
    }
    struct stat st;
    MdbItemDetail *detail = static_cast<MdbItemDetail *>(calloc(1, sizeof(MdbItemDetail)));
    if (detail == nullptr || stat(target.c_str(), &st) != 0) {
        free(detail);
        return Fail(kName, MDB_ERR_FAIL, "the uploaded file " + target + " cannot be examined");
    }
    status = QRV_MDB_GetItemDetailInfo(db, id, detail);
    if (status == MDB_OK) {
        const MdbItemDetail &d = *detail;
        status = QRV_MDB_DbUpdateItemValues(
            db, d.llParentId, static_cast<int32_t>(d.ulFlags), d.acTitle, d.acFileName, static_cast<long long>(st.st_size),
            d.acDate, static_cast<int32_t>(d.ulBitsPerSample), static_cast<long long>(d.ullDuration),
            static_cast<int32_t>(d.ulNrAudioChannels), static_cast<long long>(d.ullResolution),
            static_cast<int32_t>(d.ulSampleFrequency), static_cast<int32_t>(d.ulBitrate), d.acLastModify,
            static_cast<int32_t>(d.ulOriginalTrackNumber), d.llExIdActor, d.llExIdAlbum, d.llExIdArtist,
            d.llExIdAuthor, d.llExIdCreator, d.llExIdDirector, d.llExIdGenre, d.llExIdProducer, d.llExIdPublisher, id);
    }
    free(detail);
    if (status != MDB_OK) {
        return Fail(kName, status, "the size of the uploaded file could not be recorded");
    }
    QRV_MDB_DelUploadNote(id);
    printf("uploaded %s to %s (%lld bytes); the upload is complete\n", source.c_str(), target.c_str(),
           static_cast<long long>(st.st_size));
    return kExitOk;
}

int RunCreate(int argc, char **argv) {
    CommandLine line;
    std::string error;
    if (!line.Parse(argc, argv, 1, {{"container", true}, {"upload", true}, {"address", true}, {"port", true}},
                    error)) {
        return UsageError(kName, error);
    }
    if (line.Positionals().size() != 2) {
        return UsageError(kName, "create needs a catalogue and the Elements text");
    }
    uint32_t port = 9000;
    if (!line.Unsigned("port", 9000, port, error) || port > 65535) {
        return UsageError(kName, error.empty() ? "--port needs a port number from 0 to 65535" : error);
    }
    const int family = ConfigureServerAddress(line.Value("address"), static_cast<uint16_t>(port));
    if (family < 0) {
        return UsageError(kName, "--address needs an IPv4 or IPv6 address");
    }
    std::string elements;
    if (!ReadElements(line.Positionals()[1], elements, error)) {
        return Fail(kName, MDB_ERR_FAIL, error);
    }
    const std::string upload = line.Value("upload");
    struct stat st;
    if (!upload.empty() && (stat(upload.c_str(), &st) != 0 || !S_ISREG(st.st_mode))) {
        return Fail(kName, MDB_ERR_PARA, "--upload needs a readable file, and " + upload + " is not one");
    }
    Catalogue catalogue;
    if (!catalogue.Open(kName, line.Positionals()[0], OpenMode::kReadWrite)) {
        return kExitFailed;
    }
    std::string containerId = line.Value("container", ParentIdOf(elements));
    DidlAnswer answer;
    MdbNewObject request;
    memset(&request, 0, sizeof request);
    request.pcContainerId = &containerId[0];
    request.pcElements = &elements[0];
    request.ulAddrFamily = static_cast<uint32_t>(family);
    request.pstDoc = answer.doc();
    request.pstDidlRoot = answer.root();
    int exitCode = kExitOk;
    char *parsedParentId = nullptr;
    if (QRV_MDB_ParseElements(&request) != 0) {
        exitCode = Fail(kName, MDB_ERR_PARA,
                        "the Elements text was refused: it needs parentID, restricted=\"0\", dc:title, upnp:class and "
                        "a res protocolInfo whose MIME type the profile library knows");
    } else if ((parsedParentId = request.pcParentId, QRV_MDB_CreateObject(&request) != 0)) {
        exitCode = Fail(kName, MDB_ERR_DB, "the object's row could not be added to the catalogue");
    } else {
        fputs(answer.Indented().c_str(), stdout);
        const char *objectId = request.pcObjectId != nullptr ? request.pcObjectId : "";
        const char *importUri = request.pstRes != nullptr ? ixmlElement_getAttribute(request.pstRes, "importUri") : nullptr;
        printf("ObjectID: %s\n", objectId);
        printf("importUri: %s\n", importUri != nullptr ? importUri : "");
        const char *bar = strrchr(objectId, '|');
        const long long id = bar != nullptr ? atoll(bar + 1) : 0;
        if (!upload.empty() && id > 0) {
            exitCode = CompleteUpload(catalogue.db(), id, upload);
        } else {
            printf("note: the upload note of this object lived in this process only and is gone now; the row stays\n"
                   "      until \"mdb destroy\" or a rescan that finds no file for it\n");
        }
    }
    // CreateObject replaces the parsed parent id without releasing it.
    if (parsedParentId != nullptr && parsedParentId != request.pcParentId) {
        free(parsedParentId);
    }
    ReleaseRequest(request);
    return exitCode;
}

}  // namespace

const Command kCreateCommand = {
    kName, "enter an uploaded object (CreateObject), optionally with its file",
    "usage: mdb create DB ELEMENTS [--container ID] [--upload FILE] [--address ADDR] [--port N]\n"
    "\n"
    "Answers a UPnP ContentDirectory CreateObject: ELEMENTS is the DIDL-Lite description of one\n"
    "item (the text itself, \"-\" to read it from standard input, or \"@FILE\" to read it from FILE).\n"
    "The item gets a row of size 0 in the \"upload\" folder below the first root folder, and the\n"
    "answer with its importUri is printed. Example:\n"
    "  mdb create DB '<DIDL-Lite><item id=\"\" parentID=\"0.1.264\" restricted=\"0\">\n"
    "    <dc:title>memo</dc:title><upnp:class>object.item.audioItem.musicTrack</upnp:class>\n"
    "    <res protocolInfo=\"http-get:*:audio/mpeg:DLNA.ORG_PN=MP3\"/></item></DIDL-Lite>'\n"
    "\n"
    "The library keeps an upload note for the object in the memory of the process that made it;\n"
    "this command is that process, so the note is gone when the command ends (no time-out will\n"
    "destroy the object later). With --upload the command completes the upload itself.\n"
    "\n"
    "  --container ID     the request's ContainerID (default: the parentID in ELEMENTS)\n"
    "  --upload FILE      copy FILE to the new object's path and record its size, as a server\n"
    "                     does when the upload arrives\n"
    "  --address ADDR     the server's IPv4 or IPv6 address in the importUri (default: none)\n"
    "  --port N           the file server's port in the importUri (default 9000)\n",
    nullptr,
    RunCreate,
};

}  // namespace mdbtool
