// Draws through the replaceable hook and checks the documented ranges.
#include <RandomUtils/RandomUtils.h>

#include <iostream>

int main() {
    const int value = quill::rand(1, 6, false);
    const int spread = quill::uniform_rand_dist(100, 10);
    std::cout << "rand(1, 6) = " << value << ", uniform_rand_dist(100, 10) = " << spread << "\n";
    quill::overrideable::g_randFunc = [](int low, int, bool) { return low; };
    const bool replaced = quill::rand(3, 9, false) == 3;
    return value >= 1 && value <= 6 && spread >= 90 && spread <= 110 && replaced ? 0 : 1;
}
