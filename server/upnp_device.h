// mdbd's device on libupnp: the stack started on the chosen address, the device description and
// the service files written to a web root of its own, the device registered and announced, and
// every control and subscription request handed to its service. Written for libupnp 1.8.4 and
// its accessor API (UpnpActionRequest_get_...), which newer versions keep; the one call that
// 1.14 dropped (UpnpInit) is chosen by version.
#pragma once

#include <upnp.h>

#include <functional>
#include <map>
#include <string>

namespace mdbd {

class Eventing;

// Answers one action request of one service (called from a libupnp worker thread).
using ActionHandler = std::function<void(UpnpActionRequest *)>;

struct DeviceSettings {
    std::string interface;  // start on this interface (IPv4 and IPv6), or
    std::string address;    // on this IPv4 address (loopback allowed), or the first suitable one
    uint16_t port = 0;      // 0: any; libupnp takes the next free port when it is taken
    std::string name;       // the friendly name
    std::string udn;
};

class UpnpDevice {
public:
    UpnpDevice() = default;
    ~UpnpDevice() { Stop(); }
    UpnpDevice(const UpnpDevice &) = delete;
    UpnpDevice &operator=(const UpnpDevice &) = delete;

    // Starts libupnp on the address of the settings (address() tells which it took). false, with a
    // sentence in error, when the stack cannot start.
    bool Init(const DeviceSettings &settings, std::string &error);
    // Writes the description, registers the device with a handler per service id, starts eventing
    // and sends the announcements. false, with a sentence in error, when it cannot.
    bool Register(const DeviceSettings &settings, const std::map<std::string, ActionHandler> &handlers,
                  Eventing &eventing, std::string &error);
    // Says byebye, unregisters the device and stops libupnp (after its worker threads are done).
    void Stop();

    // The address and port libupnp answers on (the port may differ from the one asked for).
    std::string address() const { return m_address; }
    uint16_t port() const { return m_port; }

private:
    static int Callback(Upnp_EventType type, const void *event, void *cookie);

    std::map<std::string, ActionHandler> m_handlers;
    Eventing *m_eventing = nullptr;
    UpnpDevice_Handle m_handle = -1;
    bool m_started = false;
    std::string m_webRoot;
    std::string m_address;
    uint16_t m_port = 0;
};

}  // namespace mdbd
