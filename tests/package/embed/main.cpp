// The parent's own StringUtils beside Strand's; Strand's internal headers out of reach.
#include <Strand/Strand.h>
#include <StringUtils/StringUtils.h>

#include <iostream>

#if __has_include("Strand/Platform.h") || __has_include("Strand/ScopedThreadNotifications.h") || \
    __has_include("StringUtils/Patterns.h") || __has_include("Platform.h")
#error "Strand's internal headers are visible to the parent project"
#endif

int parentStringUtilsAnswer();

int main() {
    Strand::setThreadName("parent");
    const bool named = Strand::getThreadName() == "parent";
    const bool trimmed = StringUtils::trim("  x ") == "x";
    std::cout << "named: " << named << ", trimmed: " << trimmed
              << ", parent's own: " << parentStringUtilsAnswer() << "\n";
    return named && trimmed && parentStringUtilsAnswer() == 42 ? 0 : 1;
}
