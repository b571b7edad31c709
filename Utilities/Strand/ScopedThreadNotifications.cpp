#include "Strand/ScopedThreadNotifications.h"

#include <algorithm>

namespace Strand {

thread_local constinit const ScopedThreadName* thread_notifier_id = nullptr;

void ScopedThreadNotifications::registerCallback(
    const std::shared_ptr<IScopedThreadCallback>& callback) {
    if (!callback || !enabled.load(std::memory_order_acquire)) {
        return;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    callbacks.emplace_back(callback);
}

void ScopedThreadNotifications::unRegisterCallback(
    const std::shared_ptr<IScopedThreadCallback>& callback) {
    if (!callback || !enabled.load(std::memory_order_acquire)) {
        return;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    // Only entries that share callback's owner are locked: callback keeps that
    // owner alive, so no listener can end its life here with the lock held.
    const auto match = std::find_if(callbacks.begin(), callbacks.end(), [&](const auto& entry) {
        const bool sameOwner = !entry.owner_before(callback) && !callback.owner_before(entry);
        return sameOwner && entry.lock().get() == callback.get();
    });
    if (match != callbacks.end()) {
        callbacks.erase(match);
    }
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
    const std::lock_guard<std::mutex> lock(mutex);
    callbacks.clear();
}

}  // namespace Strand
