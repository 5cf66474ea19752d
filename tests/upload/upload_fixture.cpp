// Upload fixtures and the fakes of the upload test program; see upload_fixture.h.
#include "upload_fixture.h"

#include <mdb_platform.h>
#include "server/mdb_server_shim.h"

#include <sys/sysinfo.h>

#include <cstdlib>
#include <cstring>

namespace mdbtest {

Fakes g_fakes;

UploadCatalogue::UploadCatalogue(bool withUploadFolder) : rootDir(cat.dir().mkdir("media")) {
    g_fakes = Fakes{};
    MdbShimSetFileServerPorts(8200, 8206);
    MdbShimResetNotifications();
    rootId = uploadId = cat.addFolder(0, rootDir);
    if (withUploadFolder) {
        uploadDir = cat.dir().mkdir("media/upload");
        uploadId = cat.addFolder(rootId, "upload");
    }
}

long long UploadCatalogue::addUpload(const std::string &name, uint32_t extraFlags) {
    const long long id = cat.addRow(uploadId, name, mp3Flags() | extraFlags);
    cat.dir().write("media/upload/" + name, "audio bytes");
    QRV_MDB_AddUploadNote(id);
    return id;
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

std::string Described(std::optional<std::string> ItemDescription::*part, const std::optional<std::string> &value) {
    ItemDescription d;
    d.*part = value;
    return d.text();
}

NewObjectRequest::NewObjectRequest(const std::string &elements, uint32_t addrFamily, const std::string &containerId)
    : m_elements(elements), m_containerId(containerId), m_doc(ixmlDocument_createDocument()) {
    m_obj.pcElements = m_elements.data();
    m_obj.pcContainerId = m_containerId.data();
    m_obj.ulAddrFamily = addrFamily;
    m_obj.ulRestricted = 1;
    m_obj.pstDoc = m_doc;
    m_obj.pstDidlRoot = ixmlDocument_createElement(m_doc, "DIDL-Lite");
    ixmlNode_appendChild(reinterpret_cast<IXML_Node *>(m_doc), reinterpret_cast<IXML_Node *>(m_obj.pstDidlRoot));
}

NewObjectRequest::~NewObjectRequest() {
    keepTexts(0);
    for (char *text : m_owned) free(text);
    ixmlDocument_free(m_doc);
}

uint32_t NewObjectRequest::keepTexts(uint32_t status) {
    for (char *text : {m_obj.pcParentId, m_obj.pcTitle, m_obj.pcDate, m_obj.pcClass, m_obj.pcSize,
                       m_obj.pcProtocolInfo, m_obj.pcIfoFileUri, m_obj.pcObjectId}) {
        if (text != nullptr) m_owned.insert(text);
    }
    return status;
}

long long NewObjectRequest::createdId() const {
    const char *bar = m_obj.pcObjectId != nullptr ? strchr(m_obj.pcObjectId, '|') : nullptr;
    return bar != nullptr ? std::atoll(bar + 1) : -1;
}

std::string NewObjectRequest::answerXml() const {
    std::string out;
    IXML_Element *root = reinterpret_cast<IXML_Element *>(ixmlNode_getFirstChild(reinterpret_cast<IXML_Node *>(m_doc)));
    for (IXML_Element *object : children(root)) {
        DOMString text = ixmlNodetoString(reinterpret_cast<IXML_Node *>(object));
        out += text != nullptr ? text : "<unprintable>";
        ixmlFreeDOMString(text);
    }
    for (size_t at = out.find("\r\n"); at != std::string::npos; at = out.find("\r\n", at)) {
        out.erase(at, 2);  // the line ends ixml puts behind closing tags
    }
    return out;
}

}  // namespace mdbtest

using mdbtest::g_fakes;

extern "C" unsigned int sleep(unsigned int seconds) {
    g_fakes.uptime += static_cast<long>(seconds);
    g_fakes.sleeps.push_back(seconds);
    if (g_fakes.onSleep) g_fakes.onSleep();
    return 0;
}

extern "C" int sysinfo(struct sysinfo *info) {
    *info = {};
    info->uptime = g_fakes.uptime;
    return 0;
}

// libupnp hands out writable texts; these live as long as the program.
extern "C" char *UpnpGetServerIpAddress(void) {
    static char address[] = "192.0.2.7";
    return g_fakes.addressesKnown ? address : nullptr;
}

extern "C" char *UpnpGetServerIp6Address(void) {
    static char address[] = "2001:db8::7";
    return g_fakes.addressesKnown ? address : nullptr;
}
