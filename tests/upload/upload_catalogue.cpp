// Upload fixtures; see upload_catalogue.h.
#include "upload_catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace mdbtest {

UploadCatalogue::UploadCatalogue(bool withUploadFolder) {
    m_rootDir = m_cat.dir().mkdir("media");
    m_rootId = m_cat.addFolder(0, m_rootDir);
    m_uploadId = m_rootId;
    if (withUploadFolder) {
        m_cat.dir().mkdir("media/upload");
        m_uploadId = m_cat.addFolder(m_rootId, "upload");
    }
}

long long UploadCatalogue::rowCount() { return std::atoll(m_cat.scalar("select count(*) from ITEM").c_str()); }

bool UploadCatalogue::hasRow(long long id) {
    return m_cat.scalar("select count(*) from ITEM where id=" + std::to_string(id)) == "1";
}

std::string UploadCatalogue::column(long long id, const std::string &name) {
    return m_cat.scalar("select " + name + " from ITEM where id=" + std::to_string(id));
}

void UploadCatalogue::setSize(long long id, long long size) {
    m_cat.exec("update ITEM set size=" + std::to_string(size) + " where id=" + std::to_string(id));
}

size_t noteCount() {
    size_t count = 0;
    for (const MdbUploadNote *note = g_pstUploadList; note != nullptr && count < 100000; note = note->pstNext) {
        ++count;
    }
    return count;
}

std::string ItemDescription::text() const {
    std::string s = "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" "
                    "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" "
                    "xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\" "
                    "xmlns:dlna=\"urn:schemas-dlna-org:metadata-1-0/\"><item id=\"\"";
    if (parentId) {
        s += " parentID=\"" + *parentId + "\"";
    }
    if (restricted) {
        s += " restricted=\"" + *restricted + "\"";
    }
    if (managed) {
        s += " dlna:dlnaManaged=\"" + *managed + "\"";
    }
    s += ">";
    if (title) {
        s += "<dc:title>" + *title + "</dc:title>";
    }
    if (date) {
        s += "<dc:date>" + *date + "</dc:date>";
    }
    if (upnpClass) {
        s += "<upnp:class>" + *upnpClass + "</upnp:class>";
    }
    s += "<res";
    if (protocolInfo) {
        s += " protocolInfo=\"" + *protocolInfo + "\"";
    }
    if (size) {
        s += " size=\"" + *size + "\"";
    }
    if (ifoFileUri) {
        s += " dlna:ifoFileURI=\"" + *ifoFileUri + "\"";
    }
    s += "></res></item></DIDL-Lite>";
    return s;
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
    uint32_t status = QRV_MDB_ParseElements(&m_obj);
    keepTexts();
    return status;
}

uint32_t NewObjectRequest::create() {
    keepTexts();
    uint32_t status = QRV_MDB_CreateObject(&m_obj);
    keepTexts();
    return status;
}

long long NewObjectRequest::createdId() const {
    const std::string id = m_obj.pcObjectId != nullptr ? m_obj.pcObjectId : "";
    const size_t bar = id.find('|');
    return bar == std::string::npos ? -1 : std::atoll(id.c_str() + bar + 1);
}

std::vector<IXML_Element *> NewObjectRequest::answerObjects() const {
    std::vector<IXML_Element *> out;
    for (IXML_Node *n = ixmlNode_getFirstChild(reinterpret_cast<IXML_Node *>(m_root)); n != nullptr;
         n = ixmlNode_getNextSibling(n)) {
        if (ixmlNode_getNodeType(n) == eELEMENT_NODE) {
            out.push_back(reinterpret_cast<IXML_Element *>(n));
        }
    }
    return out;
}

}  // namespace mdbtest
