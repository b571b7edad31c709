// Source locations: the record of a call site (file, line, function) together
// with a snapshot of the calling thread's external input hint and a weak
// reference to its context store. Work handed from one thread to another
// carries a location; a scoped thread name on the receiving thread applies it.
//
// Callers fill in the call site through a macro of their own, for instance
//   #define HERE quill::source::location::current(__FILE__, __LINE__, __func__)
//
// A finished record may be copied to and read on any thread: the hint it points
// to never changes, and the store is only ever reached through a weak reference.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>

#include "Strand/ContextStore.h"
#include "Strand/Export.h"
#include "Strand/ExternalInputHint.h"

namespace quill::source {

// A call site and the calling thread's context; capture one with current().
struct location {
    // Neither text is owned or copied: pass string literals. file may be null.
    const char* file = nullptr;
    const char* function = nullptr;
    // The calling thread's hint at capture, or null when it had none.
    std::shared_ptr<quill::external_input::hint> externalInputHint;
    // The calling thread's store at capture; empty when it had no live store.
    std::weak_ptr<quill::external_input::context_store> contextStore;
    std::uint32_t line = 0;

    // Captures the call site and the calling thread's hint and live store. A
    // thread without either gets a record with both context fields empty, and
    // the call allocates nothing. line keeps its 32 bits, read as unsigned (-1
    // prints as 4294967295). An allocation failure while copying the hint ends
    // the process.
    STRAND_EXPORT static location current(const char* file, int line,
                                          const char* function) noexcept;

    // The same text as operator<< writes on a default-formatted stream, e.g.
    // "Client.cpp:120:connect externalInputHint=click hint042017". Throws only
    // what allocation throws.
    STRAND_EXPORT std::string to_string() const;
};

// Writes the last path component of file (empty for a null file), ':', line
// through the stream's own number formatting, ':', function (empty for a null
// function), then " externalInputHint=" and the hint when it has a name. The
// context store is never printed. Returns os.
STRAND_EXPORT std::ostream& operator<<(std::ostream& os, const location& loc);

}  // namespace quill::source
