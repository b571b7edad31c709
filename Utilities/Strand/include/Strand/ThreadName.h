// Thread names. A name is a NUL-free byte string of at most 63 bytes; longer
// requests are cut, never refused.
#pragma once

#include <string>

#include "Strand/Export.h"
#include "Strand/ThreadId.h"

namespace Strand {

// Names the calling thread, cutting a name of 64 bytes or more to its first 63
// bytes (the cut may fall inside a UTF-8 character; an embedded NUL ends the
// name). A refusal by the platform (pthread_setname_np returning non-zero: on
// macOS -1 with errno set, on Linux an error number) is reported through
// quill::assertImpl with the condition "rc == 0" and otherwise ignored; an
// exception thrown by an installed assertion hook reaches the caller.
STRAND_EXPORT void setThreadName(const std::string& name);

// The calling thread's name; empty if it has none.
STRAND_EXPORT std::string getThreadName();

// The name of the thread id names; empty if it has none, has ended (also while
// not yet joined), or cannot be asked.
STRAND_EXPORT std::string getThreadName(ThreadId id);

}  // namespace Strand
