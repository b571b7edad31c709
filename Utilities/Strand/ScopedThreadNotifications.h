// The listener registry behind ScopedThreadName. Internal to the library:
// clients reach the one instance, ScopedThreadName::notifier, only through the
// static members of ScopedThreadName.
//
// Listeners are held weakly, in registration order, duplicates and expired
// entries included. The mutex guards only the list and is never held while a
// listener runs, so a listener may register, unregister or fire itself. The
// enabled flag is read and written without the lock (acquire / release).
//
// Lifetime: the process-wide instance is never destroyed. Threads the client
// never joins may still open scopes while static destructors run, so, unlike
// an ordinary static, the registry outlives them all; what a caller can observe
// is unchanged. The class is trivially destructible and constant-initialised
// (a plain pthread mutex, the list on the heap behind a pointer), so the
// instance is ready before any static initialiser runs with every standard
// library. The list stays reachable from the instance, so leak checkers see no
// leak; deinit() frees it.
#pragma once

#include <pthread.h>

#include <atomic>
#include <memory>
#include <vector>

#include "Strand/ScopedThreadName.h"

namespace Strand {

class ScopedThreadNotifications {
public:
    // Empty and enabled; allocates nothing until the first registration.
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
        for (const auto& entry : snapshot()) {
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
    // Disables the registry and forgets every listener (freeing the list).
    // Never fails.
    void deinit();

    // fork() support: held across fork() so that neither process inherits the
    // list half-changed or the lock held by a thread that is not there.
    void lockForFork() noexcept;
    void unlockAfterFork() noexcept;

private:
    using List = std::vector<std::weak_ptr<IScopedThreadCallback>>;

    // A copy of the list, taken under the lock. Throws what allocation throws.
    List snapshot();

    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    List* callbacks = nullptr;  // created by the first registration
    std::atomic<bool> enabled{true};
};

// The ScopedThreadName that owns the calling thread's started and ended
// notifications (the outermost notifying one), or null.
extern thread_local constinit const ScopedThreadName* thread_notifier_id;

}  // namespace Strand
