// Splitting, searching, trimming, number parsing and joining against the plain
// standard library idioms they replace.
#include <benchmark/benchmark.h>

#include <charconv>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "StringUtils/Extract.h"
#include "StringUtils/NumberParsing.h"
#include "StringUtils/Search.h"
#include "StringUtils/Split.h"
#include "StringUtils/Trim.h"

namespace {

std::vector<std::string> getlineSplit(const std::string& text, char delimiter) {
    std::vector<std::string> fields;
    std::istringstream stream(text);
    for (std::string field; std::getline(stream, field, delimiter);) {
        fields.push_back(field);
    }
    return fields;
}

const std::string kCsvLine = "2024-06-07,alice,sip:alice@example.com,,42,3.14,ok";

// About 1 MB of comma-separated words of 2 to 12 letters.
std::string bigCsv() {
    std::mt19937 random(3);
    std::string text;
    while (text.size() < (1 << 20)) {
        text.append(2 + random() % 11, static_cast<char>('a' + random() % 26));
        text += ',';
    }
    return text;
}

void splitLine(benchmark::State& state, const std::string& text, int variant) {
    for (auto _ : state) {
        if (variant == 0) {
            auto fields = StringUtils::split(text, ',', false);
            benchmark::DoNotOptimize(fields.data());
        } else if (variant == 1) {
            auto fields = StringUtils::splitToViews(text, ',', false);
            benchmark::DoNotOptimize(fields.data());
        } else {
            auto fields = getlineSplit(text, ',');
            benchmark::DoNotOptimize(fields.data());
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

const std::string kPadded = " \t  a value with inner spaces   \r\n";

void trimOurs(benchmark::State& state) {
    for (auto _ : state) {
        std::string trimmed = StringUtils::trim(kPadded);
        benchmark::DoNotOptimize(trimmed.data());
    }
}

void trimBaseline(benchmark::State& state) {
    for (auto _ : state) {
        const char* const space = " \t\n\v\f\r";
        const size_t first = kPadded.find_first_not_of(space);
        std::string trimmed =
            first == std::string::npos
                ? std::string()
                : kPadded.substr(first, kPadded.find_last_not_of(space) - first + 1);
        benchmark::DoNotOptimize(trimmed.data());
    }
}

const std::vector<std::string> kIntegers = {"0", "42", "-17", "2147483647", "99", "123456"};
const std::vector<std::string> kDoubles = {"0.5", "-3.25e10", "42", "1e-7", "6.02214076e23"};

// Parses every text with parse once per iteration.
template <typename Parse>
void parseAll(benchmark::State& state, const std::vector<std::string>& texts, Parse parse) {
    for (auto _ : state) {
        for (const auto& text : texts) {
            benchmark::DoNotOptimize(parse(text));
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * texts.size()));
}

void registerParsers() {
    benchmark::RegisterBenchmark("toInteger/ours", [](benchmark::State& state) {
        parseAll(state, kIntegers, [](const std::string& text) {
            int value = 0;
            return StringUtils::toInteger(text, value) ? value : -1;
        });
    });
    benchmark::RegisterBenchmark("toInteger/baseline", [](benchmark::State& state) {
        parseAll(state, kIntegers, [](const std::string& text) { return std::stoi(text); });
    });
    benchmark::RegisterBenchmark("stringViewToInteger/ours", [](benchmark::State& state) {
        parseAll(state, kIntegers, [](const std::string& text) {
            int value = 0;
            return StringUtils::stringViewToInteger(text, value) ? value : -1;
        });
    });
    benchmark::RegisterBenchmark("stringViewToInteger/baseline", [](benchmark::State& state) {
        parseAll(state, kIntegers, [](const std::string& text) {
            int value = 0;
            std::from_chars(text.data(), text.data() + text.size(), value);
            return value;
        });
    });
    benchmark::RegisterBenchmark("toDouble/ours", [](benchmark::State& state) {
        parseAll(state, kDoubles, [](const std::string& text) {
            double value = 0;
            return StringUtils::toDouble(text, value) ? value : -1;
        });
    });
    benchmark::RegisterBenchmark("toDouble/baseline", [](benchmark::State& state) {
        parseAll(state, kDoubles, [](const std::string& text) { return std::stod(text); });
    });
}

std::string streamJoin(const std::vector<std::string>& items, const std::string& separator) {
    std::ostringstream stream;
    for (size_t i = 0; i < items.size(); ++i) {
        stream << items[i];
        if (i + 1 < items.size()) {
            stream << separator;
        }
    }
    return stream.str();
}

void joinItems(benchmark::State& state, bool ours) {
    const std::vector<std::string> items =
        StringUtils::split(bigCsv().substr(0, 64 << 10), ',', false);
    for (auto _ : state) {
        std::string joined = ours ? StringUtils::join(items, ", ") : streamJoin(items, ", ");
        benchmark::DoNotOptimize(joined.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * items.size()));
}

// Searching a caller-supplied pattern: the ordinary shape (a short pattern near
// the end of 1 MB of words) and the hostile one (1 MB of 'a' against 'a' x 512 K
// ending in 'b'), each against std::string::find in the same run.
struct SearchShape {
    std::string text;
    std::string pattern;
};

SearchShape shortPatternShape() {
    std::string text = bigCsv();
    text.replace(text.size() - 64, 6, "needle");
    return {std::move(text), "needle"};
}

SearchShape hostileShape() {
    return {std::string(1 << 20, 'a'), std::string((1 << 19) - 1, 'a') + "b"};
}

std::vector<std::string> standardSplit(std::string_view text, std::string_view delimiter) {
    std::vector<std::string> fields;
    for (;;) {
        const size_t match = text.find(delimiter);
        fields.emplace_back(text.substr(0, match));
        if (match == std::string_view::npos) {
            return fields;
        }
        text.remove_prefix(match + delimiter.size());
    }
}

// The erasure this library used before: one pass that compares the kept tail with
// the pattern at every byte equal to the pattern's last one.
void tailCompareErase(std::string& text, const std::string& sub) {
    std::size_t kept = 0;
    for (const char c : text) {
        text[kept++] = c;
        if (kept >= sub.size() && c == sub.back() &&
            std::string_view(text).substr(kept - sub.size(), sub.size()) == sub) {
            kept -= sub.size();
        }
    }
    text.resize(kept);
}

enum class SearchOp { find, splitByString, erase, markers };

void search(benchmark::State& state, const SearchShape& shape, SearchOp op, bool ours) {
    const std::string& text = shape.text;
    const std::string& pattern = shape.pattern;
    for (auto _ : state) {
        switch (op) {
            case SearchOp::find: {
                size_t position = 0;
                benchmark::DoNotOptimize(
                    ours ? StringUtils::findSubStringLocation(text, pattern, position)
                         : text.find(pattern) != std::string::npos);
                break;
            }
            case SearchOp::splitByString: {
                auto fields = ours ? StringUtils::split(text, pattern, false)
                                   : standardSplit(text, pattern);
                benchmark::DoNotOptimize(fields.data());
                break;
            }
            case SearchOp::erase: {
                std::string copy = text;
                ours ? StringUtils::eraseSubString(copy, pattern) : tailCompareErase(copy, pattern);
                benchmark::DoNotOptimize(copy.data());
                break;
            }
            case SearchOp::markers: {
                std::string between;
                if (ours) {
                    between = StringUtils::substr(text, "a", pattern);
                } else {
                    const size_t begin = text.find('a') + 1;
                    const size_t end = text.find(pattern, begin);
                    between = text.substr(begin, end == std::string::npos ? end : end - begin);
                }
                benchmark::DoNotOptimize(between.data());
                break;
            }
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void registerSearches() {
    static const SearchShape ordinary = shortPatternShape();
    static const SearchShape hostile = hostileShape();
    static const SearchShape commaSpace = {bigCsv(), ",a"};
    const std::pair<const char*, SearchOp> ops[] = {{"find", SearchOp::find},
                                                    {"split by string", SearchOp::splitByString},
                                                    {"eraseSubString", SearchOp::erase},
                                                    {"substr by markers", SearchOp::markers}};
    for (const auto& [name, op] : ops) {
        const SearchShape& usual = op == SearchOp::find ? ordinary : commaSpace;
        const std::string base = std::string(name);
        const auto named = [&base](const char* suffix) { return base + suffix; };
        benchmark::RegisterBenchmark(named("/short pattern 1MB/ours").c_str(), search, usual, op,
                                     true);
        benchmark::RegisterBenchmark(named("/short pattern 1MB/baseline").c_str(), search, usual,
                                     op, false);
        benchmark::RegisterBenchmark(named("/hostile 1MB+512KB/ours").c_str(), search, hostile, op,
                                     true);
        // The quadratic baseline takes seconds per run: one is enough.
        benchmark::RegisterBenchmark(named("/hostile 1MB+512KB/baseline").c_str(), search, hostile,
                                     op, false)
            ->Iterations(1);
    }
}

const bool registered = [] {
    const std::string big = bigCsv();
    benchmark::RegisterBenchmark("split/csv line/ours", splitLine, kCsvLine, 0);
    benchmark::RegisterBenchmark("split/csv line/baseline", splitLine, kCsvLine, 2);
    benchmark::RegisterBenchmark("splitToViews/csv line/ours", splitLine, kCsvLine, 1);
    benchmark::RegisterBenchmark("splitToViews/csv line/baseline", splitLine, kCsvLine, 2);
    benchmark::RegisterBenchmark("split/1MB/ours", splitLine, big, 0);
    benchmark::RegisterBenchmark("split/1MB/baseline", splitLine, big, 2);
    benchmark::RegisterBenchmark("splitToViews/1MB/ours", splitLine, big, 1);
    benchmark::RegisterBenchmark("splitToViews/1MB/baseline", splitLine, big, 2);
    benchmark::RegisterBenchmark("trim/ours", trimOurs);
    benchmark::RegisterBenchmark("trim/baseline", trimBaseline);
    registerParsers();
    registerSearches();
    benchmark::RegisterBenchmark("join/64KB of fields/ours", joinItems, true);
    benchmark::RegisterBenchmark("join/64KB of fields/baseline", joinItems, false);
    return true;
}();

}  // namespace
