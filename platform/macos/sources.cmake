# The adapters; main.mm is the program's. Built for the Mac here, and for Linux by the tests.
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
  ${CMAKE_CURRENT_LIST_DIR}/StatusItemMenuBar.mm
  ${CMAKE_CURRENT_LIST_DIR}/StringConversion.mm
  ${CMAKE_CURRENT_LIST_DIR}/TaskChildProcess.mm
  ${CMAKE_CURRENT_LIST_DIR}/TaskChildProcessFactory.mm
  ${CMAKE_CURRENT_LIST_DIR}/UserNotificationCenter.mm
  )
