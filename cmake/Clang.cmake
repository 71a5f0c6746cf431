# Finds the distribution's clang: HUSHBOX_CLANG and HUSHBOX_CLANGXX. The plain names come first: they
# stand for the version that the distribution supports (14 on Debian 12, 19 on Debian 13).
set(clang_versions 19 18 17 16 15 14)
list(TRANSFORM clang_versions PREPEND clang- OUTPUT_VARIABLE clang_names)
list(TRANSFORM clang_versions PREPEND clang++- OUTPUT_VARIABLE clangxx_names)
find_program(HUSHBOX_CLANG NAMES clang ${clang_names})
find_program(HUSHBOX_CLANGXX NAMES clang++ ${clangxx_names})
