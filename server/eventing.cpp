// Subscriptions and moderated change events.
#include "eventing.h"

#include "log.h"
#include "service_ids.h"

#include <algorithm>
#include <chrono>

namespace mdbd {

namespace {

constexpr auto kModeration = std::chrono::seconds(2);
// libupnp answers a SUBSCRIBE and sends the initial event from another thread at once; a control
// point that reads the event before the answer (GUPnP does) drops it for an unknown SID, and then
// resubscribes at the next event, missing that one too. A short delay lets the answer arrive first.
constexpr auto kAcceptDelay = std::chrono::milliseconds(250);
constexpr size_t kMaxContainerIds = 200;

/* Calls fn with the variables as the two arrays libupnp takes. */
template <typename Fn>
int WithArrays(const StateVariables &variables, Fn fn) {
    std::vector<const char *> names, values;
    for (const auto &variable : variables) {
        names.push_back(variable.first.c_str());
        values.push_back(variable.second.c_str());
    }
    return fn(names.data(), values.data(), static_cast<int>(variables.size()));
}

}  // namespace

Eventing::Eventing(ServerState &state, std::string statePath)
    : m_state(state), m_statePath(std::move(statePath)), m_systemUpdateId(state.systemUpdateId) {
    m_initial[kContentDirectoryServiceId] = [this] {
        return StateVariables{{"SystemUpdateID", std::to_string(SystemUpdateId())}, {"ContainerUpdateIDs", ""}};
    };
}

void Eventing::SetInitialVariables(const std::string &serviceId, std::function<StateVariables()> variables) {
    std::lock_guard<std::mutex> guard(m_mutex);
    m_initial[serviceId] = std::move(variables);
}

void Eventing::Start(UpnpDevice_Handle device, const std::string &udn) {
    m_device = device;
    m_udn = udn;
    m_stopping = false;
    m_thread = std::thread([this] { Run(); });
}

void Eventing::Stop() {
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
    }
    m_state.systemUpdateId = SystemUpdateId();
    m_state.running = false;
    SaveServerState(m_statePath, m_state);
}

void Eventing::Subscribe(const UpnpSubscriptionRequest *request) {
    const std::string serviceId = UpnpSubscriptionRequest_get_ServiceId_cstr(request);
    std::lock_guard<std::mutex> guard(m_mutex);
    if (m_initial.count(serviceId) == 0) {
        return;  // an unknown service: not accepted
    }
    m_accepts.push_back({std::chrono::steady_clock::now() + kAcceptDelay,
                         UpnpSubscriptionRequest_get_UDN_cstr(request), serviceId,
                         UpnpSubscriptionRequest_get_SID_cstr(request)});
    m_wake.notify_all();
}

/* Accepts the subscription, which sends its initial event. Called without the mutex held. */
void Eventing::Accept(const PendingAccept &accept, const std::function<StateVariables()> &initial) {
    const StateVariables variables = initial();
    const int rc = WithArrays(variables, [&](const char **names, const char **values, int count) {
        return UpnpAcceptSubscription(m_device, accept.udn.c_str(), accept.serviceId.c_str(), names, values, count,
                                      accept.sid.c_str());
    });
    if (rc != UPNP_E_SUCCESS) {
        LogError("the subscription to %s could not be accepted (libupnp error %d)", accept.serviceId.c_str(), rc);
    } else {
        LogRequest("subscription %s to %s", accept.sid.c_str(), accept.serviceId.c_str());
    }
}

void Eventing::Changed(const std::set<std::string> &containers) {
    ++m_systemUpdateId;
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_changedContainers.insert(containers.begin(), containers.end());
        m_pending = true;
    }
    m_wake.notify_all();
}

/* Sends at most one event every kModeration, saving the state with each, and accepts the
   subscriptions that are due. */
void Eventing::Run() {
    using Clock = std::chrono::steady_clock;
    auto nextEvent = Clock::now();
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_stopping) {
        auto wake = Clock::time_point::max();
        if (m_pending) {
            wake = nextEvent;
        }
        for (const PendingAccept &accept : m_accepts) {
            wake = std::min(wake, accept.due);
        }
        if (wake == Clock::time_point::max()) {
            m_wake.wait(lock);
            continue;
        }
        if (m_wake.wait_until(lock, wake) == std::cv_status::no_timeout) {
            continue;  // woken: something new, or stopping
        }
        const auto now = Clock::now();
        while (!m_accepts.empty() && m_accepts.front().due <= now) {
            const PendingAccept accept = m_accepts.front();
            m_accepts.pop_front();
            const auto initial = m_initial.at(accept.serviceId);
            lock.unlock();
            Accept(accept, initial);
            lock.lock();
        }
        if (!m_pending || now < nextEvent) {
            continue;
        }
        std::set<std::string> containers;
        containers.swap(m_changedContainers);
        m_pending = false;
        lock.unlock();
        SendEvent(containers);
        nextEvent = Clock::now() + kModeration;
        lock.lock();
    }
}

void Eventing::SendEvent(const std::set<std::string> &containers) {
    const std::string updateId = std::to_string(SystemUpdateId());
    // Past kMaxContainerIds the list is left empty: clients then go by SystemUpdateID alone,
    // which an event of that size amounts to anyway.
    std::string containerIds;
    for (const std::string &container : containers) {
        containerIds += (containerIds.empty() ? "" : ",") + container + "," + updateId;
    }
    if (containers.size() > kMaxContainerIds) {
        containerIds.clear();
    }
    const StateVariables variables = {{"SystemUpdateID", updateId}, {"ContainerUpdateIDs", containerIds}};
    WithArrays(variables, [&](const char **names, const char **values, int count) {
        return UpnpNotify(m_device, m_udn.c_str(), kContentDirectoryServiceId, names, values, count);
    });
    LogChange("SystemUpdateID %s, ContainerUpdateIDs %s", updateId.c_str(), containerIds.c_str());
    m_state.systemUpdateId = SystemUpdateId();
    if (!SaveServerState(m_statePath, m_state)) {
        LogError("the server state cannot be saved to %s", m_statePath.c_str());
    }
}

}  // namespace mdbd
