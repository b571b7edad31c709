#include "Strand/ScopedThreadNotifications.h"

#include <algorithm>
#include <type_traits>
#include <utility>

namespace Strand {

static_assert(std::is_trivially_destructible_v<ScopedThreadNotifications>,
              "the process-wide registry must survive static destruction");

thread_local constinit const ScopedThreadName* thread_notifier_id = nullptr;

namespace {

// Holds a pthread mutex for a scope. The registry's holds never block on
// anything but other holds, so locking cannot fail here.
class Hold {
public:
    explicit Hold(pthread_mutex_t& mutex) : mutex_(mutex) { pthread_mutex_lock(&mutex_); }
    ~Hold() { pthread_mutex_unlock(&mutex_); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

private:
    pthread_mutex_t& mutex_;
};

}  // namespace

void ScopedThreadNotifications::registerCallback(
    const std::shared_ptr<IScopedThreadCallback>& callback) {
    if (!callback || !enabled.load(std::memory_order_acquire)) {
        return;
    }
    const Hold hold(mutex);
    if (callbacks == nullptr) {
        callbacks = new List;
    }
    callbacks->emplace_back(callback);
}

void ScopedThreadNotifications::unRegisterCallback(
    const std::shared_ptr<IScopedThreadCallback>& callback) {
    if (!callback || !enabled.load(std::memory_order_acquire)) {
        return;
    }
    std::weak_ptr<IScopedThreadCallback> removed;  // let go of after the hold
    const Hold hold(mutex);
    if (callbacks == nullptr) {
        return;
    }
    // Only entries that share callback's owner are locked: callback keeps that
    // owner alive, so no listener can end its life here with the lock held.
    const auto match = std::find_if(callbacks->begin(), callbacks->end(), [&](const auto& entry) {
        const bool sameOwner = !entry.owner_before(callback) && !callback.owner_before(entry);
        return sameOwner && entry.lock().get() == callback.get();
    });
    if (match != callbacks->end()) {
        removed = std::move(*match);
        callbacks->erase(match);
    }
}

ScopedThreadNotifications::List ScopedThreadNotifications::snapshot() {
    const Hold hold(mutex);
    return callbacks != nullptr ? *callbacks : List();
}

void ScopedThreadNotifications::fireOnStarted() {
    if (enabled.load(std::memory_order_acquire)) {
        fireNotification(&IScopedThreadCallback::onStarted);
    }
}

void ScopedThreadNotifications::fireOnEnded() {
    if (enabled.load(std::memory_order_acquire)) {
        fireNotification(&IScopedThreadCallback::onEnded);
    }
}

void ScopedThreadNotifications::init() { enabled.store(true, std::memory_order_release); }

void ScopedThreadNotifications::deinit() {
    enabled.store(false, std::memory_order_release);
    List* forgotten = nullptr;
    {
        const Hold hold(mutex);
        forgotten = std::exchange(callbacks, nullptr);
    }
    delete forgotten;  // outside the hold: the last weak references go here
}

void ScopedThreadNotifications::lockForFork() noexcept { pthread_mutex_lock(&mutex); }

void ScopedThreadNotifications::unlockAfterFork() noexcept { pthread_mutex_unlock(&mutex); }

}  // namespace Strand
