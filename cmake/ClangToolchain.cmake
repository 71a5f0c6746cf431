# Toolchain file of the presets that build with clang.
include(${CMAKE_CURRENT_LIST_DIR}/Clang.cmake)
if(NOT HUSHBOX_CLANG OR NOT HUSHBOX_CLANGXX)
  message(FATAL_ERROR "clang is not installed. Run: script/bootstrap quick")
endif()
set(CMAKE_C_COMPILER ${HUSHBOX_CLANG})
set(CMAKE_CXX_COMPILER ${HUSHBOX_CLANGXX})
