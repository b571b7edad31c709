// toWString / toString against std::wstring_convert over the standard
// UTF-8/UTF-16 facet, used the way the library once used it: one shared instance
// behind a lock. Throughput counts the bytes of the UTF-8 text in both directions.
#include <benchmark/benchmark.h>

#include <codecvt>
#include <locale>
#include <mutex>
#include <random>
#include <string>

#include "StringUtils/Encoding.h"

namespace {

// Pieces in random order up to size bytes, padded with spaces.
template <size_t N>
std::string randomConcatenation(const char* const (&pieces)[N], size_t size) {
    std::mt19937 random(42);
    std::string text;
    for (;;) {
        const std::string piece = pieces[random() % N];
        if (text.size() + piece.size() > size) {
            text.append(size - text.size(), ' ');
            return text;
        }
        text += piece;
    }
}

class LockedReference {
public:
    std::wstring from_bytes(const std::string& text) {
        const std::lock_guard lock(mutex_);
        return converter_.from_bytes(text);
    }
    std::string to_bytes(const std::wstring& text) {
        const std::lock_guard lock(mutex_);
        return converter_.to_bytes(text);
    }

private:
    std::mutex mutex_;
    std::wstring_convert<std::codecvt_utf8_utf16<wchar_t, 0x10FFFF, std::codecvt_mode{}>, wchar_t>
        converter_;
};

LockedReference& reference() {
    static LockedReference instance;
    return instance;
}

// Sentences in English, French, German, Polish, Japanese and Chinese and a chat
// line with emoji, in random order, up to size bytes (never cutting a
// character): ASCII words, accented Latin, CJK and four-byte sequences in the
// runs that real text has.
std::string mixedText(size_t size) {
    const char* const sentences[] = {
        "The quick brown fox jumps over the lazy dog while the band plays on. ",
        "Le c\xC5\x93ur a ses raisons que la raison ne conna\xC3\xAEt point, disait Pascal. ",
        "Gr\xC3\xB6\xC3\x9F"
        "ere \xC3\x84nderungen f\xC3\xBCr Stra\xC3\x9F"
        "enbahnen "
        "\xC3\xBC"
        "bermorgen in K\xC3\xB6ln. ",
        "Za\xC5\xBC\xC3\xB3\xC5\x82\xC4\x87 g\xC4\x99\xC5\x9Bl\xC4\x85 ja\xC5\xBA\xC5\x84, "
        "powiedzia\xC5\x82 \xC5\x81ukasz. ",
        "\xE6\x9D\xB1\xE4\xBA\xAC\xE9\x83\xBD\xE3\x81\xAF\xE6\x97\xA5\xE6\x9C\xAC\xE3\x81\xAE"
        "\xE9\xA6\x96\xE9\x83\xBD\xE3\x81\xA7\xE3\x81\x82\xE3\x82\x8A\xE3\x80\x81\xE5\xA4\x9A"
        "\xE3\x81\x8F\xE3\x81\xAE\xE4\xBA\xBA\xE3\x80\x85\xE3\x81\x8C\xE6\x9A\xAE\xE3\x82\x89"
        "\xE3\x81\x97\xE3\x81\xA6\xE3\x81\x84\xE3\x81\xBE\xE3\x81\x99\xE3\x80\x82",
        "\xE6\x88\x91\xE4\xBB\xAC\xE4\xBB\x8A\xE5\xA4\xA9\xE5\x8E\xBB\xE5\x85\xAC\xE5\x9B\xAD"
        "\xE6\x95\xA3\xE6\xAD\xA5\xEF\xBC\x8C\xE5\xA4\xA9\xE6\xB0\x94\xE9\x9D\x9E\xE5\xB8\xB8"
        "\xE5\xA5\xBD\xE3\x80\x82",
        "See you soon \xF0\x9F\x98\x80\xF0\x9F\x8E\x89 \xE2\x80\x94 don't forget the "
        "\xF0\x9F\x8D\x95! ",
    };
    return randomConcatenation(sentences, size);
}

// Words of the same kinds in random order: a new script after nearly every
// space, the worst case for the branch prediction of any byte-wise converter.
std::string mixedWords(size_t size) {
    const char* const words[] = {
        "hello ",
        "world ",
        "the ",
        "quick ",
        "fox ",
        "Gr\xC3\xBC\xC3\x9F"
        "e ",
        "caf\xC3\xA9 ",
        "na\xC3\xAFve ",
        "\xE6\x9D\xB1\xE4\xBA\xAC\xE9\x83\xBD ",
        "\xE6\xBC\xA2\xE5\xAD\x97 ",
        "\xF0\x9F\x98\x80 ",
        "\xF0\x9F\x8E\x89\xF0\x9F\x9A\x80 ",
    };
    return randomConcatenation(words, size);
}

std::string asciiText(size_t size) {
    std::string text;
    while (text.size() < size) {
        text += "The quick brown fox jumps over the lazy dog. ";
    }
    text.resize(size);
    return text;
}

void toWStringOurs(benchmark::State& state, const std::string& text) {
    for (auto _ : state) {
        std::wstring wide = StringUtils::toWString(text);
        benchmark::DoNotOptimize(wide.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void toWStringBaseline(benchmark::State& state, const std::string& text) {
    for (auto _ : state) {
        std::wstring wide = reference().from_bytes(text);
        benchmark::DoNotOptimize(wide.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void toStringOurs(benchmark::State& state, const std::string& text) {
    const std::wstring wide = StringUtils::toWString(text);
    for (auto _ : state) {
        std::string utf8 = StringUtils::toString(wide);
        benchmark::DoNotOptimize(utf8.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void toStringBaseline(benchmark::State& state, const std::string& text) {
    const std::wstring wide = StringUtils::toWString(text);
    for (auto _ : state) {
        std::string utf8 = reference().to_bytes(wide);
        benchmark::DoNotOptimize(utf8.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void registerPair(const std::string& name, const std::string& text) {
    benchmark::RegisterBenchmark(("toWString/" + name + "/ours").c_str(), toWStringOurs, text);
    benchmark::RegisterBenchmark(("toWString/" + name + "/baseline").c_str(), toWStringBaseline,
                                 text);
    benchmark::RegisterBenchmark(("toString/" + name + "/ours").c_str(), toStringOurs, text);
    benchmark::RegisterBenchmark(("toString/" + name + "/baseline").c_str(), toStringBaseline,
                                 text);
}

// Each registration keeps its own copy of its text.
const bool registered = [] {
    for (const size_t size : {4 << 10, 64 << 10, 1 << 20, 4 << 20}) {
        const std::string kilobytes = std::to_string(size >> 10) + "KB";
        registerPair("ascii/" + kilobytes, asciiText(size));
        registerPair("mixed/" + kilobytes, mixedText(size));
    }
    registerPair("random words/1024KB", mixedWords(1 << 20));
    return true;
}();

}  // namespace
