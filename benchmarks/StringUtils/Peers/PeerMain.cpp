// The peer comparisons' program: says which peer libraries were missing at
// build time (their cases are left out), runs the cases and ends with the
// table of our time / the peer's.
#include <cstdio>

#include "../BaselineRatio.h"

int main(int argc, char** argv) {
    const char* const missing = STRAND_MISSING_PEERS;
    if (*missing != '\0') {
        std::printf("Peer libraries not found when built, their cases skipped: %s\n", missing);
    }
    std::printf(
        "Number formatting and byte-wise case mapping follow the process's locales; they take\n"
        "their fast path only while the classic locale is in force, as it is here.\n");
    return runWithBaselineRatios(argc, argv);
}
