// A failed soft assertion reaches the installed hook and does not abort.
#include <QuillAssert/QuillAssert.h>

#include <iostream>

int main() {
    std::string seen;
    quill::overrideable::g_quillAssertFunc = [&seen](const std::string&, int, const std::string&,
                                                    const std::string& condition,
                                                    const std::string&) { seen = condition; };
    quill::assertImpl(__FILE__, __LINE__, __func__, "ready", "not ready yet");
    std::cout << "hook saw: " << seen << "\n";
    return seen == "ready" ? 0 : 1;
}
