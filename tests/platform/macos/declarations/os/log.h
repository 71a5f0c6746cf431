// Declarations only, written from the documented interface: what this program calls and no more.
#pragma once
#include <os/object.h>
#include <stdbool.h>
#include <stdint.h>
extern "C" {
#if defined(__OBJC__) && OS_OBJECT_USE_OBJC
OS_OBJECT_DECL(os_log);
#else
typedef struct os_log_s* os_log_t;
#endif
typedef uint8_t os_log_type_t;
enum : os_log_type_t {
  OS_LOG_TYPE_DEFAULT = 0x00,
  OS_LOG_TYPE_INFO = 0x01,
  OS_LOG_TYPE_DEBUG = 0x02,
  OS_LOG_TYPE_ERROR = 0x10,
  OS_LOG_TYPE_FAULT = 0x11
};
extern void* __dso_handle;
os_log_t os_log_create(const char* subsystem, const char* category)
    __attribute__((availability(macos, introduced = 10.12)));
bool os_log_type_enabled(os_log_t oslog, os_log_type_t type);
void _os_log_impl(void* dso, os_log_t log, os_log_type_t type, const char* format, uint8_t* buf,
                  uint32_t size);
}
// The SDK's macro also places the format string in __TEXT,__oslogstring; the encoding below is the
// same builtin.
#define os_log_with_type(log, t, format, ...)                                                     \
  __extension__({                                                                                 \
    os_log_t _l = (log);                                                                          \
    os_log_type_t _t = (t);                                                                       \
    if (os_log_type_enabled(_l, _t)) {                                                            \
      static const char _f[] __attribute__((section(DECLARED_OSLOG_SECTION), internal_linkage)) = \
          format;                                                                                 \
      uint8_t __attribute__((uninitialized, aligned(16)))                                         \
      _b[__builtin_os_log_format_buffer_size(format, ##__VA_ARGS__)];                             \
      _os_log_impl(&__dso_handle, _l, _t, _f,                                                     \
                   (uint8_t*)__builtin_os_log_format(_b, format, ##__VA_ARGS__),                  \
                   (uint32_t)sizeof(_b));                                                         \
    }                                                                                             \
  })
#ifdef __MACH__
#define DECLARED_OSLOG_SECTION "__TEXT,__oslogstring,cstring_literals"
#else
#define DECLARED_OSLOG_SECTION "oslogstring"
#endif
