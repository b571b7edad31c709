// Uniform random integers from one process-wide, well-seeded engine behind a
// replaceable hook. Every function here draws through
// quill::overrideable::g_randFunc, so replacing that hook replaces the
// randomness of the whole module.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <random>

namespace quill {

namespace overrideable {

// The module's one source of randomness; quill::defaultRand after start-up.
// Replace it before threads draw, never while they do (it is read unlocked).
extern std::function<int(int, int, bool)> g_randFunc;

}  // namespace overrideable

// One Mersenne Twister engine and the lock that guards each draw from it.
class Generator {
public:
    // Seeds the engine from 624 words of std::random_device ("/dev/urandom").
    // Throws what std::random_device throws if the device cannot be read.
    Generator();
    Generator(const Generator&) = delete;
    Generator& operator=(const Generator&) = delete;

    // A freshly seeded engine; throws as the constructor does.
    static std::mt19937 createSeededRNG();

    // A uniform value in [low, high], negated when randomSign is set and a second
    // draw through g_randFunc(1, 2, false) yields anything but 1. low == high
    // returns low without drawing. Requires low <= high.
    int getRandomNumber(int low, int high, bool randomSign);

    // One draw of distribution from the engine, under the lock.
    int getRandomNumber(std::uniform_int_distribution<int>& distribution);

private:
    std::mt19937 engine_;
    std::mutex lock_;
};

// The default hook: a draw from the process-wide Generator, created on first use.
int defaultRand(int low, int high, bool randomSign);

// g_randFunc(low, high, randomSign). Throws std::bad_function_call if the hook
// is empty.
int rand(int low, int high, bool randomSign);

// Whether g_randFunc(1, 2, false) yields 1.
bool rand_bool();

// base plus g_randFunc(0, spread, true), with 32-bit wrap-around: a value in
// [base - spread, base + spread], where offset 0 is twice as likely as others.
int uniform_rand_dist(int base, unsigned int spread);

// False without drawing unless 1 <= percent <= 100; otherwise whether one draw
// over [1, 100] is at most percent.
bool isPercentSample(int percent);

}  // namespace quill
