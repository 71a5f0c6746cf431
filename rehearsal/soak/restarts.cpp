// Kills and restarts the servers around Hushbox again and again. script/torture runs it.
//
//   hushbox-restarts PROGRAM COUNT   exits with 1 if anything failed

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "rehearsal/soak/ServerRestarts.h"

int main(int argc, char** argv) {
  using namespace hushbox::rehearsal;
  const int count = argc == 3 ? std::atoi(argv[2]) : 0;
  if (count <= 0) {
    std::fprintf(stderr, "usage: hushbox-restarts PROGRAM COUNT\n");
    return 2;
  }
  int failures = 0;
  for (const AudioFlavour flavour : {AudioFlavour::PulseAudio, AudioFlavour::PipeWire}) {
    try {
      ServerRestarts restarts(flavour, argv[1]);
      restarts.restartSoundServer(count);
      if (flavour == AudioFlavour::PulseAudio) restarts.restartPanel(count);
      failures += restarts.failures();
    } catch (const std::exception& error) {
      std::fprintf(stderr, "hushbox-restarts: %s\n", error.what());
      ++failures;
    }
  }
  return failures == 0 ? 0 : 1;
}
