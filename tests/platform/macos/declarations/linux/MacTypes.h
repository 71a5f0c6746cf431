// Declarations only, written from the documented interface: what this program calls and no more.
#pragma once
typedef unsigned char Boolean;
typedef unsigned int UInt32;
typedef int SInt32;
typedef SInt32 OSStatus;
typedef float Float32;
typedef double Float64;
