#pragma once

namespace hushbox::rehearsal {

/// Which sound server answers on the PulseAudio socket.
enum class AudioFlavour { PulseAudio, PipeWire };

}  // namespace hushbox::rehearsal
