// Plays random events on a desk of real servers against Hushbox and checks every state. script/soak
// runs it.
//
//   hushbox-soak PROGRAM pulseaudio|pipewire SECONDS SEED   exits with 1 if anything was wrong

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "rehearsal/soak/Soak.h"

int main(int argc, char** argv) {
  using namespace hushbox::rehearsal;
  const std::string server = argc == 5 ? argv[2] : "";
  if (server != "pulseaudio" && server != "pipewire") {
    std::fprintf(stderr, "usage: hushbox-soak PROGRAM pulseaudio|pipewire SECONDS SEED\n");
    return 2;
  }
  try {
    Soak soak(server == "pipewire" ? AudioFlavour::PipeWire : AudioFlavour::PulseAudio, argv[1],
              std::strtoull(argv[4], nullptr, 10));
    soak.run(std::chrono::seconds{std::atol(argv[3])});
    soak.printSummary();
    return soak.wrong() == 0 ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "hushbox-soak: %s\n", error.what());
    return 1;
  }
}
