#include "Strand/StackTrace.h"

#include <array>
#include <atomic>
#include <sstream>

#include "Strand/ExecuteOnThread.h"
#include "Strand/Platform.h"

namespace Strand {

namespace {

constexpr int kMaxFrames = 100;

// What the target records, shared by the caller and the recording function so
// that a recording which runs after the caller gave up writes into live memory.
// The frames are complete once count is non-zero.
struct Recording {
    std::array<void*, kMaxFrames> frames{};
    std::atomic<int> count{0};
};

}  // namespace

// The interface takes the handle, the thread and the callbacks by value.
// NOLINTBEGIN(performance-unnecessary-value-param)
std::string getStackTrace(quill::handle<ICoreFramework> /*framework*/, ThreadId thread) {
    const auto recording = std::make_shared<Recording>();
    executeOnThread(thread, [recording] {
        const int count = platform::captureBacktrace(recording->frames.data(), kMaxFrames);
        recording->count.store(count, std::memory_order_release);
    });
    const int count = recording->count.load(std::memory_order_acquire);
    if (count <= 0) {
        return {};
    }
    const std::shared_ptr<char*> symbols =
        platform::describeFrames(recording->frames.data(), count);
    if (symbols == nullptr) {
        return {};
    }
    std::ostringstream text;
    for (int i = 0; i < count; ++i) {
        text << symbols.get()[i] << std::endl;
    }
    return text.str();
}

std::vector<ThreadStackTrace> getAllThreadStackTrace(quill::handle<ICoreFramework> /*framework*/) {
    return {};
}

std::vector<ThreadSamples> sampleAllThreads(const std::chrono::seconds& /*duration*/,
                                            const std::chrono::milliseconds& /*interval*/) {
    return {};
}

std::vector<StackSample> sampleProcessThread(const int& /*pid*/, const ThreadId& /*thread*/,
                                             const std::chrono::seconds& /*duration*/,
                                             const std::chrono::milliseconds& /*interval*/,
                                             SampleCallback /*callback*/) {
    return {};
}

std::vector<ThreadSamples> sampleProcessAllThread(const int& /*pid*/, const ThreadId& /*thread*/,
                                                  const std::chrono::seconds& /*duration*/,
                                                  const std::chrono::milliseconds& /*interval*/,
                                                  const std::chrono::milliseconds& /*timeout*/,
                                                  SampleCallback /*callback*/) {
    return {};
}
// NOLINTEND(performance-unnecessary-value-param)

}  // namespace Strand
