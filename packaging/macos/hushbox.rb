# Ready to fill in at a release: the version, the checksum that packaging/macos/release prints, and
# where the image is kept.
cask "hushbox" do
  version "1.0.0"
  sha256 "FILL_IN"

  url "https://FILL_IN/Hushbox-#{version}.dmg"
  name "Hushbox"
  desc "Keeps Microsoft Teams and a Jabra speakerphone agreed on whether you are muted"
  homepage "https://FILL_IN/"

  depends_on macos: ">= :ventura"

  app "Hushbox.app"

  uninstall quit: "org.hushbox.Hushbox"

  caveats <<~EOS
    Hushbox presses the microphone button of Teams and needs your permission for that:
    System Settings > Privacy & Security > Accessibility.
  EOS
end
