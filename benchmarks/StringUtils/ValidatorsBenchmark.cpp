// The validators on typical inputs, each next to its baselines in the same run:
// std::regex compiling the pattern and matching (what a direct use of the
// patterns costs per call) and std::regex matching with a pattern compiled once.
// Ends with the table of our time / the baseline's per case.
#include <benchmark/benchmark.h>

#include <regex>
#include <string>

#include "BaselineRatio.h"
#include "Reference.h"
#include "StringUtils/Addresses.h"
#include "StringUtils/Patterns.h"
#include "StringUtils/PhoneNumbers.h"

namespace {

namespace Patterns = StringUtils::Patterns;

// Runs call in the benchmark loop.
template <typename Call>
void registerLoop(const std::string& name, Call call) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        for (auto _ : state) {
            benchmark::DoNotOptimize(call());
        }
    });
}

// One validator against two baselines: "<name>/..." against std::regex
// compiling and matching, "<name> precompiled/..." against a pattern compiled
// once. Each pair is "ours" and "baseline" for the ratio table.
template <typename Library, typename Precompiled, typename Compiled>
void registerTrio(const std::string& name, Library library, Precompiled precompiled,
                  Compiled compiled) {
    registerLoop(name + "/baseline", compiled);
    registerLoop(name + "/ours", library);
    registerLoop(name + " precompiled/baseline", precompiled);
    registerLoop(name + " precompiled/ours", library);
}

// A whole-string match of pattern against text, compiled on every call.
bool compileAndMatch(const std::string& text, std::string_view pattern) {
    return std::regex_match(text, reference::compile(pattern));
}

void registerAll() {
    static const std::string kEmail = "jane.doe+news@mail.example.com";  // 30 bytes
    static const std::string kDiscoveryCode = "ABC-123-XYZ";
    static const std::string kPhoneNumber = "+1 (555) 010-0199";
    static const std::string kFeatureCode = "*72 555 0100";
    static const std::string kMac = "00:1a:2b:3c:4d:5e";
    static const std::regex email = reference::compile(Patterns::kEmail);
    static const std::regex discovery = reference::compile(Patterns::kDiscoveryCode);
    static const std::regex raw = reference::compile(Patterns::kRawPhoneNumber);
    static const std::regex feature = reference::compile(Patterns::kFeatureAccessCode);
    static const std::regex group = reference::compile(Patterns::kHexGroup);
    const auto cleanedFeatureCode = [] {
        return StringUtils::sanitizePhoneNumber(kFeatureCode, false, false, true);
    };

    registerTrio(
        "IsValidEmail", [] { return StringUtils::isValidEmail(kEmail); },
        [] { return std::regex_match(kEmail, email); },
        [] { return compileAndMatch(kEmail, Patterns::kEmail); });
    registerTrio(
        "IsValidDiscoveryCode", [] { return StringUtils::isValidDiscoveryCode(kDiscoveryCode); },
        [] { return std::regex_match(kDiscoveryCode, discovery); },
        [] { return compileAndMatch(kDiscoveryCode, Patterns::kDiscoveryCode); });
    registerTrio(
        "IsValidRawPhoneNumber", [] { return StringUtils::isValidRawPhoneNumber(kPhoneNumber); },
        [] { return std::regex_match(kPhoneNumber, raw); },
        [] { return compileAndMatch(kPhoneNumber, Patterns::kRawPhoneNumber); });
    // The digit-count patterns depend on the minimum, so even the "precompiled"
    // variant compiles them per call; only the raw pattern is kept.
    registerTrio(
        "IsValidPhoneNumber", [] { return StringUtils::isValidPhoneNumber(kPhoneNumber, 10); },
        [] { return reference::isValidPhoneNumber(kPhoneNumber, 10, raw); },
        [] {
            return reference::isValidPhoneNumber(kPhoneNumber, 10,
                                                 reference::compile(Patterns::kRawPhoneNumber));
        });
    registerTrio(
        "IsValidFeatureAccessCode",
        [] { return StringUtils::isValidFeatureAccessCode(kFeatureCode); },
        [=] { return std::regex_match(cleanedFeatureCode(), feature); },
        [=] { return compileAndMatch(cleanedFeatureCode(), Patterns::kFeatureAccessCode); });
    registerTrio(
        "ReformatMACaddress", [] { return StringUtils::reformatMACaddress(kMac, "-"); },
        [] { return reference::reformatMACaddress(kMac, "-", group); },
        [] {
            return reference::reformatMACaddress(kMac, "-",
                                                 reference::compile(Patterns::kHexGroup));
        });
}

}  // namespace

int main(int argc, char** argv) {
    registerAll();
    return runWithBaselineRatios(argc, argv);
}
