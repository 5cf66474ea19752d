// Upload fixtures; see upload_catalogue.h.
#include "upload_catalogue.h"

#include "fakes.h"

#include <mdb_platform.h>
#include "server/mdb_server_shim.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace mdbtest {

UploadCatalogue::UploadCatalogue(bool withUploadFolder) {
    fake::reset();
    MdbShimSetFileServerPorts(8200, 8206);
    MdbShimResetNotifications();
    m_rootDir = m_cat.dir().mkdir("media");
    m_rootId = m_cat.addFolder(0, m_rootDir);
    m_uploadId = m_rootId;
    if (withUploadFolder) {
        m_cat.dir().mkdir("media/upload");
        m_uploadId = m_cat.addFolder(m_rootId, "upload");
    }
}

UploadCatalogue::~UploadCatalogue() { QRV_MDB_FreeUploadList(); }

long long UploadCatalogue::rowCount() { return std::atoll(m_cat.scalar("select count(*) from ITEM").c_str()); }

bool UploadCatalogue::hasRow(long long id) {
    return m_cat.scalar("select count(*) from ITEM where id=" + std::to_string(id)) == "1";
}

std::string UploadCatalogue::column(long long id, const std::string &name) {
    return m_cat.scalar("select " + name + " from ITEM where id=" + std::to_string(id));
}

long long UploadCatalogue::addRow(long long parent, const std::string &name, uint32_t flags) {
    ItemValues v;
    v.parentId = parent;
    v.flags = static_cast<int32_t>(flags);
    v.title = v.fileName = name;
    return m_cat.addItem(v);
}

long long UploadCatalogue::addUpload(const std::string &name, uint32_t extraFlags) {
    const long long id = addRow(m_uploadId, name, mp3Flags() | extraFlags);
    m_cat.dir().write("media/upload/" + name, "audio bytes");
    QRV_MDB_AddUploadNote(id);
    return id;
}

uint32_t mp3Flags() {
    const char *suffix = nullptr;
    return QRV_MDB_PNtoFix("audio/mpeg", "MP3", &suffix);
}

size_t noteCount() {
    size_t count = 0;
    for (const MdbUploadNote *note = g_pstUploadList; note != nullptr && count < 100000; note = note->pstNext) {
        ++count;
    }
    return count;
}

std::string ItemDescription::text() const {
    auto attribute = [](const char *name, const std::optional<std::string> &value) {
        return value ? std::string(" ") + name + "=\"" + *value + "\"" : std::string();
    };
    auto element = [](const char *name, const std::optional<std::string> &value) {
        return value ? std::string("<") + name + ">" + *value + "</" + name + ">" : std::string();
    };
    return "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" "
           "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\" "
           "xmlns:dlna=\"urn:schemas-dlna-org:metadata-1-0/\"><item id=\"\"" +
           attribute("parentID", parentId) + attribute("restricted", restricted) +
           attribute("dlna:dlnaManaged", managed) + ">" + element("dc:title", title) + element("dc:date", date) +
           element("upnp:class", upnpClass) + "<res" + attribute("protocolInfo", protocolInfo) +
           attribute("size", size) + attribute("dlna:ifoFileURI", ifoFileUri) + "></res></item></DIDL-Lite>";
}

NewObjectRequest::NewObjectRequest(const std::string &elements, uint32_t addrFamily, const std::string &containerId)
    : m_elements(elements), m_containerId(containerId) {
    m_obj.pcElements = m_elements.data();
    m_obj.pcContainerId = m_containerId.data();
    m_obj.ulAddrFamily = addrFamily;
    m_obj.ulRestricted = 1;
    m_obj.pstDoc = ixmlDocument_createDocument();
    m_root = ixmlDocument_createElement(m_obj.pstDoc, "DIDL-Lite");
    ixmlNode_appendChild(reinterpret_cast<IXML_Node *>(m_obj.pstDoc), reinterpret_cast<IXML_Node *>(m_root));
    m_obj.pstDidlRoot = m_root;
}

NewObjectRequest::~NewObjectRequest() {
    keepTexts();
    std::sort(m_owned.begin(), m_owned.end());
    m_owned.erase(std::unique(m_owned.begin(), m_owned.end()), m_owned.end());
    for (char *text : m_owned) {
        free(text);
    }
    ixmlDocument_free(m_obj.pstDoc);
}

void NewObjectRequest::keepTexts() {
    for (char *text : {m_obj.pcParentId, m_obj.pcTitle, m_obj.pcDate, m_obj.pcClass, m_obj.pcSize,
                       m_obj.pcProtocolInfo, m_obj.pcIfoFileUri, m_obj.pcObjectId}) {
        if (text != nullptr) {
            m_owned.push_back(text);
        }
    }
}

uint32_t NewObjectRequest::parse() {
    const uint32_t status = QRV_MDB_ParseElements(&m_obj);
    keepTexts();
    return status;
}

uint32_t NewObjectRequest::create() {
    keepTexts();
    const uint32_t status = QRV_MDB_CreateObject(&m_obj);
    keepTexts();
    return status;
}

long long NewObjectRequest::createdId() const {
    const char *bar = m_obj.pcObjectId != nullptr ? strchr(m_obj.pcObjectId, '|') : nullptr;
    return bar != nullptr ? std::atoll(bar + 1) : -1;
}

std::string NewObjectRequest::answerXml() const {
    std::string out;
    for (IXML_Node *n = ixmlNode_getFirstChild(reinterpret_cast<IXML_Node *>(m_root)); n != nullptr;
         n = ixmlNode_getNextSibling(n)) {
        DOMString text = ixmlNodetoString(n);
        out += text != nullptr ? text : "<unprintable>";
        ixmlFreeDOMString(text);
    }
    for (size_t at = out.find("\r\n"); at != std::string::npos; at = out.find("\r\n", at)) {
        out.erase(at, 2);  // the line ends ixml puts behind closing tags
    }
    return out;
}

}  // namespace mdbtest
