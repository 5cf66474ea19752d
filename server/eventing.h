// mdbd's UPnP eventing: subscriptions to its services, and the change of the catalogue told to
// subscribers. SystemUpdateID rises with every committed change at once (Browse answers carry it);
// the events themselves are moderated: at most one every two seconds, naming the containers that
// changed since the last one (ContainerUpdateIDs). SystemUpdateID is saved with the server state.
#pragma once

#include "server_state.h"

#include <upnp.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace mdbd {

using StateVariables = std::vector<std::pair<std::string, std::string>>;

class Eventing {
public:
    Eventing(ServerState &state, std::string statePath);
    ~Eventing() { Stop(); }
    Eventing(const Eventing &) = delete;
    Eventing &operator=(const Eventing &) = delete;

    // The evented variables a new subscriber of serviceId receives (ContentDirectory's own are
    // known here already).
    void SetInitialVariables(const std::string &serviceId, std::function<StateVariables()> variables);
    // Starts the notification thread for the registered device.
    void Start(UpnpDevice_Handle device, const std::string &udn);
    // Stops it, saving the state. No event is sent afterwards.
    void Stop();

    // A subscription request (libupnp calls it from a worker thread, after answering it): accepted
    // a moment later with the initial variables of its service, refused for an unknown service.
    void Subscribe(const UpnpSubscriptionRequest *request);
    // The catalogue changed below these containers (object ids). Never blocks for long: it may be
    // called with the library mutex held (the library's CreateObject tells its server so).
    void Changed(const std::set<std::string> &containers);

    uint32_t SystemUpdateId() const { return m_systemUpdateId.load(); }

private:
    struct PendingAccept {
        std::chrono::steady_clock::time_point due;
        std::string udn, serviceId, sid;
    };
    void Run();
    void Accept(const PendingAccept &accept, const std::function<StateVariables()> &initial);
    void SendEvent(const std::set<std::string> &containers);

    ServerState &m_state;
    const std::string m_statePath;
    std::atomic<uint32_t> m_systemUpdateId;
    UpnpDevice_Handle m_device = -1;
    std::string m_udn;

    std::mutex m_mutex;  // guards what follows
    std::condition_variable m_wake;
    std::set<std::string> m_changedContainers;
    bool m_pending = false;
    bool m_stopping = false;
    std::map<std::string, std::function<StateVariables()>> m_initial;
    std::deque<PendingAccept> m_accepts;  // in the order of their due times
    std::thread m_thread;
};

}  // namespace mdbd
