#include <Strand/Version.h>

#include <iostream>
#include <string_view>

static_assert(STRAND_VERSION_MAJOR == PACKAGE_VERSION_MAJOR,
              "major differs from the CMake package's");
static_assert(STRAND_VERSION_MINOR == PACKAGE_VERSION_MINOR,
              "minor differs from the CMake package's");
static_assert(STRAND_VERSION_PATCH == PACKAGE_VERSION_PATCH,
              "patch differs from the CMake package's");
static_assert(std::string_view(STRAND_VERSION_STRING) == PACKAGE_VERSION,
              "the version text differs from the CMake package's");

int main() { std::cout << STRAND_VERSION_STRING << "\n"; }
