// Makes a named locale the process's C and C++ global locale for a scope. A
// locale the system lacks is compiled once with localedef into the directory
// STRAND_TEST_LOCALE_DIR and loaded from there; when that fails too, active()
// is false and the test should skip.
#pragma once

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <locale>
#include <optional>
#include <stdexcept>
#include <string>

#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#define STRAND_TEST_HAS_LSAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define STRAND_TEST_HAS_LSAN 1
#endif
#endif
#ifdef STRAND_TEST_HAS_LSAN
#include <sanitizer/lsan_interface.h>
#endif

class ScopedGlobalLocale {
public:
    // name is "<language>_<territory>.UTF-8", e.g. "tr_TR.UTF-8".
    explicit ScopedGlobalLocale(const std::string& name) {
        std::optional<std::locale> named = load(name);
        if (!named) {
            named = generateAndLoad(name);
        }
        if (named) {
            std::locale::global(*named);  // also sets the C locale, once loaded
            active_ = std::setlocale(LC_ALL, nullptr) == name;
        }
    }
    ~ScopedGlobalLocale() {
        if (active_) {
            std::locale::global(std::locale::classic());
        }
    }
    ScopedGlobalLocale(const ScopedGlobalLocale&) = delete;
    ScopedGlobalLocale& operator=(const ScopedGlobalLocale&) = delete;

    bool active() const { return active_; }

private:
    static std::optional<std::locale> load(const std::string& name) {
        try {
            return std::locale(name);
        } catch (const std::runtime_error&) {
            return std::nullopt;
        }
    }

    // glibc reads LOCPATH when a locale is loaded; it is put back afterwards so
    // that other locales come from the system as usual.
    // Also sets the C locale while LOCPATH still points at directory.
    static std::optional<std::locale> loadFrom(const std::string& directory,
                                               const std::string& name) {
#ifdef STRAND_TEST_HAS_LSAN
        // glibc loses a copy of LOCPATH on each load from it: not the library's.
        const __lsan::ScopedDisabler ignoreLocaleLoading;
#endif
        const char* const old = std::getenv("LOCPATH");
        const std::string saved = old ? old : "";
        setenv("LOCPATH", directory.c_str(), 1);
        auto named = load(name);
        if (named) {
            std::locale::global(*named);
        }
        old ? setenv("LOCPATH", saved.c_str(), 1) : unsetenv("LOCPATH");
        return named;
    }

    static std::optional<std::locale> generateAndLoad(const std::string& name) {
        namespace fs = std::filesystem;
        // Looked up only once it exists: glibc remembers a failed lookup.
        const std::string directory = STRAND_TEST_LOCALE_DIR;
        const auto dot = name.find('.');
        if (fs::exists(directory + "/" + name) || dot == std::string::npos) {
            return loadFrom(directory, name);
        }
        // Built under a private name and renamed, so tests running in parallel
        // never load a half-written locale.
        std::error_code ignored;
        fs::create_directories(directory, ignored);
        const std::string scratch =
            directory + "/" + name + ".tmp" + std::to_string(static_cast<long>(getpid()));
        const std::string command = "localedef -i " + name.substr(0, dot) + " -f " +
                                    name.substr(dot + 1) + " " + scratch + " >/dev/null 2>&1";
        if (std::system(command.c_str()) == -1) {
            return std::nullopt;
        }
        fs::rename(scratch, directory + "/" + name, ignored);
        fs::remove_all(scratch, ignored);
        return loadFrom(directory, name);
    }

    bool active_ = false;
};
