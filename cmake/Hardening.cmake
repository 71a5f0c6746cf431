# hushbox_harden(TARGET): what a release build is hardened with. TARGET is an INTERFACE library that
# every other target links. Debug builds are left alone: _FORTIFY_SOURCE needs the optimizer.
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)

function(hushbox_harden TARGET)
  set(flags -fstack-protector-strong)
  check_cxx_compiler_flag(-fstack-clash-protection HUSHBOX_HAS_STACK_CLASH_PROTECTION)
  if(HUSHBOX_HAS_STACK_CLASH_PROTECTION)
    list(APPEND flags -fstack-clash-protection)
  endif()
  # x86: indirect branches and returns are checked where the processor can.
  check_cxx_compiler_flag(-fcf-protection HUSHBOX_HAS_CF_PROTECTION)
  if(HUSHBOX_HAS_CF_PROTECTION)
    list(APPEND flags -fcf-protection)
  endif()

  # Level 3 needs both a compiler and a C library that know it.
  set(CMAKE_REQUIRED_FLAGS "-O2 -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -Werror")
  check_cxx_source_compiles("
    #include <cstdlib>
    #if !defined(__USE_FORTIFY_LEVEL) || __USE_FORTIFY_LEVEL < 3
    #error _FORTIFY_SOURCE=3 is not known
    #endif
    int main() {}" HUSHBOX_HAS_FORTIFY_SOURCE_3)
  set(level 2)
  if(HUSHBOX_HAS_FORTIFY_SOURCE_3)
    set(level 3)
  endif()
  list(APPEND flags -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=${level})

  set(link_flags)
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    list(APPEND flags -fPIE)
    set(link_flags -pie -Wl,-z,relro,-z,now)
  endif()
  set(optimized "$<CONFIG:Release,RelWithDebInfo,MinSizeRel>")
  target_compile_options(${TARGET} INTERFACE "$<${optimized}:${flags}>")
  target_link_options(${TARGET} INTERFACE "$<${optimized}:${link_flags}>")
endfunction()
