// The stack-trace part of the demo.
#pragma once

// Takes the stack trace of a worker thread that waits in a named function and
// prints it.
void showStackTraces();
