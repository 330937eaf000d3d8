/* A program that is not linked with the library and loads it while it runs. There is little room for thread-local
   variables of libraries that come so late. */
#include <cstddef>
#include <cstring>
#include <thread>

#include <dlfcn.h>

#include <gtest/gtest.h>

namespace {

template <class F>
F *symbol(void *library, const char *name)
{
    return reinterpret_cast<F *>(dlsym(library, name));
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

} // namespace
