// The Darwin emulation against Darwin's documented behaviour, and its port
// accounting against a leaked reference, a double release and an array never
// freed (each must fail the process at exit, naming what is wrong).
#include <gtest/gtest.h>
#include <mach/mach.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <latch>
#include <string>
#include <thread>

#include "DarwinEmulation/Control.h"

namespace {

namespace emu = darwin_emulation;

// Runs body in a child that ends with exit(), so the accounting runs at its
// exit; returns its exit status and what it wrote to stderr.
std::pair<int, std::string> exitOfChild(const std::function<void()>& body) {
    int pipeFds[2];
    if (pipe(pipeFds) != 0) return {-1, "pipe"};
    const pid_t child = fork();
    if (child == 0) {
        dup2(pipeFds[1], STDERR_FILENO);
        alarm(10);
        body();
        std::exit(0);
    }
    close(pipeFds[1]);
    std::string text;
    char buffer[512];
    for (ssize_t got; (got = read(pipeFds[0], buffer, sizeof buffer)) > 0;) text.append(buffer, got);
    close(pipeFds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), text};
}

std::string hex(unsigned value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%x", value);
    return text;
}

TEST(DarwinEmulation, AccountingCatchesLeaksAndDoubleReleases) {
    const mach_port_t port = pthread_mach_thread_np(pthread_self());
    struct Case {
        const char* what;
        std::function<void()> body;
        int status;
        std::string message;
    } cases[] = {
        {"balanced", [] { mach_port_deallocate(mach_task_self(), mach_thread_self()); }, 0, ""},
        {"leaked reference", [] { (void)mach_thread_self(); }, 1,
         "thread port " + hex(port) + " (thread id"},
        {"double release", [] {
             const mach_port_t self = mach_thread_self();
             mach_port_deallocate(mach_task_self(), self);
             mach_port_deallocate(mach_task_self(), self);
         }, 1, "thread port " + hex(port) + " (thread id"},
        {"task port kept", [] {
             mach_port_name_t task = 0;
             task_for_pid(mach_task_self(), getpid(), &task);
         }, 1, "task port " + hex(mach_task_self()) + " holds 2 references"},
        {"array never freed", [] {
             thread_act_array_t threads = nullptr;
             mach_msg_type_number_t count = 0;
             task_threads(mach_task_self(), &threads, &count);
             for (mach_msg_type_number_t i = 0; i < count; ++i)
                 mach_port_deallocate(mach_task_self(), threads[i]);
         }, 1, "task_threads array at 0x"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const auto [status, text] = exitOfChild(c.body);
        EXPECT_EQ(status, c.status) << text;
        EXPECT_NE(text.find(c.message), std::string::npos) << text;
    }
    EXPECT_EQ(emu::accountingReport(), "");
}

TEST(DarwinEmulation, ThreadPortsReferencesAndNames) {
    const mach_port_t port = pthread_mach_thread_np(pthread_self());
    EXPECT_EQ(mach_thread_self(), port) << "the same name, one more reference";
    EXPECT_NE(emu::accountingReport(), "");
    EXPECT_EQ(mach_port_deallocate(mach_task_self(), port), KERN_SUCCESS);
    EXPECT_EQ(emu::accountingReport(), "");
    EXPECT_EQ(mach_port_deallocate(mach_task_self(), 0x7fff03), KERN_INVALID_NAME);

    // A thread's name goes with it; with one generation the next thread takes it.
    const auto portOfAThread = [] {
        mach_port_t seen = 0;
        std::thread([&] { seen = pthread_mach_thread_np(pthread_self()); }).join();
        return seen;
    };
    const mach_port_t first = portOfAThread();
    EXPECT_NE(portOfAThread(), first) << "64 generations before a name repeats";
    emu::setPortGenerations(1);
    (void)portOfAThread();  // the slot's generation wraps to the only one left
    const mach_port_t reused = portOfAThread();
    EXPECT_EQ(portOfAThread(), reused);
    emu::setPortGenerations(64);
}

TEST(DarwinEmulation, EndedUnjoinedThreadsStayListedWithTheirOldPort) {
    emu::setPortGenerations(1);
    mach_port_t zombiePort = 0;
    std::uint64_t zombieId = 0;
    pthread_t zombie{};
    std::latch ended(1);
    struct Args { mach_port_t* port; std::latch* ended; } args{&zombiePort, &ended};
    pthread_create(&zombie, nullptr, [](void* a) -> void* {
        auto& given = *static_cast<Args*>(a);
        pthread_setname_np("dead, unjoined");
        *given.port = pthread_mach_thread_np(pthread_self());
        given.ended->count_down();
        return nullptr;
    }, &args);
    ended.wait();
    pthread_threadid_np(zombie, &zombieId);
    // Its port name is free once it has ended: a later thread gets it.
    mach_port_t livePort = 0;
    pthread_t live{};
    for (int attempt = 0; attempt < 1000 && livePort != zombiePort; ++attempt) {
        std::atomic<bool> release{false};
        std::thread next([&] {
            livePort = pthread_mach_thread_np(pthread_self());
            live = pthread_self();
            while (!release) sched_yield();
        });
        if (livePort == zombiePort) {
            char name[64] = {};
            std::uint64_t id = 0;
            EXPECT_TRUE(pthread_equal(pthread_from_mach_thread_np(livePort), zombie))
                << "the first match on libpthread's list";
            EXPECT_EQ(pthread_threadid_np(zombie, &id), 0);
            EXPECT_EQ(id, zombieId);
            EXPECT_EQ(pthread_getname_np(zombie, name, sizeof name), 0);
            EXPECT_STREQ(name, "dead, unjoined");
            pthread_join(zombie, nullptr);
            EXPECT_TRUE(pthread_equal(pthread_from_mach_thread_np(livePort), live));
        }
        release = true;
        next.join();
    }
    EXPECT_EQ(livePort, zombiePort);
    emu::setPortGenerations(64);
}

// Calls a thread makes after its end is known (a later key destructor, a signal handler) take
// it on as no new thread: nothing stays listed for it once it is joined, and no port is left.
TEST(DarwinEmulation, CallsDuringAThreadsExitLeaveNoRecordBehind) {
    static pthread_key_t lateKey;  // made after the emulation's own: its destructor runs later
    static std::uint64_t lateId = 0;
    const auto late = [](void*) { pthread_threadid_np(pthread_t{}, &lateId); };
    ASSERT_EQ(pthread_key_create(&lateKey, late), 0);
    std::uint64_t id = 0;
    std::thread worker([&] {
        pthread_setspecific(lateKey, &lateKey);
        pthread_threadid_np(pthread_t{}, &id);
    });
    const pthread_t handle = worker.native_handle();
    worker.join();
    pthread_key_delete(lateKey);
    EXPECT_EQ(lateId, id) << "the ending thread still knows its id";
    std::uint64_t listed = 0;
    EXPECT_EQ(pthread_threadid_np(handle, &listed), ESRCH) << "listed again after its end";
    EXPECT_EQ(emu::accountingReport(), "");
}

// A signal sent as soon as pthread_create returns finds the new thread known, as on Darwin, so a
// handler that asks for its id never takes it on a second time.
TEST(DarwinEmulation, ASignalAsAThreadStartsFindsItKnown) {
    struct sigaction asking {}, old{};
    asking.sa_handler = [](int) {
        std::uint64_t id = 0;
        pthread_threadid_np(pthread_t{}, &id);
    };
    ASSERT_EQ(sigaction(SIGUSR2, &asking, &old), 0);
    int listedAfterJoin = 0;
    for (int i = 0; i < 200; ++i) {
        pthread_t thread{};
        pthread_create(&thread, nullptr, [](void*) -> void* { return nullptr; }, nullptr);
        pthread_kill(thread, SIGUSR2);
        pthread_join(thread, nullptr);
        std::uint64_t id = 0;
        listedAfterJoin += pthread_threadid_np(thread, &id) == 0 ? 1 : 0;
    }
    sigaction(SIGUSR2, &old, nullptr);
    EXPECT_EQ(listedAfterJoin, 0);
    EXPECT_EQ(emu::accountingReport(), "");
}

TEST(DarwinEmulation, TaskThreadsIdsAndNames) {
    mach_port_name_t task = 0;
    EXPECT_EQ(task_for_pid(mach_task_self(), getppid(), &task), KERN_FAILURE);
    ASSERT_EQ(task_for_pid(mach_task_self(), getpid(), &task), KERN_SUCCESS);
    EXPECT_EQ(task, mach_task_self());
    thread_act_array_t threads = nullptr;
    mach_msg_type_number_t count = 0;
    ASSERT_EQ(task_threads(task, &threads, &count), KERN_SUCCESS);
    bool selfListed = false;
    for (mach_msg_type_number_t i = 0; i < count; ++i) {
        selfListed |= threads[i] == pthread_mach_thread_np(pthread_self());
        thread_identifier_info_data_t info{};
        mach_msg_type_number_t size = THREAD_IDENTIFIER_INFO_COUNT;
        EXPECT_EQ(thread_info(threads[i], THREAD_IDENTIFIER_INFO,
                              reinterpret_cast<thread_info_t>(&info), &size), KERN_SUCCESS);
        mach_port_deallocate(mach_task_self(), threads[i]);
    }
    vm_deallocate(mach_task_self(), reinterpret_cast<vm_address_t>(threads), 4 * count);
    mach_port_deallocate(mach_task_self(), task);
    EXPECT_TRUE(selfListed);
    EXPECT_EQ(emu::accountingReport(), "");

    int negative = 0;
    for (int i = 0; i < 16; ++i) {
        std::uint64_t id = 0;
        std::thread([&] { pthread_threadid_np(pthread_t{}, &id); }).join();
        negative += static_cast<int>(static_cast<std::uint32_t>(id)) < 0 ? 1 : 0;
    }
    EXPECT_GT(negative, 0) << "low 32 bits past 2^31";
    const std::string longest(63, 'n');
    errno = 0;
    EXPECT_EQ(pthread_setname_np(longest.c_str()), 0);
    EXPECT_EQ(pthread_setname_np((longest + "n").c_str()), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
    char name[128] = {};
    pthread_getname_np(pthread_self(), name, sizeof name);
    EXPECT_EQ(name, longest);
}

TEST(DarwinEmulation, PthreadKillRefusals) {
    pthread_t ended{};
    std::thread([&] { ended = pthread_self(); }).join();
    EXPECT_EQ(pthread_kill(ended, 0), ESRCH);
    std::atomic<int> result{-1};
    std::thread worker([&] {
        emu::markCallingThreadAsDispatchWorker();
        std::thread([&, me = pthread_self()] { result = pthread_kill(me, SIGUSR2); }).join();
    });
    worker.join();
    EXPECT_EQ(result, ENOTSUP);
    emu::injectFault(emu::Fault::KillNoSuchThread);
    EXPECT_EQ(pthread_kill(pthread_self(), 0), ESRCH);
    EXPECT_EQ(pthread_kill(pthread_self(), 0), 0);
}

std::atomic<int> gInterruptions{0};

TEST(DarwinEmulation, SemaphoresCountLikeDarwin) {
    semaphore_t semaphore = 0;
    ASSERT_EQ(semaphore_create(mach_task_self(), &semaphore, SYNC_POLICY_FIFO, 0), KERN_SUCCESS);
    const mach_timespec_t poll{0, 0}, brief{0, 1000000};
    struct Step {
        const char* what;
        std::function<kern_return_t()> call;
        kern_return_t expected;
    } steps[] = {
        {"poll at zero", [&] { return semaphore_timedwait(semaphore, poll); }, KERN_OPERATION_TIMED_OUT},
        {"timed out", [&] { return semaphore_timedwait(semaphore, brief); }, KERN_OPERATION_TIMED_OUT},
        {"signal_all with nobody waiting", [&] { return semaphore_signal_all(semaphore); }, KERN_SUCCESS},
        {"... raised nothing", [&] { return semaphore_timedwait(semaphore, poll); }, KERN_OPERATION_TIMED_OUT},
        {"signal after a timed-out wait", [&] { return semaphore_signal(semaphore); }, KERN_SUCCESS},
        {"... raised the count to 1", [&] { return semaphore_timedwait(semaphore, poll); }, KERN_SUCCESS},
        {"bad time", [&] { return semaphore_timedwait(semaphore, {0, 1000000000}); }, KERN_INVALID_VALUE},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.what);
        EXPECT_EQ(step.call(), step.expected);
    }
    emu::injectFault(emu::Fault::SemaphoreWaitAborted);
    EXPECT_EQ(semaphore_wait(semaphore), KERN_ABORTED);

    // A handler that runs on the waiting thread ends the wait.
    struct sigaction action {}, previous {};
    action.sa_handler = [](int) { ++gInterruptions; };
    sigaction(SIGUSR2, &action, &previous);
    std::atomic<kern_return_t> waited{-1};
    pthread_t waiter{};
    std::thread thread([&] { waiter = pthread_self(); waited = semaphore_wait(semaphore); });
    while (waiter == pthread_t{}) sched_yield();
    while (waited == -1) (pthread_kill(waiter, SIGUSR2), sched_yield());
    thread.join();
    sigaction(SIGUSR2, &previous, nullptr);
    EXPECT_EQ(waited, KERN_ABORTED);

    emu::injectFault(emu::Fault::SemaphoreCreateFails);
    semaphore_t failed = 0;
    EXPECT_EQ(semaphore_create(mach_task_self(), &failed, SYNC_POLICY_FIFO, 0), KERN_RESOURCE_SHORTAGE);
    // A fork child holds none of its parent's port rights.
    EXPECT_EQ(exitOfChild([&] { std::exit(semaphore_signal(semaphore) == KERN_INVALID_NAME ? 0 : 3); }).first, 0);
    EXPECT_EQ(semaphore_destroy(mach_task_self(), semaphore), KERN_SUCCESS);
    EXPECT_EQ(semaphore_signal(semaphore), KERN_INVALID_NAME);
}

}  // namespace
