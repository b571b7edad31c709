// Thread names as the Linux kernel holds them.
#include <sys/prctl.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "Strand/ThreadName.h"
#include "ThreadTestSupport.h"

namespace {

using StrandTest::onNewThread;

TEST(ThreadNameLinux, NameSetByOtherCodeWins) {
    const auto names = onNewThread([] {
        Strand::setThreadName("a name longer than the kernel keeps");
        prctl(PR_SET_NAME, "renamed", 0, 0, 0);
        std::string afterPrctl = Strand::getThreadName();
        Strand::setThreadName("again a rather long name");
        return std::make_pair(afterPrctl, Strand::getThreadName());
    });
    EXPECT_EQ(names.first, "renamed");
    EXPECT_EQ(names.second, "again a rather long name");
}

TEST(ThreadNameLinux, KernelShowsTheFirst15Bytes) {
    const std::string kernelName = onNewThread([] {
        Strand::setThreadName("a name longer than the kernel keeps");
        char buffer[16] = {};
        prctl(PR_GET_NAME, buffer, 0, 0, 0);
        return std::string(buffer);
    });
    EXPECT_EQ(kernelName, "a name longer t");
}

}  // namespace
