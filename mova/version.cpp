/* SPDX-License-Identifier: MIT */
#include <mova/version.h>

#define MOVA_TEXT_OF(number) #number
#define MOVA_VERSION_TEXT(major, minor, patch) MOVA_TEXT_OF(major) "." MOVA_TEXT_OF(minor) "." MOVA_TEXT_OF(patch)

int mova_version(void)
{
    return MOVA_VERSION;
}

const char *mova_version_text(void)
{
    return MOVA_VERSION_TEXT(MOVA_VERSION_MAJOR, MOVA_VERSION_MINOR, MOVA_VERSION_PATCH);
}
