/* SPDX-License-Identifier: MIT */
/* How often each record is named: counts by address. The records lie 16 bytes apart, so 4 low bits tell nothing. */
#include <mova/hash/hash_table.h>
#include <cstdio>

struct alignas(16) record {
    const char *name;
};

int main()
{
    record records[] = {{"red"}, {"green"}, {"blue"}};
    const int named[] = {0, 2, 0, 1, 0, 2};
    HSH_table *counts = HSH_create(0, 4);
    for (int i : named) {
        const auto key = reinterpret_cast<mova_word>(&records[i]);
        HSH_set_value(counts, key, HSH_get_value(counts, key) + 1);
    }
    for (const record &each : records)
        std::printf("%s %d\n", each.name, static_cast<int>(HSH_get_value(counts, reinterpret_cast<mova_word>(&each))));
    HSH_release(&counts);
}
