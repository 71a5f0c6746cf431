#include "rehearsal/AudioServer.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

constexpr const char* clientName = "Rehearsal";

/// WirePlumber 0.4 takes 3 ms on an idle machine.
constexpr Milliseconds maxRestoreTime{1000};

/// Module arguments nest two kinds of quotes, and no escape works on both servers.
std::string requirePlain(const std::string& name) {
  if (name.find_first_of("\"'\\") == std::string::npos) return name;
  throw DeskError("the device name " + name + " contains a quote or a backslash");
}

std::string descriptionProperty(const std::string& name) {
  return "sink_properties=\"device.description='" + requirePlain(name) + "'\"";
}

/// Makes a session manager that starts restore nothing that was kept before.
void forgetVolumes(const Session& session) {
  std::filesystem::remove_all(session.home() / ".local/state/wireplumber");
}

/// Tries to connect: the file alone proves nothing, because a killed server leaves it behind.
bool isListening(const std::filesystem::path& socketFile) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  socketFile.string().copy(address.sun_path, sizeof address.sun_path - 1);
  const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool connected =
      connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  close(descriptor);
  return connected;
}

std::string socketPath(const Session& session) {
  return (session.runtimeFolder() / "pulse" / "native").string();
}

}  // namespace

AudioServer::AudioServer(const Session& session, AudioFlavour flavour)
    : session_(session),
      flavour_(flavour),
      address_(session.environment().at("PULSE_SERVER")),
      observer_(speakerphoneSource),
      plugged_{{decoySource, "Built-in Microphone", PA_INVALID_INDEX}} {
  start();
}

AudioServer::~AudioServer() {
  kill();
}

void AudioServer::start() {
  std::filesystem::create_directories(std::filesystem::path(socketPath(session_)).parent_path());
  if (flavour_ == AudioFlavour::PulseAudio) {
    startPulseAudio();
  } else {
    startPipeWire();
  }
  client_ = std::make_shared<AudioClient>(address_, clientName);
  observer_.connect(address_);
  client_->loadModule("module-null-sink",
                      "sink_name=jabra_speaker " + descriptionProperty(speakerphoneName));
  for (Plugged& plugged : plugged_) loadWritable(plugged);
}

void AudioServer::startPulseAudio() {
  processes_.push_back(session_.start(
      "pulseaudio.log",
      {"pulseaudio", "--daemonize=no", "-n", "--exit-idle-time=-1", "--use-pid-file=no",
       "--disallow-exit", "-L", "module-native-protocol-unix socket=" + socketPath(session_), "-L",
       // 5 s on a real desktop; shorter here so that tests wait less for the suspension.
       "module-suspend-on-idle timeout=2"}));
}

void AudioServer::startPipeWire() {
  forgetVolumes(session_);
  leftAt_.clear();
  processes_.push_back(session_.start("pipewire.log", {"pipewire"}));
  const std::filesystem::path socket = session_.runtimeFolder() / "pipewire-0";
  processes_.back()->waitUntilReady([&] { return isListening(socket); }, "PipeWire's socket");
  processes_.push_back(session_.start("wireplumber.log", {"wireplumber"}));
  processes_.push_back(session_.start("pipewire-pulse.log", {"pipewire-pulse"}));
}

bool AudioServer::isRunning() const {
  return !processes_.empty() && std::all_of(processes_.begin(), processes_.end(),
                                            [](const auto& one) { return one->isRunning(); });
}

std::vector<pid_t> AudioServer::processes() const {
  std::vector<pid_t> result;
  for (const auto& process : processes_) result.push_back(process->pid());
  return result;
}

void AudioServer::kill() {
  for (const auto& process : processes_) process->kill();
  processes_.clear();
  observer_.disconnect();
}

void AudioServer::restart() {
  kill();
  start();
}

void AudioServer::freeze() {
  for (const auto& process : processes_) process->freeze();
}

void AudioServer::thaw() {
  for (const auto& process : processes_) process->thaw();
}

void AudioServer::load(Plugged& plugged) {
  if (flavour_ == AudioFlavour::PulseAudio) {
    plugged.module = client_->loadModule(
        "module-null-source", "channels=1 source_name=" + plugged.source + " description=\"" +
                                  requirePlain(plugged.name) + "\"");
  } else {
    plugged.module = client_->loadModule(
        "module-null-sink", "media.class=Audio/Source/Virtual channels=1 sink_name=" +
                                plugged.source + " " + descriptionProperty(plugged.name));
  }
  waitUntil([&] { return client_->source(plugged.source).has_value(); }, serverTimeout,
            "the source " + plugged.source);
}

void AudioServer::loadWritable(Plugged& plugged) {
  // On a busy machine a source that is loaded while WirePlumber starts sometimes stays silent.
  constexpr int maxAttempts = 2;
  for (int attempt = 1;; ++attempt) {
    load(plugged);
    try {
      return makeWritable(plugged.source);
    } catch (const DeskError&) {
      if (attempt == maxAttempts) throw;
    }
    client_->unloadModule(plugged.module);
    waitUntil([&] { return !client_->source(plugged.source); }, serverTimeout,
              plugged.source + " to be gone");
  }
}

void AudioServer::setToFullVolume(const std::string& source) {
  // WirePlumber restores what the source was left at, a moment after it has appeared. It need not:
  // the versions differ in the sources that they restore.
  if (const auto left = leftAt_.find(source); left != leftAt_.end()) {
    const auto isRestored = [&] {
      const std::optional<SourceState> state = client_->source(source);
      return state && state->volume == left->second.volume &&
             state->muteSwitch == left->second.muteSwitch;
    };
    holdsWithin(isRestored, maxRestoreTime);
  }
  client_->setVolume(source, 1.0);
  client_->setMuteSwitch(source, false);
  const auto isFull = [&] {
    const std::optional<SourceState> state = client_->source(source);
    return state && state->volume == 1.0 && !state->muteSwitch;
  };
  waitUntil(isFull, serverTimeout, source + " to be at full volume");
}

void AudioServer::makeWritable(const std::string& source) {
  if (flavour_ == AudioFlavour::PulseAudio) return;
  // A corked stream is not enough. A meter is, and it does not count as a call.
  RecordingStream(client_, source, RecordingStream::Kind::Meter);
  const auto stopped = [&] {
    const std::optional<SourceState> state = client_->source(source);
    return state && !state->running;
  };
  waitUntil(stopped, serverTimeout, source + " to stop running");
}

void AudioServer::plug(const std::string& source, const std::string& name) {
  for (const Plugged& one : plugged_) {
    if (one.source == source) throw DeskError(source + " is plugged in already");
  }
  Plugged plugged{source, name, PA_INVALID_INDEX};
  // Before the volume is set: PipeWire 1.4 reports what was restored only once a stream has run.
  loadWritable(plugged);
  if (flavour_ == AudioFlavour::PipeWire) setToFullVolume(source);
  plugged_.push_back(plugged);
}

void AudioServer::unplug(const std::string& source) {
  const auto found = std::find_if(plugged_.begin(), plugged_.end(),
                                  [&](const Plugged& one) { return one.source == source; });
  if (found == plugged_.end()) throw DeskError(source + " is not plugged in");
  const uint32_t module = found->module;
  plugged_.erase(found);
  leftAt_[source] = *client_->source(source);
  client_->unloadModule(module);
  waitUntil([&] { return !client_->source(source); }, serverTimeout, source + " to be gone");
}

void AudioServer::plugSpeakerphone(const std::string& name) {
  plug(speakerphoneSource, name);
}

void AudioServer::replugSpeakerphone() {
  Plugged plugged{speakerphoneSource, speakerphoneName, PA_INVALID_INDEX};
  load(plugged);
  plugged_.push_back(plugged);
}

void AudioServer::unplugSpeakerphone() {
  unplug(speakerphoneSource);
}

bool AudioServer::hasSpeakerphone() const {
  return client_->source(speakerphoneSource).has_value();
}

SourceState AudioServer::speakerphone() const {
  const std::optional<SourceState> state = client_->source(speakerphoneSource);
  if (!state) throw DeskError("the speakerphone is not plugged in");
  return *state;
}

void AudioServer::setVolume(double volume) {
  client_->setVolume(speakerphoneSource, volume);
}

double AudioServer::volume() const {
  return speakerphone().volume;
}

void AudioServer::setMuteSwitch(bool muted) {
  client_->setMuteSwitch(speakerphoneSource, muted);
}

bool AudioServer::muteSwitch() const {
  return speakerphone().muteSwitch;
}

bool AudioServer::isSpeakerphoneRunning() const {
  return speakerphone().running;
}

std::unique_ptr<RecordingStream> AudioServer::record() {
  return stream(RecordingStream::Kind::Call);
}

std::unique_ptr<RecordingStream> AudioServer::meter() {
  return stream(RecordingStream::Kind::Meter);
}

std::unique_ptr<RecordingStream> AudioServer::corkedRecord() {
  return stream(RecordingStream::Kind::Corked);
}

std::unique_ptr<RecordingStream> AudioServer::stream(RecordingStream::Kind kind) {
  return std::make_unique<RecordingStream>(client_, speakerphoneSource, kind);
}

}  // namespace hushbox::rehearsal
