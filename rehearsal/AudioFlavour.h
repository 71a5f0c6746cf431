#pragma once

namespace hushbox::rehearsal {

/// The sound server behind the PulseAudio socket.
enum class AudioFlavour { PulseAudio, PipeWire };

}  // namespace hushbox::rehearsal
