// What the fuzz targets share: the invariant check that stops the run with a
// report, the longest text also run through std::regex (its matcher recurses
// once per byte, so longer texts would only test the stack), and runs under a
// non-C locale.
#pragma once

#include <clocale>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include <locale.h>
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/lsan_interface.h>
#define STRAND_FUZZ_HAS_LSAN 1
#endif
#endif

namespace fuzzcheck {

inline constexpr std::size_t kRegexMaxLength = 300;

// Aborts, so that libFuzzer saves the input, when an invariant does not hold.
inline void require(bool holds, const char* invariant) {
    if (!holds) {
        std::fprintf(stderr, "invariant broken: %s\n", invariant);
        std::abort();
    }
}

inline std::string text(const unsigned char* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

inline bool isPrefix(std::string_view prefix, std::string_view text) {
    return text.starts_with(prefix);
}

// The non-C locale the targets also run under: tr_TR.UTF-8, where I and i have no
// ASCII case partner and the decimal separator is a comma (the fuzz tests point
// STRAND_FUZZ_LOCPATH at a compiled copy), else C.UTF-8. Null when neither loads.
inline locale_t fuzzingLocale() {
    static const locale_t loaded = [] {
#ifdef STRAND_FUZZ_HAS_LSAN
        // glibc's newlocale loses a copy of LOCPATH; loaded once, it is no finding.
        const __lsan::ScopedDisabler ignoreLocaleLoading;
#endif
        // LOCPATH only while loading: with it set, glibc leaks on every later
        // newlocale, and the locale-aware case functions make one per call.
        const char* const compiled = std::getenv("STRAND_FUZZ_LOCPATH");
        if (compiled != nullptr) {
            setenv("LOCPATH", compiled, 1);
        }
        locale_t named{};
        for (const char* name : {"tr_TR.UTF-8", "C.UTF-8"}) {
            if ((named = newlocale(LC_ALL_MASK, name, locale_t{}))) {
                break;
            }
        }
        if (compiled != nullptr) {
            unsetenv("LOCPATH");
        }
        return named;
    }();
    return loaded;
}

inline locale_t classicLocale() {
    static const locale_t loaded = [] {
#ifdef STRAND_FUZZ_HAS_LSAN
        const __lsan::ScopedDisabler ignoreLocaleLoading;
#endif
        return newlocale(LC_ALL_MASK, "C", locale_t{});
    }();
    return loaded;
}

// Makes locale the calling thread's C locale for a scope (a null one changes
// nothing).
class InLocale {
public:
    explicit InLocale(locale_t locale) : old_(locale ? uselocale(locale) : locale_t{}) {}
    ~InLocale() {
        if (old_) {
            uselocale(old_);
        }
    }
    InLocale(const InLocale&) = delete;
    InLocale& operator=(const InLocale&) = delete;

private:
    locale_t old_;
};

// f() in the classic locale, after requiring that it gives the same under the
// fuzzing locale: for every function whose result must not depend on the locale.
template <typename F>
auto sameInEveryLocale(F f, const char* invariant) {
    auto classic = [&] {
        const InLocale in(classicLocale());
        return f();
    }();
    const InLocale in(fuzzingLocale());
    require(f() == classic, invariant);
    return classic;
}

}  // namespace fuzzcheck
