// libStrand loaded by dlopen, counting a handler's mallocs: so built without sanitizers.
#include <dlfcn.h>

#include <cstddef>

#include "Strand/TestSupport.h"

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace {
thread_local bool tCounting = false;  // static TLS: the executable's own
std::atomic<int> gAllocations{0};

void count() {
    if (tCounting) gAllocations.fetch_add(1);
}
}  // namespace

extern "C" {
void* malloc(std::size_t size) { return count(), __libc_malloc(size); }
void* calloc(std::size_t n, std::size_t size) { return count(), __libc_calloc(n, size); }
void* realloc(void* memory, std::size_t size) { return count(), __libc_realloc(memory, size); }
void* memalign(std::size_t alignment, std::size_t size) {
    return count(), __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    *memory = memalign(alignment, size);
    return *memory != nullptr ? 0 : ENOMEM;
}
void free(void* memory) { __libc_free(memory); }
}

namespace {

using GetThreadId = Strand::ThreadId (*)();
GetThreadId gGetThreadId = nullptr;
thread_local Strand::ThreadId tSeenInHandler;

TEST(LoadOrder, FirstIdentityInsideASignalHandlerAllocatesNothing) {
    EXPECT_EQ(inChildProcess(30, [] {
        pthread_key_t keys[40];
        for (auto& key : keys) pthread_key_create(&key, nullptr);
        void* const library = dlopen(STRAND_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) return false;
        gGetThreadId = reinterpret_cast<GetThreadId>(dlsym(library, "_ZN6Strand11getThreadIdEv"));
        if (gGetThreadId == nullptr) return false;
        handleSigusr2([](int) {
            tCounting = true;
            tSeenInHandler = gGetThreadId();
            tCounting = false;
        });
        bool ok = true;
        for (int i = 0; i < 3; ++i) {  // threads that never touched the library before
            std::thread([&ok] {
                raise(SIGUSR2);
                ok = ok && std::get<0>(tSeenInHandler) == pthread_self() &&
                     gGetThreadId() == tSeenInHandler;
            }).join();
        }
        return ok && gAllocations.load() == 0;
    }), "ok");
}

using ExecuteOnThread = void (*)(const Strand::ThreadId&, const std::function<void()>&);

// Load, make one cross-thread call (which installs the handler), unload; then SIGUSR1 arrives.
TEST(LoadOrder, UnloadingTheLibraryKeepsItsSignalHandlerMapped) {
    EXPECT_EQ(inChildProcess(30, [] {
        void* const library = dlopen(STRAND_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) return false;
        const auto getThreadId =
            reinterpret_cast<GetThreadId>(dlsym(library, "_ZN6Strand11getThreadIdEv"));
        void* symbol = nullptr;  // its name as libstdc++ and as libc++ mangle it
        for (const char* name :
             {"_ZN6Strand15executeOnThreadERKSt5tupleIJmijEERKSt8functionIFvvEE",
              "_ZN6Strand15executeOnThreadERKNSt3__15tupleIJmijEEERKNS0_8functionIFvvEEE"}) {
            symbol = symbol != nullptr ? symbol : dlsym(library, name);
        }
        const auto executeOnThread = reinterpret_cast<ExecuteOnThread>(symbol);
        if (getThreadId == nullptr || executeOnThread == nullptr) return false;
        std::atomic<bool> ran{false};
        std::thread([&] { executeOnThread(getThreadId(), [&] { ran = true; }); }).join();
        dlclose(library);
        raise(SIGUSR1);
        return ran.load();
    }), "ok");
}

}  // namespace
