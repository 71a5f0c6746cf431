// core_instructions presses|polls N: does N presses or polls on the simulated desk. Run it twice
// under `valgrind --tool=callgrind`: the difference in instructions, divided by the difference in
// N, is the cost of one.

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "benchmarks/PressCycle.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: core_instructions presses|polls N\n");
    return 2;
  }
  hushbox::PressCycle cycle;
  const bool presses = std::strcmp(argv[1], "presses") == 0;
  for (int i = std::atoi(argv[2]); i > 0; --i) {
    if (presses) {
      cycle.run();
    } else {
      cycle.idleSecond();
    }
  }
  return 0;
}
