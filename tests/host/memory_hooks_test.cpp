/* SPDX-License-Identifier: MIT */
/* The memory service's hooks into the ends of threads and around forks. Each test is a child process in which nobody has
   called the service yet; what the system answers is the test's. */
#include <mova/frame/host.h>
#include <mova/host/memory.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <pthread.h>

#include <gtest/gtest.h>

#include <tests/host/child_process.h>

namespace {

std::atomic<int> atfork_calls{0};
bool refuses_atfork = false, refuses_setspecific = false;
void (*after_atfork)() = nullptr;

} // namespace

extern "C" int __register_atfork(void (*before)(), void (*in_parent)(), void (*in_child)(), void *library);

extern "C" int pthread_atfork(void (*before)(), void (*in_parent)(), void (*in_child)()) noexcept
{
    ++atfork_calls;
    if (refuses_atfork)
        return ENOMEM;
    const int result = __register_atfork(before, in_parent, in_child, nullptr);
    if (after_atfork)
        after_atfork();
    return result;
}

extern "C" int pthread_setspecific(pthread_key_t key, const void *value) noexcept
{
    static const auto system =
        reinterpret_cast<decltype(&pthread_setspecific)>(dlsym(RTLD_NEXT, "pthread_setspecific"));
    return refuses_setspecific ? ENOMEM : system(key, value);
}

namespace {

using mova::test::in_child;

constexpr size_t large = 1024 * 1024;

/* Returns whether the thread that used many blocks of a size holds free ones of them ready. The others are live, or not. */
bool is_cached(size_t size)
{
    const size_t live = mova_memory_statistics_of_size(size).live_blocks;
    std::vector<void *> blocks(100);
    std::ranges::generate(blocks, [=] { return MM_alloc_item(size); });
    if (mova_memory_statistics_of_size(size).live_blocks != live + 100 || std::ranges::count(blocks, nullptr) != 0)
        _exit(100);
    for (void *block : blocks)
        MM_dealloc_item(block, size);
    if (mova_memory_statistics_of_size(size).live_blocks != live)
        _exit(101);
    return mova_memory_statistics_of_size(size).cached_blocks != 0;
}

bool thread_is_cached()
{
    bool cached = false;
    std::thread([&] { cached = is_cached(48); }).join();
    return cached;
}

TEST(MemoryHooks, LargeBlocksAloneAreGuardedAroundForksToo)
{
    EXPECT_EQ(in_child([] {
                  MM_dealloc_item(MM_alloc_item(large), large);
                  return atfork_calls.load();
              }),
              1);
}

/* The child has the hooks around forks already, and sets them no second time. */
TEST(MemoryHooks, AChildForkedWhileAnotherThreadSetsThemHasCaches)
{
    EXPECT_EQ(in_child([] {
                  static std::atomic<bool> registered{false}, done{false};
                  after_atfork = [] {
                      registered = true;
                      while (!done)
                          usleep(1000);
                  };
                  std::thread first([] { MM_dealloc_item(MM_alloc_item(48), 48); });
                  while (!registered)
                      usleep(1000);
                  const int of_child =
                      in_child([] { return is_cached(48) && thread_is_cached() ? atfork_calls.load() : 0; });
                  done = true;
                  first.join();
                  return of_child;
              }),
              1);
}

TEST(MemoryHooks, WithoutThoseAroundForksThereAreNoCachesUntilTheSystemGrantsThem)
{
    EXPECT_EQ(in_child([] {
                  refuses_atfork = true;
                  if (is_cached(48) || thread_is_cached())
                      return 1;
                  refuses_atfork = false;
                  return is_cached(48) && thread_is_cached() ? 0 : 2;
              }),
              0);
}

TEST(MemoryHooks, AThreadWhoseEndCannotBeHookedHasNoCacheUntilItCan)
{
    EXPECT_EQ(in_child([] {
                  refuses_setspecific = true;
                  if (is_cached(48) || is_cached(5000))
                      return 1;
                  const size_t held = mova_memory_statistics().held_bytes;
                  for (int i = 0; i < 1000; ++i)
                      MM_dealloc_item(MM_alloc_item(large), large);
                  if (mova_memory_statistics().held_bytes > held + large)
                      return 2;
                  refuses_setspecific = false;
                  return is_cached(48) ? 0 : 3;
              }),
              0);
}

TEST(MemoryHooks, AProcessWithoutAKeyIsServedWithoutCaches)
{
    EXPECT_EQ(in_child([] {
                  for (pthread_key_t key; pthread_key_create(&key, nullptr) == 0;)
                      continue;
                  for (size_t size : {size_t{0}, size_t{48}, size_t{5000}, size_t{100000}, large}) {
                      if (is_cached(size))
                          return 1;
                  }
                  if (thread_is_cached() || mova_memory_statistics().live_blocks != 0)
                      return 2;
                  if (in_child([] { return is_cached(48); }) != 0)
                      return 3;
                  mova_memory_trim();
                  return mova_memory_statistics().held_bytes == 0 ? 0 : 4;
              }),
              0);
}

} // namespace
