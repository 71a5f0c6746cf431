// Declarations only, written from the documented interface: what this program calls and no more.
#pragma once
#include <stdint.h>
extern "C" {
typedef struct dispatch_queue_s* dispatch_queue_t;
typedef void (^dispatch_block_t)(void);
typedef uint64_t dispatch_time_t;
#define NSEC_PER_SEC 1000000000ull
#define DISPATCH_TIME_NOW (0ull)
enum { QOS_CLASS_UTILITY = 0x11 };
dispatch_queue_t dispatch_get_main_queue(void);
dispatch_queue_t dispatch_get_global_queue(intptr_t identifier, uintptr_t flags);
void dispatch_async(dispatch_queue_t queue, dispatch_block_t block);
dispatch_time_t dispatch_time(dispatch_time_t when, int64_t delta);
void dispatch_after(dispatch_time_t when, dispatch_queue_t queue, dispatch_block_t block);
}
