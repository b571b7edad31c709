#include <Strand/Strand.h>

#include <iostream>

int main() {
    Strand::setThreadName("consumer");
    const auto threads = Strand::getThreadIds();
    std::cout << Strand::getThreadName() << " " << Strand::getThreadIdString() << " of "
              << threads.size() << " thread(s)\n";
    return Strand::getThreadName() == "consumer" && !threads.empty() ? 0 : 1;
}
