#include "BaselineRatio.h"

int main(int argc, char** argv) {
    return runWithBaselineRatios(argc, argv);
}
