// Inputs and helpers shared by the peer comparisons: every case is a pair of
// benchmarks "<case>/ours" and "<case>/peer" over the same input, and the
// program ends with the table of our time / the peer's.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace PeerInputs {

// Registers "<name>/ours" and "<name>/peer", each running its call once per
// iteration; bytes, when not 0, is the input size per call for throughput.
template <typename Ours, typename Peer>
void registerPair(const std::string& name, size_t bytes, Ours ours, Peer peer) {
    const auto run = [bytes](auto call) {
        return [bytes, call](benchmark::State& state) {
            for (auto _ : state) {
                benchmark::DoNotOptimize(call());
                benchmark::ClobberMemory();
            }
            if (bytes != 0) {
                state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
            }
        };
    };
    benchmark::RegisterBenchmark((name + "/ours").c_str(), run(ours));
    benchmark::RegisterBenchmark((name + "/peer").c_str(), run(peer));
}

// Comma-separated words of 2 to 12 letters, about size bytes; a quarter of the
// words in capitals when mixedCase.
inline std::string words(size_t size, bool mixedCase = true) {
    std::mt19937 random(3);
    std::string text;
    while (text.size() < size) {
        const char base = mixedCase && random() % 4 == 0 ? 'A' : 'a';
        text.append(2 + random() % 11, static_cast<char>(base + random() % 26));
        text += ',';
    }
    text.resize(size);
    return text;
}

// Mixed UTF-8 text of about size bytes: mostly ASCII words, with Latin
// accented letters, CJK and an emoji in between.
inline std::string mixedUtf8(size_t size) {
    const char* const pieces[] = {"the quick brown fox ", "Gr\xC3\xBC\xC3\x9F" "e aus K\xC3\xB6ln, ",
                                  "\xE6\x9D\xB1\xE4\xBA\xAC ", "jumps over ", "\xF0\x9F\x98\x80 ok; ",
                                  "caf\xC3\xA9 cr\xC3\xA8me, ", "12345 67890 "};
    std::mt19937 random(7);
    std::string text;
    for (;;) {
        const std::string piece = pieces[random() % std::size(pieces)];
        if (text.size() + piece.size() > size) {
            text.append(size - text.size(), ' ');
            return text;
        }
        text += piece;
    }
}

// The sizes the text cases run at.
inline const std::vector<std::pair<const char*, size_t>> kSizes = {{"1KB", 1 << 10},
                                                                   {"1MB", 1 << 20}};

}  // namespace PeerInputs
