// Marks the declarations that form the shared library's interface. Everything
// else is compiled with hidden visibility and stays inside the library.
#pragma once

// Exports the declaration it precedes from libStrand.
#define STRAND_EXPORT __attribute__((visibility("default")))
