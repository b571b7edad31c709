// Our transcoder against the standard library's (deprecated) UTF-8/UTF-16 facet,
// kept here as the reference. The two must agree on every input, except in the
// input classes where libstdc++'s facet is knowingly lax and ours rejects:
//   - a surrogate encoded in UTF-8 (ED A0 80 decodes to a lone 0xD800),
//   - a UTF-8 sequence cut off at the end of the input (silently dropped, even
//     when the bytes after its lead are no continuation bytes),
//   - a high surrogate as the last UTF-16 element (silently dropped).
// The reference's exception texts differ from ours too, so only the exception
// type is compared; ours must carry our exact texts.
#include <gtest/gtest.h>

#include <codecvt>
#include <locale>
#include <optional>
#include <random>
#include <stdexcept>

#include "StringUtils/Encoding.h"

namespace {

template <typename T>
using Reference =
    std::wstring_convert<std::codecvt_utf8_utf16<T, 0x10FFFF, std::codecvt_mode{}>, T>;

bool isContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// A surrogate code point written as a three-byte sequence.
bool holdsEncodedSurrogate(const std::string& text) {
    for (size_t i = 0; i + 2 < text.size(); ++i) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(text[i + 1]);
        if (lead == 0xED && next >= 0xA0 && next <= 0xBF && isContinuation(text[i + 2])) {
            return true;
        }
    }
    return false;
}

// A multi-byte lead with fewer bytes after it than its sequence needs, near the
// end: the reference drops such a tail without looking at the bytes after the lead.
bool endsInCutSequence(const std::string& text) {
    for (size_t back = 1; back <= 3 && back <= text.size(); ++back) {
        const auto byte = static_cast<unsigned char>(text[text.size() - back]);
        const size_t needed = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
        if (byte >= 0xC2 && byte <= 0xF4 && back < needed) {
            return true;
        }
    }
    return false;
}

template <typename T>
bool endsInHighSurrogate(const std::basic_string<T>& text) {
    return !text.empty() && text.back() >= 0xD800 && text.back() <= 0xDBFF;
}

template <typename Call>
auto attempt(Call call) -> std::optional<decltype(call())> {
    try {
        return call();
    } catch (const std::range_error&) {
        return std::nullopt;
    }
}

// Runs our conversion and the reference's on one input. Fails the test on a
// disagreement: a result where the reference has none, a different result, our
// exception without our exact message, or a rejection outside the reference's
// known departures. Returns whether the input was such a departure.
template <typename Ours, typename Theirs>
bool agree(Ours ours, Theirs reference, const std::string& ourMessage, bool knownDeparture) {
    const auto expected = attempt(reference);
    std::optional<decltype(ours())> actual;
    std::string message;
    try {
        actual = ours();
    } catch (const std::range_error& error) {
        message = error.what();
    }
    if (actual) {
        EXPECT_TRUE(expected) << "accepted what the reference rejects";
        EXPECT_EQ(actual, expected);
        return false;
    }
    EXPECT_EQ(message, ourMessage);
    if (expected) {
        EXPECT_TRUE(knownDeparture)
            << "rejected what the reference accepts, outside its known departures";
    }
    return expected.has_value();
}

template <typename T>
bool checkFromBytes(Converter<T>& ours, Reference<T>& reference, const std::string& text) {
    return agree([&] { return ours.from_bytes(text); }, [&] { return reference.from_bytes(text); },
                 "wstring_convert: from_bytes error",
                 holdsEncodedSurrogate(text) || endsInCutSequence(text));
}

template <typename T>
bool checkToBytes(Converter<T>& ours, Reference<T>& reference, const std::basic_string<T>& text) {
    return agree([&] { return ours.to_bytes(text); }, [&] { return reference.to_bytes(text); },
                 "wstring_convert: to_bytes error", endsInHighSurrogate(text));
}

std::string hex(const std::string& bytes) {
    std::string text;
    for (const unsigned char byte : bytes) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 15];
        text += ' ';
    }
    return text;
}

// Bytes at the edges of the UTF-8 classes: ASCII, continuation ranges, leads.
constexpr unsigned char kEdgeBytes[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F,
                                        0xA0, 0xBF, 0xC0, 0xC2, 0xE0, 0xF0, 0xFF};

template <typename T>
class Utf16Differential : public testing::Test {
protected:
    Converter<T> ours;
    Reference<T> reference;
    int departures = 0;

    // Each sequence alone, so that cut-off ones end the input, and followed by a
    // letter, so that they are cut off inside it.
    void checkSequence(const std::string& sequence) {
        SCOPED_TRACE(hex(sequence));
        departures += checkFromBytes(ours, reference, sequence);
        departures += checkFromBytes(ours, reference, sequence + "z");
    }
};

using CodeUnitTypes = testing::Types<char16_t, wchar_t>;
TYPED_TEST_SUITE(Utf16Differential, CodeUnitTypes);

TYPED_TEST(Utf16Differential, EveryOneAndTwoByteSequence) {
    for (int first = 0; first < 256; ++first) {
        this->checkSequence(std::string(1, static_cast<char>(first)));
        for (int second = 0; second < 256; ++second) {
            this->checkSequence({static_cast<char>(first), static_cast<char>(second)});
        }
    }
    EXPECT_GT(this->departures, 0);  // cut-off sequences
}

TYPED_TEST(Utf16Differential, EveryThreeByteLeadAndSecondByte) {
    for (int first = 0xE0; first < 0xF0; ++first) {
        for (int second = 0; second < 256; ++second) {
            for (const unsigned char third : kEdgeBytes) {
                this->checkSequence({static_cast<char>(first), static_cast<char>(second),
                                     static_cast<char>(third)});
            }
        }
    }
    EXPECT_GT(this->departures, 0);  // encoded surrogates and cut-off sequences
}

TYPED_TEST(Utf16Differential, EveryFourByteLeadAndSecondByte) {
    for (int first = 0xF0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            for (const unsigned char third : {0x80, 0xBF, 0x41}) {
                for (const unsigned char fourth : {0x80, 0xBF, 0xC0, 0x41}) {
                    this->checkSequence({static_cast<char>(first), static_cast<char>(second),
                                         static_cast<char>(third), static_cast<char>(fourth)});
                }
            }
        }
    }
}

// Sequences of every class at every offset of ASCII text longer than the
// transcoder's widest step, so each lands in every lane of its word-at-a-time
// paths, and at the very end. Digits and spaces differ from continuation bytes
// in the top bit only.
TYPED_TEST(Utf16Differential, SequencesAtEveryOffset) {
    const std::string sequences[] = {
        "\xC2\x80",
        "\xDF\xBF",
        "\xE0\xA0\x80",
        "\xED\x9F\xBF",
        "\xEF\xBF\xBF",
        "\xF0\x90\x80\x80",
        "\xF4\x8F\xBF\xBF",
        "\x80",
        "\xBF",
        "\xC0\x80",
        "\xE0\x9F\xBF",
        "\xED\xA0\x80",
        "\xF0\x8F\xBF\xBF",
        "\xF4\x90\x80\x80",
        "\xF8\x88\x80\x80",
        "\xFF",
        "\xC2\x41",
        "\xE2\x82\x41",
        "\xF0\x9F\x98\x41",
    };
    for (const auto& sequence : sequences) {
        for (size_t offset = 0; offset <= 40; ++offset) {
            SCOPED_TRACE(offset);
            const std::string head(offset, '1');
            this->checkSequence(head + sequence + std::string(40 - offset, ' '));
            this->checkSequence(head + sequence);
        }
    }
    using Text = std::basic_string<TypeParam>;
    const Text units[] = {{0x80},           {0x7FF},  {0x800},  {0xFFFF},         {0xD83D, 0xDE00},
                          {0xDBFF, 0xDFFF}, {0xD800}, {0xDC00}, {0xDC00, 0xD800}, {0xD800, 0x41}};
    for (const auto& unit : units) {
        for (size_t offset = 0; offset <= 40; ++offset) {
            SCOPED_TRACE(offset);
            const Text head(offset, u'1');
            checkToBytes(this->ours, this->reference, head + unit + Text(40 - offset, u' '));
            checkToBytes(this->ours, this->reference, head + unit);
        }
    }
}

// Texts of every character length, long enough to cross the transcoder's
// internal blocks, some of them damaged at one random byte.
TYPED_TEST(Utf16Differential, RandomTexts) {
    const std::string pieces[] = {"a",
                                  "word ",
                                  "\xC3\xA9",
                                  "\xDF\xBF",
                                  "\xE4\xB8\xAD",
                                  "\xEF\xBF\xBF",
                                  "\xF0\x9F\x98\x80",
                                  "\xF4\x8F\xBF\xBF",
                                  "\xEF\xBB\xBF",
                                  std::string(40, 'x')};
    std::mt19937 random(7);
    for (int round = 0; round < 600; ++round) {
        std::string text;
        const int length = static_cast<int>(random() % 1500);
        for (int i = 0; i < length; ++i) {
            text += pieces[random() % std::size(pieces)];
        }
        if (round % 2 == 1 && !text.empty()) {
            text[random() % text.size()] = static_cast<char>(random());
        }
        SCOPED_TRACE(round);
        checkFromBytes(this->ours, this->reference, text);
    }
}

TYPED_TEST(Utf16Differential, EveryCodeUnitAndEdgeSequences) {
    using Text = std::basic_string<TypeParam>;
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        SCOPED_TRACE(unit);
        this->departures +=
            checkToBytes(this->ours, this->reference, Text(1, static_cast<TypeParam>(unit)));
        checkToBytes(this->ours, this->reference, Text{static_cast<TypeParam>(unit), u'z'});
    }
    std::vector<long> edges = {0,      0x7F,   0x80,   0x7FF,  0x800,  0xD7FF,
                               0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFF};
    if constexpr (sizeof(TypeParam) == 4) {
        edges.insert(edges.end(), {0x10000, 0x10FFFF, 0x110000, -1});
    }
    for (const long a : edges) {
        for (const long b : edges) {
            for (const long c : edges) {
                SCOPED_TRACE(testing::Message() << a << ' ' << b << ' ' << c);
                const auto unit = [](long value) { return static_cast<TypeParam>(value); };
                checkToBytes(this->ours, this->reference, Text{unit(a), unit(b)});
                checkToBytes(this->ours, this->reference, Text{unit(a), unit(b), unit(c)});
            }
        }
    }
    EXPECT_GT(this->departures, 0);  // high surrogates at the end
}

TYPED_TEST(Utf16Differential, RandomCodeUnits) {
    using Text = std::basic_string<TypeParam>;
    const TypeParam pool[] = {u'a',   u' ',   0xE9,   0x7FF,  0x4E2D,
                              0xFFFD, 0xD83D, 0xDE00, 0xDBFF, 0xDC00};
    std::mt19937 random(11);
    for (int round = 0; round < 600; ++round) {
        Text text(random() % 3000, u'x');
        // Mostly well-formed pairs, with a rare stray surrogate.
        for (size_t i = 0; i < text.size(); ++i) {
            const TypeParam unit = pool[random() % std::size(pool)];
            if (unit == 0xD83D && i + 1 < text.size()) {
                text[i] = unit;
                text[++i] = 0xDE00;
            } else if ((unit < 0xD800 || unit > 0xDFFF) || random() % 50 == 0) {
                text[i] = unit;
            }
        }
        SCOPED_TRACE(round);
        checkToBytes(this->ours, this->reference, text);
    }
}

}  // namespace
