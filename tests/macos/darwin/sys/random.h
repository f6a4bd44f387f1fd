#pragma once

// Where macOS declares it.

#include <stddef.h>

extern "C" int getentropy(void* buffer, size_t size);
