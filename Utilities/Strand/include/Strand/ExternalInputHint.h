// External input hints: a short name chosen by the caller (click, tap, ...) and
// a generated id ("hint" and six digits) that tag work which began with an input
// from outside the process, so that log lines anywhere along that work can be
// traced back to it.
//
// Every thread has one current hint, which may be empty; the thread has a hint
// exactly when the hint's name is not empty. The hint reaches other threads
// only inside source locations (SourceLocation.h), which a scoped thread name
// (ScopedThreadName.h) applies on the thread that picks the work up.
//
// Everything here touches only the calling thread's state, except
// createExternalInputHint, which also raises one process-wide atomic counter.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <tuple>

#include "Strand/ContextStore.h"
#include "Strand/Export.h"

// ContextStore.h declares quill::source::location and hint ahead.
namespace quill::external_input {

class scoped_hint;

// Writes the hint's name, one space and its id: "click hint042017"; a hint with
// both fields empty writes one space.
STRAND_EXPORT std::ostream& operator<<(std::ostream& os, const hint& h);

// An immutable (name, id) pair. An empty name means "no hint".
class hint {
public:
    // Both fields empty. Never fails.
    STRAND_EXPORT hint();
    // The copying forms throw only what copying text throws.
    STRAND_EXPORT hint(const hint& other);
    // Note the order: the id comes first.
    STRAND_EXPORT hint(const std::string& id, const std::string& name);
    STRAND_EXPORT ~hint();
    hint& operator=(const hint& other) = delete;

    // Copies of the fields; throw only what copying text throws.
    STRAND_EXPORT std::string getHintId() const;
    STRAND_EXPORT std::string getHintName() const;

    // Makes this hint the calling thread's hint; with an empty name the thread
    // is left without one. Throws only what copying text throws.
    STRAND_EXPORT void setAsExternalInputHint() const;

    // Leaves the calling thread without a hint. Never fails.
    STRAND_EXPORT static void clearExternalInputHint();

    // The calling thread's hint as a new object of its own, or null when the
    // thread has none. Throws only what allocation throws.
    STRAND_EXPORT static std::shared_ptr<hint> getExternalInputHint();

    // The calling thread's hint name; empty when it has none. Throws only what
    // copying text throws, as does the next.
    STRAND_EXPORT static std::string getExternalInputHintName();

    // The calling thread's hint id; empty when it has no hint, whatever id it holds.
    STRAND_EXPORT static std::string getExternalInputHintId();

    // Generates an id (three random digits from quill::rand, then the process-wide
    // count of created hints modulo 1000) and makes (id, name) the calling
    // thread's hint until the returned object ends. Throws what the random hook
    // throws (std::bad_function_call when it is empty) and allocation errors.
    STRAND_EXPORT static scoped_hint createExternalInputHint(const std::string& name);

    // Carries location's context over to the calling thread: its hint, unless
    // the thread's id already equals the hint's id, and its context store, if
    // that is still alive. Saves nothing. Throws only what copying text throws.
    STRAND_EXPORT static void copyThreadStorageIfNecessary(const quill::source::location& location);

private:
    friend std::ostream& operator<<(std::ostream& os, const hint& h);
    friend struct quill::source::location;
    friend class scoped_hint;

    // Makes (threadId, threadName) the calling thread's hint, all or nothing.
    static void setThreadHint(std::string threadId, std::string threadName);

    std::string name;
    std::string id;

    // The calling thread's hint as (id, name).
    static thread_local std::tuple<std::string, std::string> threadExternalInputHint;
};

// Makes (id, name) the calling thread's hint for its lifetime. Nothing is saved:
// its end leaves the thread without a hint, even if another one was current
// before (so an inner scoped_hint ends an outer one's hint too).
class scoped_hint {
public:
    // Throws only what allocation throws.
    STRAND_EXPORT scoped_hint(std::string id, std::string name);
    // Never fails.
    STRAND_EXPORT ~scoped_hint();
    scoped_hint(const scoped_hint&) = delete;
    scoped_hint& operator=(const scoped_hint&) = delete;
};

}  // namespace quill::external_input
