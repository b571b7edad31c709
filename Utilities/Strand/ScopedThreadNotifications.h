// The listener registry behind ScopedThreadName. Internal to the library:
// clients reach the one instance, ScopedThreadName::notifier, only through the
// static members of ScopedThreadName.
//
// Listeners are held weakly, in registration order, duplicates and expired
// entries included. The mutex guards only the list and is never held while a
// listener runs, so a listener may register, unregister or fire itself. The
// enabled flag is read and written without the lock (acquire / release).
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "Strand/ScopedThreadName.h"

namespace Strand {

class ScopedThreadNotifications {
public:
    // Empty and enabled. constexpr, so the process-wide instance exists before
    // any dynamic initialisation runs.
    constexpr ScopedThreadNotifications() = default;
    ScopedThreadNotifications(const ScopedThreadNotifications&) = delete;
    ScopedThreadNotifications& operator=(const ScopedThreadNotifications&) = delete;

    // Appends a weak reference; ignored for null or while disabled. Throws only
    // what allocation throws.
    void registerCallback(const std::shared_ptr<IScopedThreadCallback>& callback);

    // Removes the first live entry that holds callback's address under
    // callback's owner; ignored for null or while disabled. Never fails.
    void unRegisterCallback(const std::shared_ptr<IScopedThreadCallback>& callback);

    // Calls operation on every live listener in registration order, on the
    // calling thread, with the lock released. A listener's exception ends the
    // round and reaches the caller; so do allocation errors.
    template <class MemberFunction>
    void fireNotification(MemberFunction operation) {
        std::vector<std::weak_ptr<IScopedThreadCallback>> snapshot;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            snapshot = callbacks;
        }
        for (const auto& entry : snapshot) {
            if (const auto listener = entry.lock()) {
                ((*listener).*operation)();
            }
        }
    }

    // fireNotification with onStarted / onEnded, if enabled.
    void fireOnStarted();
    void fireOnEnded();

    // Enables the registry. Never fails.
    void init();
    // Disables the registry and forgets every listener. Never fails.
    void deinit();

private:
    std::vector<std::weak_ptr<IScopedThreadCallback>> callbacks;
    std::mutex mutex;
    std::atomic<bool> enabled{true};
};

// The ScopedThreadName that owns the calling thread's started and ended
// notifications (the outermost notifying one), or null.
extern thread_local constinit const ScopedThreadName* thread_notifier_id;

}  // namespace Strand
