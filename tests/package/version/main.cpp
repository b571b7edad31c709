#include <Strand/Version.h>

#include <iostream>
#include <string_view>

static_assert(STRAND_VERSION_MAJOR == PACKAGE_VERSION_MAJOR);
static_assert(STRAND_VERSION_MINOR == PACKAGE_VERSION_MINOR);
static_assert(STRAND_VERSION_PATCH == PACKAGE_VERSION_PATCH);
static_assert(std::string_view(STRAND_VERSION_STRING) == PACKAGE_VERSION);

int main() { std::cout << STRAND_VERSION_STRING << "\n"; }
