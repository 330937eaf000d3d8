/* SPDX-License-Identifier: MIT */
/* Names within scopes: an inner one hides the outer, and uncovers it when the scope ends. */
#include <mova/hash/pointer_lookup.h>
#include <stdio.h>

static void show(const mova_lookup *scopes, const char *name)
{
    printf("%s is %d\n", name, (int)mova_lu_get(scopes, (mova_word)name));
}

int main(void)
{
    const char *width = "width";
    mova_lookup *scopes = mova_lu_create();
    mova_lu_add(scopes, (mova_word)width, 80);
    mova_lu_add(scopes, (mova_word)width, 132);
    show(scopes, width);
    mova_lu_remove(scopes, (mova_word)width);
    show(scopes, width);
    mova_lu_release(&scopes, NULL);
}
