// The stack-trace part of the demo.
#pragma once

#include <Strand/ThreadId.h>

#include <string>

// Takes the stack trace of the thread target and prints it, one frame a line,
// with a heading that names the thread and says what it is (what).
void showStackTrace(const Strand::ThreadId& target, const std::string& what);
