// The end of uploads whose file never came: a thread that calls the library's time-out every two
// seconds (an object is destroyed, row and file, 35 to 37 seconds after CreateObject made it), and
// at start the objects an interrupted run left (notes live in memory only, so nothing would time
// them out): rows of size 0 that CreateObject made below the upload folder, and hidden files of
// bodies that broke off.
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace mdbd {

class Eventing;
class UploadReceiver;

class UploadTimeout {
public:
    UploadTimeout(Eventing &eventing, UploadReceiver &receiver) : m_eventing(eventing), m_receiver(receiver) {}
    ~UploadTimeout() { Stop(); }
    UploadTimeout(const UploadTimeout &) = delete;
    UploadTimeout &operator=(const UploadTimeout &) = delete;

    // Destroys what an earlier run left of its uploads; returns how many objects went.
    static unsigned DestroyLeftovers();

    void Start();
    void Stop();

private:
    void Run();
    void Expire();

    Eventing &m_eventing;
    UploadReceiver &m_receiver;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_stopping = false;
    std::thread m_thread;
};

}  // namespace mdbd
