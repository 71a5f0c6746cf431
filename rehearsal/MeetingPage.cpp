#include "rehearsal/MeetingPage.h"

#include <cctype>
#include <nlohmann/json.hpp>
#include <string_view>

#include "rehearsal/AudioServer.h"
#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

std::string controlName(MeetingPage::Control control) {
  switch (control) {
    case MeetingPage::Control::CheckBox:
      return "checkbox";
    case MeetingPage::Control::ToggleButton:
      return "toggle";
    case MeetingPage::Control::Button:
      break;
  }
  return "button";
}

/// Encodes every byte except the unreserved characters as %XX.
std::string percentEncoded(const std::string& text) {
  constexpr const char* digits = "0123456789ABCDEF";
  constexpr std::string_view unreserved = "-._~";
  std::string result;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    const bool plain =
        (byte < 0x80 && std::isalnum(byte)) || unreserved.find(character) != std::string_view::npos;
    if (plain) {
      result += character;
    } else {
      result += {'%', digits[byte >> 4], digits[byte & 15]};
    }
  }
  return result;
}

std::string address(const MeetingPage::Options& options) {
  return Browser::teamsUrl("meeting.html") + "?n=" + std::to_string(options.extraElements) +
         "&muted=" + (options.muted ? "1" : "0") + "&control=" + controlName(options.microphone) +
         "&delay=" + std::to_string(options.labelDelay.count()) +
         "&stuck=" + (options.stuck ? "1" : "0") + "&media=" + (options.mediaPlayers ? "1" : "0") +
         "&last=" + (options.controlsLast ? "1" : "0") + "&title=" + percentEncoded(options.title);
}

}  // namespace

MeetingPage::MeetingPage(Browser& browser, const Options& options)
    : page_(browser.open(address(options), options.window)) {}

bool MeetingPage::isMuted() {
  return page_->evaluate("meeting.muted").get<bool>();
}

std::string MeetingPage::label() {
  const nlohmann::json label = page_->evaluate("meeting.label()");
  if (!label.is_string()) throw DeskError("the meeting has no microphone button now");
  return label;
}

void MeetingPage::clickMicrophone() {
  page_->click("#microphone-button");
}

void MeetingPage::pressMicrophone() {
  page_->evaluate("document.getElementById('microphone-button').click()");
}

void MeetingPage::leaveCall() {
  page_->evaluate("meeting.leave()");
}

void MeetingPage::joinCall() {
  page_->evaluate("meeting.join()");
}

void MeetingPage::record() {
  const std::string device = nlohmann::json(AudioServer::speakerphoneName).dump();
  waitUntil([&] { return page_->evaluate("meeting.record(" + device + ")").get<bool>(); },
            serverTimeout, "the browser to record");
}

void MeetingPage::stopRecording() {
  page_->evaluate("meeting.stopRecording()");
}

std::vector<std::chrono::system_clock::time_point> MeetingPage::presses() {
  std::vector<std::chrono::system_clock::time_point> result;
  const nlohmann::json presses = page_->evaluate("meeting.presses");
  for (const nlohmann::json& press : presses) {
    const std::chrono::duration<double, std::milli> sinceEpoch(press.get<double>());
    result.emplace_back(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(sinceEpoch));
  }
  return result;
}

void MeetingPage::waitForPresses(std::size_t count, Milliseconds deadline) {
  waitUntil([&] { return presses().size() >= count; }, deadline,
            std::to_string(count) + " presses of the microphone button");
}

void MeetingPage::waitForLabel(const std::string& label, Milliseconds deadline) {
  waitUntil([&] { return this->label() == label; }, deadline, "the label " + label);
}

void MeetingPage::waitForMuted(bool muted, Milliseconds deadline) {
  waitUntil([&] { return isMuted() == muted; }, deadline,
            muted ? "the meeting to be muted" : "the meeting to be live");
}

}  // namespace hushbox::rehearsal
