#pragma once

// The basic types of 64-bit macOS (pyobjc).

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

typedef unsigned char UInt8;
typedef unsigned int UInt32;
typedef int SInt32;
typedef double Float64;
typedef unsigned char Boolean;
typedef SInt32 OSStatus;

enum { noErr = 0 };
