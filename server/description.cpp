// Writing the device description.
#include "description.h"

#include "service_ids.h"

#include <mdb.h>

namespace mdbd {

namespace {

std::string Escaped(const std::string &text) {
    std::string out;
    for (char c : text) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += c;
        }
    }
    return out;
}

std::string Service(const char *type, const char *id, const char *scpd, const char *name) {
    return std::string("      <service>\n        <serviceType>") + type + "</serviceType>\n        <serviceId>" + id +
           "</serviceId>\n        <SCPDURL>" + scpd + "</SCPDURL>\n        <controlURL>/control/" + name +
           "</controlURL>\n        <eventSubURL>/event/" + name + "</eventSubURL>\n      </service>\n";
}

std::string Icon(const char *mime, int size, const char *file) {
    const std::string side = std::to_string(size);
    return std::string("      <icon><mimetype>") + mime + "</mimetype><width>" + side + "</width><height>" + side +
           "</height><depth>24</depth><url>/" + file + "</url></icon>\n";
}

}  // namespace

std::string DeviceDescription(const std::string &friendlyName, const std::string &udn) {
    return std::string("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                       "<root xmlns=\"urn:schemas-upnp-org:device-1-0\" xmlns:dlna=\"urn:schemas-dlna-org:device-1-0\">\n"
                       "  <specVersion><major>1</major><minor>0</minor></specVersion>\n"
                       "  <device>\n"
                       "    <deviceType>") + kDeviceType + "</deviceType>\n"
           "    <dlna:X_DLNADOC>DMS-1.50</dlna:X_DLNADOC>\n"
           "    <friendlyName>" + Escaped(friendlyName) + "</friendlyName>\n"
           "    <manufacturer>MDB</manufacturer>\n"
           "    <modelDescription>MDB reference media server</modelDescription>\n"
           "    <modelName>mdbd</modelName>\n"
           "    <modelNumber>" MDBD_VERSION "</modelNumber>\n"
           "    <UDN>" + Escaped(udn) + "</UDN>\n"
           "    <iconList>\n" +
           Icon("image/png", 48, "icon-48.png") + Icon("image/png", 120, "icon-120.png") +
           Icon("image/jpeg", 48, "icon-48.jpg") + Icon("image/jpeg", 120, "icon-120.jpg") +
           "    </iconList>\n"
           "    <serviceList>\n" +
           Service(kContentDirectoryType, kContentDirectoryServiceId, kContentDirectoryScpd, "cds") +
           Service(kConnectionManagerType, kConnectionManagerServiceId, kConnectionManagerScpd, "cms") +
           Service(kRegistrarType, kRegistrarServiceId, kRegistrarScpd, "mrr") +
           "    </serviceList>\n"
           "  </device>\n"
           "</root>\n";
}

}  // namespace mdbd
