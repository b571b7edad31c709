#include "StackTraceDemo.h"

#include <Strand/Strand.h>

#include <cxxabi.h>
#include <dlfcn.h>

#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

// One line of the library's trace text, taken apart for display.
struct Frame {
    std::string module;  // file name of the binary, without its directory
    std::string symbol;  // mangled as the platform reports it; may be empty
    std::string offset;  // from the symbol, or from the module when there is none
};

std::string baseName(const std::string& path) { return path.substr(path.find_last_of('/') + 1); }

// Reads "path(symbol+0x1f) [0x...]" (glibc) or "3   module   0x... symbol + 31"
// (macOS). A line in neither form keeps its whole text as the module.
Frame parseFrame(const std::string& line) {
    const auto open = line.rfind('(');
    const auto close = line.find(')', open == std::string::npos ? 0 : open);
    if (open != std::string::npos && close != std::string::npos) {
        const std::string inside = line.substr(open + 1, close - open - 1);
        const auto plus = inside.rfind('+');
        return {baseName(line.substr(0, open)), inside.substr(0, plus),
                plus == std::string::npos ? "" : inside.substr(plus + 1)};
    }
    std::istringstream fields(line);
    std::string index, module, address, symbol, plus, offset;
    if (fields >> index >> module >> address >> symbol >> plus >> offset && plus == "+") {
        return {module, symbol, offset};
    }
    return {line, "", ""};
}

// The name a reader knows: demangled when it is a mangled C++ name.
std::string displayName(const std::string& symbol) {
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> demangled(
        abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status), std::free);
    return status == 0 && demangled ? demangled.get() : symbol;
}

// The file name of the binary that holds the library's code.
std::string libraryModule() {
    Dl_info info{};
    const auto entry = &Strand::getThreadId;
    if (dladdr(reinterpret_cast<void*>(entry), &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    return baseName(info.dli_fname);
}

// Prints the trace one numbered frame per line, innermost first. The trace is
// taken inside the library's signal handler on the target thread, so it opens
// with the handler's own frames and the frame where the signal arrived; those
// are left out, and the count says so.
void printTrace(const std::string& trace) {
    std::vector<Frame> frames;
    std::istringstream lines(trace);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty()) frames.push_back(parseFrame(line));
    }
    const std::string library = libraryModule();
    std::size_t first = 0;
    while (first < frames.size() && !library.empty() && frames[first].module == library) ++first;
    if (first > 0 && first < frames.size()) {
        ++first;  // the signal trampoline: where the thread was interrupted
        std::cout << "  (" << first << " frames of " << library
                  << "'s signal handler, up to the signal's arrival, left out)\n";
    }
    for (std::size_t i = first; i < frames.size(); ++i) {
        const Frame& frame = frames[i];
        std::cout << "  #" << std::left << std::setw(3) << i - first;
        if (frame.symbol.empty()) {
            std::cout << frame.module << (frame.offset.empty() ? "" : "+" + frame.offset) << "\n";
        } else {
            std::cout << displayName(frame.symbol) << "  (" << frame.module << ")\n";
        }
    }
}

}  // namespace

void showStackTrace(const Strand::ThreadId& target, const std::string& what) {
    std::cout << "== stack trace of " << Strand::getThreadName(target) << " ("
              << Strand::getThreadIdString(target) << "), " << what << ", innermost frame first:\n";
    const std::string trace = Strand::getStackTrace({}, target);
    if (trace.empty()) {
        std::cout << "  (none: the thread has ended or blocks SIGUSR1)\n";
    } else {
        printTrace(trace);
    }
}
