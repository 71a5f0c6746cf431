"""The faults to plant: each replaces one place in an adapter by a plausible mistake.

The last groups are those that a review found uncaught; each stands for a class.
"""

import dataclasses


@dataclasses.dataclass(frozen=True)
class Fault:
    name: str
    file: str
    right: str
    wrong: str


AUDIO, TREE, LOOP = "CoreAudioHardware.mm", "AXAccessibilityTree.mm", "RunLoopMainLoop.mm"
TASK, MENU, ART = "TaskChildProcess.mm", "StatusItemMenuBar.mm", "CGCanvas.mm"
NOTIFY, LOGIN, APPS = "UserNotificationCenter.mm", "ServiceLoginItem.mm", "NSWorkspaceApplications.mm"
TEXT, LOG, TIME = "StringConversion.mm", "OSUnifiedLog.mm", "FormatterLocale.mm"
ROW, SINGLE, MAIN = "HushboxRowAction.mm", "SingleInstance.mm", "main.mm"
REFERENCE, ELEMENT, CHILD = "CFReference.h", "AXElement.h", "TaskChildProcess.h"

# The suites of each adapter, which run before all others.
SUITES = {
    AUDIO: "CoreAudioHardwareTest.*:*AudioHardwareContract*",
    TREE: "AXAccessibilityTreeTest.*:*AccessibilityContract*",
    LOOP: "RunLoopMainLoopTest.*:*MainLoopContract*",
    TASK: "TaskChildProcessTest.*:*ChildProcessContract*",
    MENU: "StatusItemMenuBarTest.*:*MenuBarContract*",
    ART: "CGCanvasTest.*:StatusItemMenuBarTest.*",
    NOTIFY: "UserNotificationCenterTest.*:*UserNotificationsContract*",
    LOGIN: "ServiceLoginItemTest.*:*LoginItemContract*",
    APPS: "NSWorkspaceApplicationsTest.*",
    TEXT: "StringConversionTest.*:AXAccessibilityTreeTest.*",
    LOG: "OSUnifiedLogTest.*:*UnifiedLogContract*",
    TIME: "FormatterLocaleTest.*:*LocaleContract*",
    ROW: "StatusItemMenuBarTest.*",
    SINGLE: "SingleInstanceTest.*",
    MAIN: "HushboxProgramTest.*",
    REFERENCE: "CFReferenceTest.*",
    ELEMENT: "AXAccessibilityTreeTest.*",
    CHILD: "TaskChildProcessTest.*",
}

# The tests that take seconds.
SLOW = "CallTest.*Hour*"

FAULTS = [
    # Core Audio
    Fault("property with another selector", AUDIO, "return {address.selector,",
          "return {address.selector + 1,"),
    Fault("property with another scope", AUDIO, "address.scope, address.element}",
          "kAudioObjectPropertyScopeGlobal, address.element}"),
    Fault("property with another element", AUDIO, "address.scope, address.element}",
          "address.scope, 1}"),
    Fault("size of a written property", AUDIO, "nullptr, size, data);", "nullptr, size / 2, data);"),
    Fault("name that is not released", AUDIO, "CFReference<CFTypeRef>::adopting(value)",
          "CFReference<CFTypeRef>::retaining(value)"),
    Fault("name used although the status is an error", AUDIO,
          "  if (status != kAudioHardwareNoError) return status;\n  if (size",
          "  (void)status;\n  if (size"),
    Fault("name used although it is not a string", AUDIO,
          "if (!owned || CFGetTypeID(value) != CFStringGetTypeID())", "if (!owned)"),
    Fault("absent name used", AUDIO, "if (!owned || CFGetTypeID(", "if (CFGetTypeID("),
    Fault("null pointer for an empty list", AUDIO, "data ? data : &nothing", "data"),
    Fault("listener removed with another block", AUDIO,
          "dispatch_get_main_queue(),\n                                                added.block);",
          "dispatch_get_main_queue(),\n                                                "
          "blockCalling([] {}));"),
    Fault("listener on another queue", AUDIO, "&property, dispatch_get_main_queue(),\n"
          "                                          added->block)",
          "&property, dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), added->block)"),
    Fault("token for a listener that was not added", AUDIO, "    return {};\n",
          "    return RegistrationToken(std::move(added));\n"),
    Fault("empty token removed", AUDIO, "if (!listener) return audio::unsupportedOperation;", ""),
    Fault("property that is always there", AUDIO, "return AudioObjectHasProperty(object, &property);",
          "return AudioObjectHasProperty(object, &property) || true;"),
    Fault("listener destroyed while it runs", AUDIO,
          "    const auto called = held;\n    @autoreleasepool {\n      (*called)();",
          "    @autoreleasepool {\n      (*held)();"),

    # Accessibility
    Fault("timeout on the application only", TREE,
          "if (found->messagingTimeout() == seconds) return accessibility::success;",
          "return accessibility::success;"),
    Fault("timeout set before each call", TREE,
          "  if (found->messagingTimeout() == seconds) return accessibility::success;\n", ""),
    Fault("timeout that could not be set is ignored", TREE,
          "  if (status == kAXErrorSuccess) found->setMessagingTimeout(seconds);\n  return status;",
          "  found->setMessagingTimeout(seconds);\n  return accessibility::success;"),
    Fault("timeout not applied to later elements", TREE,
          "  target->application()->messagingTimeout = seconds;\n", ""),
    Fault("copied attribute that is not released", TREE, "CFReference<CFTypeRef>::adopting(copied)",
          "CFReference<CFTypeRef>::retaining(copied)"),
    Fault("child that is not retained", TREE, "CFReference<AXUIElementRef>::retaining",
          "CFReference<AXUIElementRef>::adopting"),
    Fault("application element retained twice", TREE,
          "CFReference<AXUIElementRef>::adopting(AXUI", "CFReference<AXUIElementRef>::retaining(AXUI"),
    Fault("array member used although it is not an element", TREE,
          "if (!member || CFGetTypeID(member) != AXUIElementGetTypeID()) continue;",
          "if (!member) continue;"),
    Fault("array without elements read as an empty list", TREE,
          "  if (count != 0 && elements.empty()) return OtherAttributeValue{};\n", ""),
    Fault("first child skipped", TREE, "for (CFIndex i = 0; i < count; ++i)",
          "for (CFIndex i = 1; i < count; ++i)"),
    Fault("number read as text", TREE, "if (type == CFStringGetTypeID()) {",
          "if (type != CFArrayGetTypeID()) {"),
    Fault("absent value not checked", TREE, "  if (!value) return {};\n", ""),
    Fault("value used although the status is an error", TREE,
          "    if (status != kAXErrorSuccess) return status;\n    const auto owned",
          "    const auto owned"),
    Fault("attribute set to the opposite", TREE, "value ? kCFBooleanTrue : kCFBooleanFalse",
          "value ? kCFBooleanFalse : kCFBooleanTrue"),
    Fault("permission requested without a prompt", TREE, "prompt ? @YES : @NO", "@NO"),
    Fault("prompt without a request", TREE, "prompt ? @YES : @NO", "@YES"),
    Fault("element of another tree accepted", TREE,
          " || found->application()->tree.lock() != token_", ""),
    Fault("action not performed", TREE,
          "        AXUIElementPerformAction(target->get(), (__bridge CFStringRef)stringFromUtf8(action));",
          "        stringFromUtf8(action) ? kAXErrorSuccess : kAXErrorFailure;"),
    Fault("no wait for the effect of an action", TREE, "  waitForChange(element, *before);\n", ""),
    Fault("wait after an action that failed", TREE,
          "if (status != kAXErrorSuccess || !before) return status;",
          "if (!before) return status;\n    if (status) waitForChange(element, *before);\n"
          "    if (status) return status;"),
    Fault("wait without an end", TREE, "    left -= span;\n", ""),
    Fault("wait of five seconds", TREE, "maxWaitForChange{0.5}", "maxWaitForChange{5}"),
    Fault("flood of reads", TREE, "pause *= 2", "pause *= 1"),
    Fault("wait for the description only", TREE, '{"AXDescription", "AXTitle", "AXHelp", "AXValue"}',
          '{"AXDescription"}'),
    Fault("wait for an application that froze", TREE,
          "    if (status == accessibility::cannotComplete) return std::nullopt;\n", ""),

    # Main loop
    Fault("timer that an open menu stops", LOOP, "forMode:NSRunLoopCommonModes",
          "forMode:NSDefaultRunLoopMode"),
    Fault("timer that fires once", LOOP, "repeats:YES", "repeats:NO"),
    Fault("timer with a tolerance of its interval", LOOP,
          "    [NSRunLoop.mainRunLoop addTimer:", "    timer.tolerance = interval.count();\n"
          "    [NSRunLoop.mainRunLoop addTimer:"),
    Fault("battery read on the main thread", LOOP,
          "dispatch_async(dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), movedToQueue",
          "dispatch_async(dispatch_get_main_queue(), movedToQueue"),
    Fault("delay in milliseconds", LOOP, "ceil<std::chrono::nanoseconds>",
          "ceil<std::chrono::milliseconds>"),
    Fault("terminate before its caller returns", LOOP, "  dispatch_async(dispatch_get_main_queue(), ^{\n"
          "    [NSApplication.sharedApplication terminate:nil];\n  });",
          "  [NSApplication.sharedApplication terminate:nil];"),
    Fault("main thread everywhere", LOOP, "return NSThread.isMainThread;", "return true;"),
    Fault("captures destroyed by the caller", LOOP, "std::exchange(*held, nullptr)();", "(*held)();"),
    Fault("main block without a pool", LOOP, "    @autoreleasepool {\n      std::exchange(*held, nullptr)();\n    }",
          "    std::exchange(*held, nullptr)();"),
    Fault("activity that does not end", LOOP, "      [NSProcessInfo.processInfo endActivity:native_];\n", ""),
    Fault("activity that App Nap ignores", LOOP, " | NSActivityLatencyCritical", ""),
    Fault("activity that keeps the machine awake", LOOP, "NSActivityUserInitiatedAllowingIdleSystemSleep",
          "NSActivityUserInitiated"),

    # Child processes
    Fault("wait before the output is read", TASK,
          "    NSData* data = [output_", "    [task_ waitUntilExit];\n    NSData* data = [output_"),
    Fault("output that is not redirected", TASK, "    task.standardOutput = pipe;\n", ""),
    Fault("standard error piped", TASK, "    task.standardOutput = pipe;\n",
          "    task.standardOutput = pipe;\n    task.standardError = [NSPipe pipe];\n"),
    Fault("standard error joined to the output", TASK, "    task.standardOutput = pipe;\n",
          "    task.standardOutput = pipe;\n    task.standardError = pipe;\n"),
    Fault("standard input piped", TASK, "    task.standardOutput = pipe;\n",
          "    task.standardOutput = pipe;\n    task.standardInput = [NSPipe pipe];\n"),
    Fault("failed launch reported as a success", TASK,
          "if (![task launchAndReturnError:nil]) return false;", "[task launchAndReturnError:nil];"),
    Fault("arguments left out", TASK, "    task.arguments = arguments;\n", ""),
    Fault("exit not waited for", TASK, "    [task_ waitUntilExit];\n", ""),
    Fault("second launch", TASK, "if (task_ || path_.empty()", "if (path_.empty()"),
    Fault("launch without a path", TASK, "path_.empty() || !isWhole(path_)", "!isWhole(path_)"),
    Fault("truncated argument", TASK, "      if (!isWhole(argument)) return false;\n", ""),

    # Menu bar
    Fault("row that loses its target", MENU, "  item.target = action;\n", ""),
    Fault("row whose target has no owner", MENU, "  item.representedObject = action;\n", ""),
    Fault("row with another selector", MENU, "@selector(run:)", "@selector(runs:)"),
    Fault("template flag inverted", MENU, "setTemplate:icon.isTemplate", "setTemplate:!icon.isTemplate"),
    Fault("image upside down", MENU, "flipped:icon.flipped", "flipped:!icon.flipped"),
    Fault("image with its sides exchanged", MENU, "NSMakeSize(icon.width, icon.height)",
          "NSMakeSize(icon.height, icon.width + 1)"),
    Fault("switch that never shows its mark", MENU, "row.on ? NSControlStateValueOn",
          "row.on ? NSControlStateValueOff"),
    Fault("disabled row that can be chosen", MENU, "isCommand(row) && row.enabled", "isCommand(row)"),
    Fault("text that is always translated", MENU, "  if (!row.localized) return text;\n", ""),
    Fault("text that is never translated", MENU, "if (!row.localized) return text;", "return text;"),
    Fault("shortcut without the command key", MENU, "  item.keyEquivalentModifierMask = "
          "NSEventModifierFlagCommand;\n", "  item.keyEquivalentModifierMask = NSEventModifierFlagShift;\n"),
    Fault("rows enabled by the menu", MENU, "autoenablesItems = NO", "autoenablesItems = YES"),
    Fault("rows replaced instead of edited", MENU, "if (continued[i]) {", "if (continued[i] && i > 99) {"),
    Fault("removed row that stays", MENU,
          "for (; next < *continued[i]; ++next) [menu removeItemAtIndex:index];", "next = *continued[i];"),
    Fault("item without an accessibility label", MENU, "    [button setAccessibilityLabel:words];\n", ""),
    Fault("item without a tool tip", MENU, "    button.toolTip = words;\n", ""),
    Fault("item without a name", MENU, '    item_->statusItem.autosaveName = @"Hushbox";\n', ""),
    Fault("item that stays in the menu bar", MENU,
          "    [NSStatusBar.systemStatusBar removeStatusItem:item_->statusItem];\n", ""),
    Fault("item of another width", MENU, "NSVariableStatusItemLength", "NSSquareStatusItemLength"),
    Fault("drawing without a context", MENU, "if (!context) return draw(nullptr);", ""),
    Fault("row without a function", ROW, "if (action) action();", "action();"),
    Fault("row destroyed by its function", ROW,
          "  const std::function<void()> action = self.onChoice;\n  if (action) action();",
          "  if (_onChoice) _onChoice();"),

    # Drawing
    Fault("band that is not erased", ART, "mode == BlendMode::clear ? kCGBlendModeClear",
          "mode == BlendMode::clear ? kCGBlendModeNormal"),
    Fault("holes that are filled", ART, "? NSWindingRuleEvenOdd", "? NSWindingRuleNonZero"),
    Fault("curve with its control points exchanged", ART,
          "controlPoint1:nativePoint(element.control1)\n           controlPoint2:nativePoint(element.control2)",
          "controlPoint1:nativePoint(element.control2)\n           controlPoint2:nativePoint(element.control1)"),
    Fault("line of another width", ART, "  native.lineWidth = path.lineWidth();\n", ""),
    Fault("line without round ends", ART, "NSLineCapStyleRound : NSLineCapStyleButt",
          "NSLineCapStyleButt : NSLineCapStyleButt"),
    Fault("icon that is never faint", ART, "CGContextSetAlpha(context_, alpha);",
          "CGContextSetAlpha(context_, 1);"),
    Fault("stroke in the colour of the fill", ART, "[nativeColor(color) setStroke];",
          "[nativeColor(color) setFill];"),
    Fault("path that is not closed", ART, "      [path closePath];\n", ""),

    # Notifications
    Fault("notification outside a bundle", NOTIFY,
          "  if (!NSBundle.mainBundle.bundleIdentifier) return nil;\n", ""),
    Fault("notification without its sound", NOTIFY, "if (request.defaultSound) content", "if (false) content"),
    Fault("notification that always sounds", NOTIFY, "if (request.defaultSound) content", "content"),
    Fault("permission inferred from the absence of an error", NOTIFY,
          "completion(granted, description(error))", "completion(!error, description(error))"),
    Fault("permission for other options", NOTIFY, "requestAuthorizationWithOptions:options",
          "requestAuthorizationWithOptions:UNAuthorizationOptionAlert"),
    Fault("error of a notification dropped", NOTIFY, "completion(description(error));",
          "completion(description(nil));"),

    # The rest
    Fault("login item's status ignored", LOGIN,
          "[SMAppService.mainAppService registerAndReturnError:nil] || status() == Status::enabled",
          "([SMAppService.mainAppService registerAndReturnError:nil], true)"),
    Fault("unregistered item reported as a failure", LOGIN,
          " ||\n           status() == Status::notRegistered", ""),
    Fault("process identifier cut to 16 bits", APPS, "= running.processIdentifier;",
          "= static_cast<std::int16_t>(running.processIdentifier);"),
    Fault("absent bundle identifier read as empty", APPS, "if (identifier) application", "application"),
    Fault("nil for malformed text", TEXT, "string ? string : @\"\"", "string"),
    Fault("text read beyond its end", TEXT, "length:text.size()", "length:text.size() + 1"),
    Fault("string that must have a UTF-8 form", TEXT, "allowLossyConversion:YES", "allowLossyConversion:NO"),
    Fault("record that is private", LOG, "%{public}s", "%{private}s"),
    Fault("every record an error", LOG, "OS_LOG_TYPE_ERROR : OS_LOG_TYPE_INFO",
          "OS_LOG_TYPE_ERROR : OS_LOG_TYPE_ERROR"),
    Fault("control characters not escaped", LOG, "text::escapedForTerminal(text)", "std::string(text)"),
    Fault("time with its date", TIME, "dateStyle:NSDateFormatterNoStyle", "dateStyle:NSDateFormatterShortStyle"),
    Fault("this process taken for another one", SINGLE, "other == own || each.terminated",
          "each.terminated"),
    Fault("terminated process taken for a running one", SINGLE, "other == own || each.terminated",
          "other == own"),
    Fault("two instances that both give way", SINGLE, "each.finishedLaunching || other < own", "true"),
    Fault("instance that never gives way", SINGLE, "each.finishedLaunching || other < own", "other < own"),

    # Results that hardly ever differ
    Fault("name of another size", AUDIO, "  if (size != sizeof value) return audio::badPropertySize;\n", ""),
    Fault("negative status taken for success", AUDIO,
          "  if (status != kAudioHardwareNoError) return status;\n  if (size",
          "  if (status > kAudioHardwareNoError) return status;\n  if (size"),
    Fault("name read in the global scope", AUDIO,
          "  const auto property = native(address);\n  CFTypeRef value",
          "  const AudioObjectPropertyAddress property{address.selector, "
          "kAudioObjectPropertyScopeGlobal, 0};\n  CFTypeRef value"),
    Fault("application without an element called", TREE, "if (!found || !found->get() || ", "if (!found || "),
    Fault("application's process identifier cut to 16 bits", TREE,
          "AXUIElementCreateApplication(processIdentifier)",
          "AXUIElementCreateApplication(processIdentifier & 0xffff)"),
    Fault("application's timeout recorded although it failed", TREE,
          "  const AXError status = AXUIElementSetMessagingTimeout(target->get(), seconds);\n"
          "  if (status == kAXErrorSuccess) target",
          "  const AXError status = AXUIElementSetMessagingTimeout(target->get(), seconds);\n  target"),
    Fault("shorter timeout not set", TREE, "found->messagingTimeout() == seconds",
          "found->messagingTimeout() >= seconds"),
    Fault("absent value reported as a success", TREE,
          "    if (status != kAXErrorSuccess) return status;\n    const auto owned",
          "    if (status != kAXErrorSuccess) return status == kAXErrorNoValue ? 0 : status;\n"
          "    const auto owned"),
    Fault("former value kept", TREE, "    value = translated(", "    if (copied) value = translated("),
    Fault("first pause ten times as long", TREE, "firstPause{0.01}", "firstPause{0.1}"),
    Fault("child without a pipe", TASK, "    if (!pipe) return false;\n", ""),
    Fault("task kept after a failed launch", TASK,
          "    if (![task launchAndReturnError:nil]) return false;\n    task_ = task;",
          "    task_ = task;\n    if (![task launchAndReturnError:nil]) return false;"),
    Fault("application skipped while it starts", APPS, "      RunningApplication& application",
          "      if (!running.finishedLaunching) continue;\n      RunningApplication& application"),
    Fault("delay rounded down", LOOP, "std::chrono::ceil<", "std::chrono::floor<"),
    Fault("context of an earlier rendering", MENU, "                             CGCanvas canvas(context);",
          "                             static CGContextRef first = context;\n"
          "                             CGCanvas canvas(first);"),

    # What is set a second time
    Fault("key that stays", MENU, "  item.keyEquivalent = stringFromUtf8(row.keyEquivalent);",
          "  if (!row.keyEquivalent.empty()) item.keyEquivalent = stringFromUtf8(row.keyEquivalent);"),
    Fault("switch that is always enabled", MENU, "isCommand(row) && row.enabled",
          "row.kind == Kind::toggle || (isCommand(row) && row.enabled)"),
    Fault("row enabled later without a target", MENU, "  item.target = action;",
          "  if (row.enabled) item.target = action;"),
    Fault("path set once", CHILD, "{ path_ = path; }", "{ if (path_.empty()) path_ = path; }"),

    # What is never released
    Fault("timer without a pool", LOOP, "  @autoreleasepool {\n    NSTimer* timer", "  {\n    NSTimer* timer"),
    Fault("firing without a pool", LOOP, "@autoreleasepool {\n"
          "                                                  block();", "{\n  block();"),
    Fault("read without a pool", TREE, "  @autoreleasepool {\n    CFTypeRef copied", "  {\n    CFTypeRef copied"),
    Fault("text without a pool", TEXT, "  @autoreleasepool {\n    NSData* bytes", "  {\n    NSData* bytes"),
    Fault("time without a pool", TIME, "  @autoreleasepool {\n", "  {\n"),
    Fault("chosen function that is kept", ROW, "  const std::function<void()> action = self.onChoice;",
          "  static std::function<void()> action;\n  action = self.onChoice;"),
    Fault("reference that is not released", REFERENCE, "    if (object_) CFRelease(object_);",
          "    if (false) CFRelease(object_);"),
    Fault("null reference released", REFERENCE, "    if (object_) CFRelease(object_);", "    CFRelease(object_);"),
    Fault("element's timeout not recorded", ELEMENT, "{ messagingTimeout_ = seconds; }", "{ (void)seconds; }"),

    # Which status
    Fault("other status for a name that is not text", AUDIO, "return audio::unknownProperty;",
          "return audio::badObject;"),

    # The program
    Fault("program with a Dock icon", MAIN, "NSApplicationActivationPolicyAccessory",
          "NSApplicationActivationPolicyRegular"),
    Fault("second start that fails", MAIN, "    return 0;\n", "    return 1;\n"),
    Fault("second start that goes on", MAIN, "    return 0;\n  }", "  }"),
]

# Each adapter drains its pools.
SUITES = {file: f"{suites}:PoolsTest.*" for file, suites in SUITES.items()}
