// Uses libStrand and the string library together.
#include <Strand/Strand.h>
#include <StringUtils/StringUtils.h>

#include <iostream>

int main() {
    Strand::setThreadName("  old-cmake  ");
    const std::string name = StringUtils::trim(Strand::getThreadName());
    std::cout << "thread " << Strand::getThreadIdString() << " is \"" << name << "\"\n";
    return name == "old-cmake" ? 0 : 1;
}
