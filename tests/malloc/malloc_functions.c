/* SPDX-License-Identifier: MIT */
/* What programs expect of malloc and its kin, with the library preloaded. */
#define _GNU_SOURCE
#include <errno.h>
#include <malloc.h>
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#define CHECK(holds) ((holds) ? (void)0 : (void)(printf("line %d: %s\n", __LINE__, #holds), exit(1)))

static const size_t sizes[] = {0, 1, 24, 1000, 5000, 100000, 300000, 5000000};
enum { size_count = sizeof sizes / sizeof *sizes };

static int is_filled(const char *block, size_t size, char with)
{
    for (size_t i = 0; i < size; ++i) {
        if (block[i] != with)
            return 0;
    }
    return 1;
}

static void blocks(void)
{
    for (int i = 0; i < size_count; ++i) {
        char *block = malloc(sizes[i]);
        CHECK(block && (uintptr_t)block % 16 == 0);
        CHECK(malloc_usable_size(block) >= sizes[i]);
        memset(block, 'm', malloc_usable_size(block));
        block = realloc(block, sizes[i] * 3 + 7);
        CHECK(is_filled(block, sizes[i], 'm'));
        block = realloc(block, sizes[i] / 2 + 1);
        CHECK(is_filled(block, sizes[i] ? sizes[i] / 2 + 1 : 0, 'm'));
        free(block);
        block = calloc(sizes[i], 2);
        CHECK(is_filled(block, 2 * sizes[i], 0));
        free(block);
    }
    free(NULL);
    CHECK(realloc(malloc(10), 0) == NULL);
    CHECK(malloc_usable_size(NULL) == 0);
}

static void aligned_blocks(void)
{
    for (size_t alignment = 8; alignment <= 4 << 20; alignment *= 2) {
        for (int i = 0; i < size_count; ++i) {
            void *block = NULL;
            CHECK(posix_memalign(&block, alignment, sizes[i]) == 0 && (uintptr_t)block % alignment == 0);
            memset(block, 'a', sizes[i]);
            CHECK(malloc_usable_size(block) >= sizes[i]);
            block = realloc(block, sizes[i] + 100);
            CHECK(is_filled(block, sizes[i], 'a'));
            free(block);
            block = aligned_alloc(alignment, sizes[i]);
            CHECK((uintptr_t)block % alignment == 0);
            free(block);
        }
    }
    void *untouched = &untouched;
    CHECK(posix_memalign(&untouched, 24, 1) == EINVAL && untouched == &untouched);
    CHECK(posix_memalign(&untouched, 64, SIZE_MAX) == ENOMEM && untouched == &untouched);
    /* Not a constant: the compiler knows the rule too. */
    volatile size_t no_power_of_two = 48;
    CHECK(memalign(no_power_of_two, 1) == NULL && errno == EINVAL);
    free(valloc(1));
    free(pvalloc(1));
}

static void failures(void)
{
    const size_t numbers[] = {SIZE_MAX, SIZE_MAX - 15, SIZE_MAX / 2, (size_t)PTRDIFF_MAX - 16};
    char *block = malloc(100);
    memset(block, 'f', 100);
    for (int i = 0; i < 4; ++i) {
        errno = 0;
        CHECK(malloc(numbers[i]) == NULL && errno == ENOMEM);
        CHECK(calloc(numbers[i], 2) == NULL && calloc(2, numbers[i]) == NULL);
        CHECK(realloc(block, numbers[i]) == NULL && is_filled(block, 100, 'f'));
        CHECK(reallocarray(block, numbers[i], 3) == NULL);
        CHECK(aligned_alloc(64, numbers[i]) == NULL);
    }
    errno = EINTR;
    free(block);
    CHECK(errno == EINTR);
}

static void *in_a_thread(void *unused)
{
    for (int i = 0; i < 1000; ++i)
        free(malloc(sizes[i % size_count]));
    return unused;
}

static void threads_and_forks(void)
{
    for (int i = 0; i < 50; ++i) {
        pthread_t thread;
        CHECK(pthread_create(&thread, NULL, in_a_thread, NULL) == 0);
        pid_t child = fork();
        if (child == 0)
            _exit(in_a_thread(NULL) != NULL);
        int status = 1;
        CHECK(waitpid(child, &status, 0) == child && status == 0);
        pthread_join(thread, NULL);
    }
}

int main(void)
{
    CHECK(getenv("LD_PRELOAD"));
    blocks();
    aligned_blocks();
    failures();
    threads_and_forks();
    malloc_trim(0);
    return 0;
}
