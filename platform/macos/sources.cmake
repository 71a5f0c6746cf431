# The adapters without main.mm. This folder builds them for the Mac, the tests for Linux.
set(HUSHBOX_MACOS_SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/AXAccessibilityTree.mm
  ${CMAKE_CURRENT_LIST_DIR}/CGCanvas.mm
  ${CMAKE_CURRENT_LIST_DIR}/CoreAudioHardware.mm
  ${CMAKE_CURRENT_LIST_DIR}/FormatterLocale.mm
  ${CMAKE_CURRENT_LIST_DIR}/HushboxRowAction.mm
  ${CMAKE_CURRENT_LIST_DIR}/NSWorkspaceApplications.mm
  ${CMAKE_CURRENT_LIST_DIR}/OSUnifiedLog.mm
  ${CMAKE_CURRENT_LIST_DIR}/RunLoopMainLoop.mm
  ${CMAKE_CURRENT_LIST_DIR}/ServiceLoginItem.mm
  ${CMAKE_CURRENT_LIST_DIR}/SingleInstance.mm
  ${CMAKE_CURRENT_LIST_DIR}/StatusItemMenuBar.mm
  ${CMAKE_CURRENT_LIST_DIR}/StringConversion.mm
  ${CMAKE_CURRENT_LIST_DIR}/TaskChildProcess.mm
  ${CMAKE_CURRENT_LIST_DIR}/TaskChildProcessFactory.mm
  ${CMAKE_CURRENT_LIST_DIR}/UserNotificationCenter.mm
  )

# What the program links against, for the Mac's own linker and for the proof on Linux.
set(HUSHBOX_MACOS_LINK_OPTIONS
  "-framework AppKit"
  "-framework ApplicationServices"
  "-framework CoreAudio"
  "-framework CoreFoundation"
  "-framework CoreGraphics"
  "-framework Foundation"
  "-framework ServiceManagement"
  "-framework UserNotifications"
  "-lobjc")
