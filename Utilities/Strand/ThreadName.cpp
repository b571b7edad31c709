#include "Strand/ThreadName.h"

#include "QuillAssert/QuillAssert.h"
#include "Strand/Platform.h"

namespace Strand {

namespace {
// The platform keeps 63 bytes of a name (64 with the terminating NUL).
constexpr std::size_t kMaxNameBytes = 63;
}  // namespace

void setThreadName(const std::string& name) {
    // A longer name is cut in a buffer of its own; a shorter one is passed as is.
    char cut[kMaxNameBytes + 1] = {};
    const char* const text =
        name.size() > kMaxNameBytes ? (name.copy(cut, kMaxNameBytes), cut) : name.c_str();
    const int rc = platform::setCurrentThreadName(text);
    if (rc == 0) {
        return;
    }
    // Where the failure stands is kept scrambled in the binary.
    static constexpr quill::obfuscated_string_variable filename(__FILE_NAME__);
    static constexpr quill::obfuscated_string_variable funcname("setThreadName");
    quill::assertImpl(filename.get_substring(0, filename.size()), __LINE__,
                      funcname.get_substring(0, funcname.size()), "rc == 0",
                      "pthread_setname_np failed :" + name);
}

std::string getThreadName() { return getThreadName(getThreadId()); }

std::string getThreadName(ThreadId id) { return platform::threadName(id); }

}  // namespace Strand
