// Stack traces of any thread of this process, and the entry points for
// whole-process traces and time-based sampling.
//
// A trace is taken on the thread itself, inside its SIGUSR1 handler (see
// ExecuteOnThread.h), so from the first trace of another thread on the library
// owns SIGUSR1. Executables that want function names in traces must export
// their symbols (CMake ENABLE_EXPORTS, or -rdynamic); otherwise their own
// frames show as addresses only.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Strand/Export.h"
#include "Strand/ThreadId.h"

// The embedding application's core framework object; defined by the application.
class ICoreFramework;

namespace quill {

// An opaque, copyable handle to an object of the embedding application. Empty
// by default; this library passes it along and never looks inside.
template <typename T>
class handle {
public:
    handle() = default;
    // A handle to object.
    explicit handle(std::shared_ptr<T> object) noexcept : object_(std::move(object)) {}

    // The object, or null for an empty handle.
    T* get() const noexcept { return object_.get(); }
    explicit operator bool() const noexcept { return object_ != nullptr; }  // not empty

private:
    std::shared_ptr<T> object_;
};

}  // namespace quill

namespace Strand {

// The trace of one thread, in getStackTrace's form.
struct ThreadStackTrace {
    ThreadId thread;    // the thread traced
    std::string trace;  // its trace; empty when none was taken
};

// One sample of a thread's stack: its return addresses, innermost first.
using StackSample = std::vector<unsigned long>;

// The samples taken of one thread, oldest first.
struct ThreadSamples {
    ThreadId thread;                   // the thread sampled
    std::vector<StackSample> samples;  // its samples, oldest first
};

// Called once per sample with the process id, the thread, the sample's
// addresses and the sample's number; returns a value of the caller's choosing.
using SampleCallback =
    std::function<unsigned long(int, const ThreadId&, std::vector<unsigned long>&, unsigned long)>;

// The stack of thread as text, one line per frame, innermost first, each line
// the platform's description of the frame (image, address, symbol, offset) and
// a line feed, the last line included; at most 100 lines (the innermost 100
// frames). The top lines are the recording's own frames (for another thread,
// its signal handler). A thread whose numeric id is the caller's is the caller
// (see executeOnThread), traced at once without a signal. Empty if the thread
// cannot be signalled (on macOS a dispatch (GCD) worker thread, or a call from
// inside a function that executeOnThread runs on another thread), does not
// accept within 100 ms (SIGUSR1 blocked), or its frames cannot be described.
// A thread interrupted inside a lazy-binding stub (during its first call of a
// function of another shared object; on aarch64 the dynamic linker's resolver
// has no unwind information) may give a short trace that ends a few frames
// below the handler's. framework is not used.
STRAND_EXPORT std::string getStackTrace(quill::handle<ICoreFramework> framework, ThreadId thread);

// The traces of every thread. Not available on this platform: always an empty
// vector, at once.
STRAND_EXPORT std::vector<ThreadStackTrace> getAllThreadStackTrace(
    quill::handle<ICoreFramework> framework);

// Samples every thread of this process for duration, every interval. Not
// available on this platform: always an empty vector, at once.
STRAND_EXPORT std::vector<ThreadSamples> sampleAllThreads(
    const std::chrono::seconds& duration, const std::chrono::milliseconds& interval);

// Samples thread of process pid for duration, every interval, handing each
// sample to callback. Not available on this platform: always an empty vector,
// at once; callback is never called.
STRAND_EXPORT std::vector<StackSample> sampleProcessThread(
    const int& pid, const ThreadId& thread, const std::chrono::seconds& duration,
    const std::chrono::milliseconds& interval, SampleCallback callback);

// Samples every thread of process pid for duration, every interval, handing
// each sample to callback. Not available on this platform: always an empty
// vector, at once; callback is never called.
STRAND_EXPORT std::vector<ThreadSamples> sampleProcessAllThread(
    const int& pid, const ThreadId& thread, const std::chrono::seconds& duration,
    const std::chrono::milliseconds& interval, const std::chrono::milliseconds& timeout,
    SampleCallback callback);

}  // namespace Strand
