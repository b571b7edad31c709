// Scoped thread names and their listeners.
//
// A ScopedThreadName names the calling thread for its lifetime and gives the
// old name back at its end. The outermost notifying one on a thread tells every
// registered listener that a scoped thread has started (after naming the
// thread) and ended (before the old name returns); both calls run on that
// thread. The forms that take a source location name the thread after the call
// site that handed the work over and carry that call site's external input hint
// and context store onto the thread.
//
// Listeners are held weakly: registering never keeps one alive, and a listener
// whose owner has let it go is passed over. The registry is ready before any
// client code runs (it is built during static initialisation); no init call is
// needed. Listeners run without any library lock held, so they may register,
// unregister or open scoped thread names themselves; they must be safe to call
// from many threads at once.
#pragma once

#include <memory>
#include <string>
#include <typeinfo>

#include "Strand/Export.h"
#include "Strand/SourceLocation.h"

namespace Strand {

// Implemented by clients that want to know when scoped threads start and end.
class STRAND_EXPORT IScopedThreadCallback {
public:
    // Defined in the library, so the interface's type information has one home
    // there, the same in every build.
    virtual ~IScopedThreadCallback();
    // The outermost notifying scope on the calling thread has named the thread.
    virtual void onStarted() = 0;
    // That scope is ending; the thread still carries the scope's name.
    virtual void onEnded() = 0;
};

// The listener registry; internal to the library.
class ScopedThreadNotifications;

// Build and destroy an object on the same thread. Not copyable: a copy would
// restore the name and the hint twice.
class STRAND_EXPORT ScopedThreadName {
public:
    // Names the thread name. Notifies listeners when notify is set and no outer
    // object on this thread does. Does not touch the thread's hint while it
    // lives, but clears it at the end. Exceptions from naming or from a
    // listener reach the caller; the object is then not built.
    explicit ScopedThreadName(const std::string& name, bool notify = true);

    // Names the thread "F:L:U" after the location (file name, line, function),
    // notifies, saves the thread's hint and takes over the location's hint and
    // live store. A location with a null file or function leaves the name alone
    // and notifies nobody. Never throws: the first exception (from a listener,
    // say) ends the remaining steps and is dropped. A thread's own unwinding
    // (pthread_cancel or pthread_exit inside a listener) is not dropped: the
    // thread ends as it asked to.
    explicit ScopedThreadName(const quill::source::location& location);

    // As above with the name "name:F:L:U" ("F:L:U" when name is empty).
    ScopedThreadName(const std::string& name, const quill::source::location& location);

    // Names the thread "F:L:<T>U" with T = type.name(), and notifies. Does not
    // save the thread's hint or take over the location's context, but clears
    // the thread's hint at the end. Never throws, as above.
    ScopedThreadName(const std::type_info& type, const quill::source::location& location);

    // Fires "ended" if this object fired (or took the turn to fire) "started",
    // restores the old name (an empty one if the constructor never named the
    // thread), and restores the saved hint or clears the thread's hint. The
    // thread keeps the context store a location brought. Never throws; only a
    // thread's own unwinding (cancelled inside onEnded) passes through, which
    // is why the destructor is not noexcept.
    ~ScopedThreadName() noexcept(false);

    ScopedThreadName(const ScopedThreadName&) = delete;
    ScopedThreadName& operator=(const ScopedThreadName&) = delete;

    // The text after the last '/' or '\\' of path; empty when path ends in one.
    static std::string filenameFromPath(const std::string& path);

    // Adds a weak reference to callback; a null callback, or a registry that is
    // disabled, changes nothing. The same listener registered twice is called
    // twice. Throws only what allocation throws.
    static void registerCallback(std::shared_ptr<IScopedThreadCallback> callback);

    // Removes the first registration of callback, if any. Never fails.
    static void unRegisterCallback(std::shared_ptr<IScopedThreadCallback> callback);

    // Enables the registry again after deinitNotifier; earlier listeners must
    // register again. Never fails.
    static void initNotifier();

    // Disables the registry and forgets every listener. Never fails.
    static void deinitNotifier();

    // The process-wide listener registry. Ready before any static initialiser
    // runs, and never destroyed, so threads still running at exit can open
    // scopes safely.
    static ScopedThreadNotifications notifier;

private:
    // Saves the old name, names the thread, and takes the thread's turn to
    // notify if this object notifies and no other holds it. Throws what naming
    // and the listeners throw.
    void init(const std::string& name);

    std::string previousName;
    std::shared_ptr<quill::external_input::hint> previousHint;
    bool notify = true;
};

}  // namespace Strand
