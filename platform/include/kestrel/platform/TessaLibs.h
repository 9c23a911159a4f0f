#pragma once

#include <sys/types.h>

extern "C" {
bool Unicode_IsBufferValid(const void* buffer, ssize_t length,
                           int encoding);  // length -1 = NUL-terminated; encoding 0 = UTF-8
char* Unicode_EscapeBuffer(
    const void* buffer, ssize_t length,
    int encoding);  // malloc'ed; every byte that is not part of valid UTF-8 becomes \xHH
void FeatureState_InitDeltaMode(void);
}
