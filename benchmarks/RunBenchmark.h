#pragma once

#include <cstdio>
#include <exception>
#include <functional>

namespace hushbox {

/// The body of a benchmark's main(): calls `measure` with the arguments, argv[1] first, if there
/// are `count` of them. Returns the exit status: 0, 1 after an exception, whose text it prints, or
/// 2, with the usage, for another number of arguments.
inline int runBenchmark(int argc, char** argv, const char* usage, int count,
                        const std::function<void(char** arguments)>& measure) {
  if (argc != count + 1) {
    std::fprintf(stderr, "usage: %s\n", usage);
    return 2;
  }
  try {
    measure(argv + 1);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
    return 1;
  }
}

}  // namespace hushbox
