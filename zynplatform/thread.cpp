#include "zynplatform/thread.h"

#include <pthread.h>
#include <unistd.h>

namespace {

using Ended = std::shared_ptr<std::atomic<bool>>;

// This thread's flag, null until it is asked for. A flag that a handle holds is at no other thread's address.
constinit thread_local Ended* current = nullptr;
constinit thread_local std::uint32_t currentId = 0;

// Runs after the destructors of all thread-local objects, which may still use their handle.
void EndThread(void* flag) {
    auto* const ended = static_cast<Ended*>(flag);
    (*ended)->store(true, std::memory_order_release);
    delete ended;
    current = nullptr;
}

struct Key {
    Key() { isMade = pthread_key_create(&key, EndThread) == 0; }
    ~Key() {
        if (isMade) pthread_key_delete(key); // its destructor is about to be unloaded
    }
    pthread_key_t key{};
    bool isMade;
} endOfThread;

std::uint32_t SystemThreadId() {
    if (currentId == 0) currentId = static_cast<std::uint32_t>(gettid());
    return currentId;
}

std::atomic<std::uint32_t (*)()> threadIdSource{SystemThreadId};

} // namespace

namespace zynplatform {

std::uint32_t CurrentThreadId() {
    return threadIdSource.load(std::memory_order_acquire)();
}

void SetThreadIdSource(std::uint32_t (*source)()) {
    threadIdSource.store(source ? source : SystemThreadId, std::memory_order_release);
}

ThreadHandle ThreadHandle::OpenCurrent() {
    if (!current) {
        auto ended = std::make_unique<Ended>(std::make_shared<std::atomic<bool>>(false));
        // Without the key the thread would never be seen to end: nothing worse.
        if (endOfThread.isMade) pthread_setspecific(endOfThread.key, ended.get());
        current = ended.release();
    }
    return ThreadHandle(*current);
}

bool ThreadHandle::IsCurrent() const {
    return current && m_ended == *current;
}

} // namespace zynplatform
