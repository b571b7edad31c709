#include "Strand/linux/TaskStart.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace Strand::linux_layer {

namespace {

// Writes "/proc/self/task/<tid>/stat" into path (at least 48 bytes).
void statPath(int tid, char* path) noexcept {
    constexpr char kPrefix[] = "/proc/self/task/";
    constexpr char kSuffix[] = "/stat";
    char* out = path;
    for (const char c : kPrefix) {
        if (c != '\0') *out++ = c;
    }
    char digits[16];
    int count = 0;
    auto value = static_cast<unsigned>(tid);
    do {
        digits[count++] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    while (count > 0) *out++ = digits[--count];
    for (const char c : kSuffix) *out++ = c;  // the NUL included
}

// Field 22 (starttime) of a stat line; 0 if the line is cut short. The second
// field is the name in parentheses, which may itself hold ") ", so fields are
// counted from the last ')'.
std::uint64_t startField(const char* line, std::size_t length) noexcept {
    std::size_t i = length;
    while (i > 0 && line[i - 1] != ')') --i;
    if (i == 0) return 0;
    int field = 2;  // line[i - 1] ends field 2
    for (; i < length && field < 22; ++i) {
        if (line[i] == ' ') ++field;
    }
    std::uint64_t ticks = 0;
    for (; i < length && line[i] >= '0' && line[i] <= '9'; ++i) {
        ticks = ticks * 10 + static_cast<std::uint64_t>(line[i] - '0');
    }
    return ticks;
}

}  // namespace

TaskStart taskStart(int tid) noexcept {
    const int savedErrno = errno;
    TaskStart result;
    char path[48];
    statPath(tid, path);
    // syscall(), not open/read/close: those are cancellation points.
    const long fd = syscall(SYS_openat, AT_FDCWD, path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        if (errno == ENOENT || errno == ESRCH) result.state = TaskStart::State::kEnded;
    } else {
        char line[512];
        const long length = syscall(SYS_read, static_cast<int>(fd), line, sizeof line);
        if (length > 0) {
            result.ticks = startField(line, static_cast<std::size_t>(length));
            if (result.ticks != 0) result.state = TaskStart::State::kRunning;
        } else if (length < 0 && errno == ESRCH) {
            result.state = TaskStart::State::kEnded;  // ended between open and read
        }
        syscall(SYS_close, static_cast<int>(fd));
    }
    errno = savedErrno;
    return result;
}

}  // namespace Strand::linux_layer
