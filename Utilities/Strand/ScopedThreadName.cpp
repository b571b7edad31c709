#include "Strand/ScopedThreadName.h"

#include "Strand/ExternalInputHint.h"
#include "Strand/ScopedThreadNotifications.h"
#include "Strand/ThreadName.h"
#include "StringUtils/HexAndFileName.h"
#include "Support/DropExceptions.h"

namespace Strand {

using quill::external_input::hint;

IScopedThreadCallback::~IScopedThreadCallback() = default;

// Constant-initialised, so listeners can register from any static initialiser,
// and never destroyed (see ScopedThreadNotifications.h).
constinit ScopedThreadNotifications ScopedThreadName::notifier;

namespace {

// The registry's lock is held across fork(), so the child never inherits it
// held by a thread that does not exist there.
[[maybe_unused]] const bool gNotifierForkHandlersInstalled =
    pthread_atfork([] { ScopedThreadName::notifier.lockForFork(); },
                   [] { ScopedThreadName::notifier.unlockAfterFork(); },
                   [] { ScopedThreadName::notifier.unlockAfterFork(); }) == 0;

// "F:L:" for a location whose file and function are both set.
std::string fileAndLine(const quill::source::location& location) {
    return ScopedThreadName::filenameFromPath(location.file) + ":" + std::to_string(location.line) +
           ":";
}

bool hasCallSite(const quill::source::location& location) {
    return location.file != nullptr && location.function != nullptr;
}

// An object whose constructor is left by its thread's own unwinding never
// lives, so it must not keep the thread's turn to notify.
void giveUpTurn(const ScopedThreadName* object) {
    if (thread_notifier_id == object) {
        thread_notifier_id = nullptr;
    }
}

}  // namespace

ScopedThreadName::ScopedThreadName(const std::string& name, bool notifyListeners)
    : notify(notifyListeners) {
    try {
        init(name);
    } catch (...) {
        giveUpTurn(this);  // this object never lives
        throw;
    }
}

ScopedThreadName::ScopedThreadName(const quill::source::location& location)
    : ScopedThreadName(std::string(), location) {}

ScopedThreadName::ScopedThreadName(const std::string& name,
                                   const quill::source::location& location) {
    // Exceptions are dropped: work must not fail because naming or a listener
    // did. A thread that ends meanwhile (cancelled in a listener) goes on ending.
    quill::callDroppingExceptions(
        [&] {
            if (hasCallSite(location)) {
                const std::string prefix = name.empty() ? std::string() : name + ":";
                init(prefix + fileAndLine(location) + location.function);
            }
            // Saved only now, so it is the thread's hint from before the location's.
            previousHint = hint::getExternalInputHint();
            hint::copyThreadStorageIfNecessary(location);
        },
        [this] { giveUpTurn(this); });
}

ScopedThreadName::ScopedThreadName(const std::type_info& type,
                                   const quill::source::location& location) {
    // Dropped, as above.
    quill::callDroppingExceptions(
        [&] {
            if (hasCallSite(location)) {
                init(fileAndLine(location) + "<" + type.name() + ">" + location.function);
            }
        },
        [this] { giveUpTurn(this); });
}

// Lets a thread's own unwinding (a cancel inside onEnded) through, and drops
// every exception.
ScopedThreadName::~ScopedThreadName() noexcept(false) {
    quill::callDroppingExceptions(
        [&] {
            if (notify && thread_notifier_id == this) {
                thread_notifier_id = nullptr;
                notifier.fireOnEnded();
            }
            setThreadName(previousName);
            if (previousHint) {
                previousHint->setAsExternalInputHint();
            } else {
                hint::clearExternalInputHint();
            }
        },
        [] {});
}

void ScopedThreadName::init(const std::string& name) {
    previousName = getThreadName();
    setThreadName(name);
    if (notify && thread_notifier_id == nullptr) {
        thread_notifier_id = this;
        notifier.fireOnStarted();
    }
}

std::string ScopedThreadName::filenameFromPath(const std::string& path) {
    return StringUtils::filenameFromPath(path);
}

// The interface takes listeners by value.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void ScopedThreadName::registerCallback(std::shared_ptr<IScopedThreadCallback> callback) {
    notifier.registerCallback(callback);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
void ScopedThreadName::unRegisterCallback(std::shared_ptr<IScopedThreadCallback> callback) {
    notifier.unRegisterCallback(callback);
}

void ScopedThreadName::initNotifier() { notifier.init(); }

void ScopedThreadName::deinitNotifier() { notifier.deinit(); }

}  // namespace Strand
