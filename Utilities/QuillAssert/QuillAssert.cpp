#include "QuillAssert/QuillAssert.h"

#include <sstream>

namespace quill {

namespace overrideable {

std::function<void(const std::string&, int, const std::string&, const std::string&,
                   const std::string&)>
    g_quillAssertFunc;

std::function<void(const std::string&, int, const std::string&, const std::string&)>
    g_quillAssertErrorLogFunc;

}  // namespace overrideable

void assertImpl(const std::string& file, int line, const std::string& function,
                const std::string& condition, const std::string& message) {
    // The text is composed even when no hook will read it: what a hook receives
    // must not depend on which other hooks are installed.
    std::ostringstream text;
    text << "Assertion failed: " << condition;
    if (!message.empty()) {
        text << " with message: " << message;
    }
    const std::string composed = text.str();

    if (overrideable::g_quillAssertErrorLogFunc) {
        overrideable::g_quillAssertErrorLogFunc(composed, line, file, function);
    }
    if (overrideable::g_quillAssertFunc) {
        overrideable::g_quillAssertFunc(file, line, function, condition, message);
    }
}

}  // namespace quill
