// Starting, running and stopping the UPnP device.
#include "upnp_device.h"

#include "description.h"
#include "eventing.h"
#include "log.h"
#include "soap.h"
#include "web_files.h"

#include <upnptools.h>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace mdbd {

namespace {

// Announcements are valid for half an hour; libupnp repeats them before they expire.
constexpr int kAdvertisementSeconds = 1800;
// At most this many subscriptions at once, each for at most half an hour: a flood of SUBSCRIBE
// requests cannot grow the server without bound.
constexpr int kMaxSubscriptions = 32;
constexpr int kMaxSubscriptionSeconds = 1800;

bool WriteFile(const std::string &path, const void *data, size_t size) {
    FILE *file = fopen(path.c_str(), "wb");
    if (file == nullptr) {
        return false;
    }
    const bool written = fwrite(data, 1, size, file) == size;
    return fclose(file) == 0 && written;
}

/* A new folder for libupnp's web server: the runtime folder systemd gives, else the temp folder. */
std::string MakeWebRoot() {
    const char *runtime = getenv("RUNTIME_DIRECTORY");
    const char *tmp = getenv("TMPDIR");
    std::string pattern = std::string(runtime != nullptr && runtime[0] == '/' ? runtime
                                      : tmp != nullptr && tmp[0] == '/'       ? tmp
                                                                              : "/tmp") +
                          "/mdbd-web-XXXXXX";
    return mkdtemp(&pattern[0]) != nullptr ? pattern : std::string();
}

void RemoveWebRoot(const std::string &root) {
    if (root.empty()) {
        return;
    }
    unlink((root + "/description.xml").c_str());
    for (size_t i = 0; i < kWebFileCount; ++i) {
        unlink((root + "/" + kWebFiles[i].name).c_str());
    }
    rmdir(root.c_str());
}

#if UPNP_VERSION >= 11400
/* The name of the interface that holds IPv4 address, empty when none does. */
std::string InterfaceOf(const std::string &address) {
    std::string name;
    struct ifaddrs *interfaces = nullptr;
    if (getifaddrs(&interfaces) != 0) {
        return name;
    }
    for (const struct ifaddrs *i = interfaces; i != nullptr && name.empty(); i = i->ifa_next) {
        char text[INET_ADDRSTRLEN];
        if (i->ifa_addr != nullptr && i->ifa_addr->sa_family == AF_INET &&
            inet_ntop(AF_INET, &reinterpret_cast<const struct sockaddr_in *>(i->ifa_addr)->sin_addr, text,
                      sizeof text) != nullptr &&
            address == text) {
            name = i->ifa_name;
        }
    }
    freeifaddrs(interfaces);
    return name;
}
#endif

/* One start of the stack on settings' address or interface and the given port. */
int StartStack(const DeviceSettings &settings, uint16_t port) {
    // UpnpInit2 takes an interface and skips loopback; an explicit address needs the older
    // UpnpInit, which takes one IPv4 address and serves loopback too. libupnp 1.14 dropped
    // UpnpInit: there the address is served through the interface that holds it.
#if UPNP_VERSION < 11400
    return settings.address.empty()
               ? UpnpInit2(settings.interface.empty() ? nullptr : settings.interface.c_str(), port)
               : UpnpInit(settings.address.c_str(), port);
#else
    const std::string interface = settings.address.empty() ? settings.interface : InterfaceOf(settings.address);
    return UpnpInit2(interface.empty() ? nullptr : interface.c_str(), port);
#endif
}

}  // namespace

bool UpnpDevice::Init(const DeviceSettings &settings, std::string &error) {
    int rc = StartStack(settings, settings.port);
    // UpnpInit binds port 0 as its first port (49152) and gives up when that one is taken, by
    // another server on the same address for one; any port will do, so the next ones are tried.
    constexpr uint16_t kFirstPort = 49152, kPortsTried = 32;
    for (uint16_t next = 1; rc == UPNP_E_SOCKET_BIND && settings.port == 0 && next < kPortsTried; ++next) {
        UpnpFinish();
        rc = StartStack(settings, static_cast<uint16_t>(kFirstPort + next));
    }
    if (rc != UPNP_E_SUCCESS) {
        error = std::string("the UPnP stack cannot start") +
                (settings.address.empty() ? settings.interface.empty() ? "" : " on interface " + settings.interface
                                          : " on " + settings.address) +
                ": " + UpnpGetErrorMessage(rc);
        return false;
    }
    m_started = true;
    const char *address = UpnpGetServerIpAddress();
    m_address = address != nullptr ? address : "";
    m_port = UpnpGetServerPort();
    if (settings.port != 0 && m_port != settings.port) {
        LogNote("UPnP port %u is taken; libupnp answers on port %u instead", settings.port, m_port);
    }
    return true;
}

bool UpnpDevice::Register(const DeviceSettings &settings, const std::map<std::string, ActionHandler> &handlers,
                          Eventing &eventing, std::string &error) {
    m_handlers = handlers;
    m_eventing = &eventing;
    m_webRoot = MakeWebRoot();
    bool written = !m_webRoot.empty();
    const std::string description = DeviceDescription(settings.name, settings.udn);
    written = written && WriteFile(m_webRoot + "/description.xml", description.data(), description.size());
    for (size_t i = 0; written && i < kWebFileCount; ++i) {
        written = WriteFile(m_webRoot + "/" + kWebFiles[i].name, kWebFiles[i].data, kWebFiles[i].size);
    }
    if (!written) {
        error = std::string("the device description cannot be written: ") + strerror(errno);
        return false;
    }
    int rc = UpnpSetWebServerRootDir(m_webRoot.c_str());
    if (rc == UPNP_E_SUCCESS) {
        const std::string path = m_webRoot + "/description.xml";
        rc = UpnpRegisterRootDevice2(UPNPREG_FILENAME_DESC, path.c_str(), 0, 1, Callback, this, &m_handle);
    }
    if (rc != UPNP_E_SUCCESS) {
        error = std::string("the device cannot be registered: ") + UpnpGetErrorMessage(rc);
        return false;
    }
    UpnpSetMaxSubscriptions(m_handle, kMaxSubscriptions);
    UpnpSetMaxSubscriptionTimeOut(m_handle, kMaxSubscriptionSeconds);
    eventing.Start(m_handle, settings.udn);
    rc = UpnpSendAdvertisement(m_handle, kAdvertisementSeconds);
    if (rc != UPNP_E_SUCCESS) {
        LogError("the device could not be announced: %s", UpnpGetErrorMessage(rc));
    }
    return true;
}

void UpnpDevice::Stop() {
    if (m_handle != -1) {
        UpnpUnRegisterRootDevice(m_handle);  // sends byebye
        m_handle = -1;
    }
    if (m_eventing != nullptr) {
        m_eventing->Stop();  // no event is sent after this; a late subscription is only queued
    }
    if (m_started) {
        UpnpFinish();  // waits for the callbacks under way
        m_started = false;
    }
    m_eventing = nullptr;
    RemoveWebRoot(m_webRoot);
    m_webRoot.clear();
}

int UpnpDevice::Callback(Upnp_EventType type, const void *event, void *cookie) {
    UpnpDevice *device = static_cast<UpnpDevice *>(cookie);
    switch (type) {
    case UPNP_CONTROL_ACTION_REQUEST: {
        UpnpActionRequest *request = const_cast<UpnpActionRequest *>(static_cast<const UpnpActionRequest *>(event));
        auto handler = device->m_handlers.find(UpnpActionRequest_get_ServiceID_cstr(request));
        if (handler == device->m_handlers.end()) {
            AnswerError(request, kInvalidAction, "Invalid Action");
        } else {
            handler->second(request);
        }
        break;
    }
    case UPNP_EVENT_SUBSCRIPTION_REQUEST:
        if (device->m_eventing != nullptr) {
            device->m_eventing->Subscribe(static_cast<const UpnpSubscriptionRequest *>(event));
        }
        break;
    default:
        break;  // QueryStateVariable and the rest are not offered
    }
    return 0;
}

}  // namespace mdbd
