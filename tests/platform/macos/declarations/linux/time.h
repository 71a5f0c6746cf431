// Declarations only, written from the documented interface: what this program calls and no more.
#pragma once
#include <stdint.h>
#include_next <time.h>
extern "C" uint64_t clock_gettime_nsec_np(clockid_t clock);
