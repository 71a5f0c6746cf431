# A template. For a release fill in the version, the checksum that packaging/macos/release prints and
# the addresses.
cask "hushbox" do
  version "1.0.0"
  sha256 "FILL_IN"

  url "https://FILL_IN/Hushbox-#{version}.dmg"
  name "Hushbox"
  desc "Keeps Microsoft Teams and a Jabra speakerphone agreed on whether you are muted"
  homepage "https://FILL_IN/"

  livecheck do
    url "https://FILL_IN/"
    regex(/Hushbox-(\d+(?:\.\d+)+)\.dmg/i)
  end

  depends_on macos: ">= :ventura"

  app "Hushbox.app"

  uninstall quit: "org.hushbox.Hushbox"

  zap trash: "~/Library/Preferences/org.hushbox.Hushbox.plist"

  caveats <<~EOS
    Hushbox presses the microphone button of Teams, which requires your permission in
    System Settings > Privacy & Security > Accessibility.

    If the permission stops working after an update, remove Hushbox from that list with the
    minus button, add it again and restart it.
  EOS
end
