// A named locale (the system's, else the build's copy) as the C and C++ global one for a scope.
#pragma once

#include <clocale>
#include <cstdlib>
#include <locale>
#include <optional>
#include <stdexcept>
#include <string>

#ifdef STRAND_TEST_UNDER_ASAN
#include <sanitizer/lsan_interface.h>
#endif

class ScopedGlobalLocale {
public:
    // name is "<language>_<territory>.UTF-8", e.g. "tr_TR.UTF-8".
    explicit ScopedGlobalLocale(const std::string& name) {
        std::optional<std::locale> named = load(name);
        if (!named) named = loadFromBuild(name);
        if (named) {
            std::locale::global(*named);  // also sets the C locale, once loaded
            active_ = std::setlocale(LC_ALL, nullptr) == name;
        }
    }
    ~ScopedGlobalLocale() {
        if (active_) std::locale::global(std::locale::classic());
    }

    bool active() const { return active_; }

private:
    static std::optional<std::locale> load(const std::string& name) {
        try {
            return std::locale(name);
        } catch (const std::runtime_error&) {
            return std::nullopt;
        }
    }

    // glibc reads LOCPATH at each load: the C locale is set here, while it names the copies.
    static std::optional<std::locale> loadFromBuild(const std::string& name) {
#ifdef STRAND_TEST_UNDER_ASAN
        // glibc loses a copy of LOCPATH on each load from it: not the library's.
        const __lsan::ScopedDisabler ignoreLocaleLoading;
#endif
        const char* const old = std::getenv("LOCPATH");
        const std::string saved = old ? old : "";
        setenv("LOCPATH", STRAND_TEST_LOCALE_DIR, 1);
        auto named = load(name);
        if (named) std::locale::global(*named);
        old ? setenv("LOCPATH", saved.c_str(), 1) : unsetenv("LOCPATH");
        return named;
    }

    bool active_ = false;
};
