/* SPDX-License-Identifier: MIT */
/* A program that is not linked with the library and loads it while it runs. There is little room for thread-local
   variables of libraries that come so late. */
#include <cstddef>
#include <cstring>
#include <thread>

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

template <class F>
F *symbol(void *library, const char *name)
{
    return reinterpret_cast<F *>(dlsym(library, name));
}

/* Returns the status of a child that ends at once. */
int fork_and_wait()
{
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    int status = 1;
    waitpid(child, &status, 0);
    return status;
}

TEST(MemoryDlopen, ALibraryThatIsLoadedLateServesAllThreads)
{
    void *library = dlopen(MOVA_HOST_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    auto *allocate = symbol<void *(size_t)>(library, "MM_alloc_item");
    auto *release = symbol<void(void *, size_t)>(library, "MM_dealloc_item");
    ASSERT_NE(allocate, nullptr);
    ASSERT_NE(release, nullptr);
    void *block = std::memset(allocate(24), 1, 24);
    std::thread([=] {
        release(std::memset(allocate(24), 2, 24), 24);
        release(block, 24);
    }).join();
    EXPECT_EQ(dlclose(library), 0);
}

TEST(MemoryDlopen, AThreadThatOutlivesItsUseOfTheLibraryEndsWell)
{
    std::thread([] {
        void *library = dlopen(MOVA_HOST_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        auto *allocate = symbol<void *(size_t)>(library, "MM_alloc_item");
        auto *release = symbol<void(void *, size_t)>(library, "MM_dealloc_item");
        release(allocate(24), 24);
        EXPECT_EQ(dlclose(library), 0);
    }).join();
}

/* A plugin with the static library in it. Unlike the shared one it can be unloaded. */
TEST(MemoryDlopen, AThreadMayOutliveAPluginThatItUsed)
{
    std::thread([] {
        void *plugin = dlopen(MOVA_HOST_PLUGIN, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(plugin, nullptr) << dlerror();
        symbol<void()>(plugin, "use_memory")();
        ASSERT_EQ(dlclose(plugin), 0);
        EXPECT_EQ(dlopen(MOVA_HOST_PLUGIN, RTLD_NOW | RTLD_NOLOAD), nullptr) << "it was not unloaded";
    }).join();
    EXPECT_EQ(fork_and_wait(), 0);
}

} // namespace
