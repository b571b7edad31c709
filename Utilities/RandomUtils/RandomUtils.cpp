#include "RandomUtils/RandomUtils.h"

#include <array>
#include <cstdint>

namespace quill {

namespace overrideable {
std::function<int(int, int, bool)> g_randFunc = &defaultRand;
}  // namespace overrideable

Generator::Generator() {
    // The engine first takes its default seed; it is replaced before any draw.
    engine_ = createSeededRNG();
}

std::mt19937 Generator::createSeededRNG() {
    std::random_device device("/dev/urandom");
    std::array<std::uint32_t, std::mt19937::state_size> words{};
    for (auto& word : words) {
        word = device();
    }
    std::seed_seq sequence(words.begin(), words.end());
    return std::mt19937(sequence);
}

int Generator::getRandomNumber(std::uniform_int_distribution<int>& distribution) {
    const std::lock_guard<std::mutex> guard(lock_);
    return distribution(engine_);
}

int Generator::getRandomNumber(int low, int high, bool randomSign) {
    if (low == high) {
        return low;
    }
    std::uniform_int_distribution<int> distribution(low, high);
    const int value = getRandomNumber(distribution);
    if (!randomSign) {
        return value;
    }
    // The sign is a second, separately locked draw through the hook.
    return overrideable::g_randFunc(1, 2, false) == 1 ? value : -value;
}

int defaultRand(int low, int high, bool randomSign) {
    static const std::shared_ptr<Generator> generator = std::make_shared<Generator>();
    return generator->getRandomNumber(low, high, randomSign);
}

int rand(int low, int high, bool randomSign) {
    return overrideable::g_randFunc(low, high, randomSign);
}

bool rand_bool() { return rand(1, 2, false) == 1; }

int uniform_rand_dist(int base, unsigned int spread) {
    const int offset = rand(0, static_cast<int>(spread), true);
    return static_cast<int>(static_cast<std::uint32_t>(base) + static_cast<std::uint32_t>(offset));
}

bool isPercentSample(int percent) {
    if (percent < 1 || percent > 100) {
        return false;
    }
    return rand(1, 100, false) <= percent;
}

}  // namespace quill
