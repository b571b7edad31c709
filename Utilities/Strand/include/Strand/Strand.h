// The thread layer: identity, names, stack traces, listeners and scoped thread
// names. Clients include this one header.
#pragma once

#include "Strand/ExecuteOnThread.h"
#include "Strand/ScopedThreadName.h"
#include "Strand/StackTrace.h"
#include "Strand/ThreadId.h"
#include "Strand/ThreadName.h"
