// The stack-trace part of the demo.
#pragma once

// Takes the stack trace of a worker thread that waits in a named function and
// prints it, then lists every thread of the process with its name.
void showStackTraces();
