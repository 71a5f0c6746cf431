"""The mistakes that are planted: each a place in an adapter, and what a tired hand might write there."""

import dataclasses


@dataclasses.dataclass(frozen=True)
class Fault:
    name: str
    file: str
    right: str
    wrong: str
    # Of all tests, those that the place concerns.
    tests: str = "*"


AUDIO, TREE, LOOP = "CoreAudioHardware.mm", "AXAccessibilityTree.mm", "RunLoopMainLoop.mm"
TASK, MENU, ART = "TaskChildProcess.mm", "StatusItemMenuBar.mm", "CGCanvas.mm"
NOTIFY, LOGIN = "UserNotificationCenter.mm", "ServiceLoginItem.mm"

FAULTS = [
    Fault("property with another selector", AUDIO, "return {address.selector,",
          "return {address.selector + 1,"),
    Fault("property with another scope", AUDIO, "address.scope, address.element}",
          "kAudioObjectPropertyScopeGlobal, address.element}"),
    Fault("property with another element", AUDIO, "address.scope, address.element}",
          "address.scope, 1}"),
    Fault("size of a written property", AUDIO, "nullptr, size, data);", "nullptr, size / 2, data);"),
    Fault("name that is not released", AUDIO, "CFReference<CFTypeRef>::adopting(value)",
          "CFReference<CFTypeRef>::retaining(value)"),
    Fault("name taken without a look at the status", AUDIO,
          "  if (status != kAudioHardwareNoError) return status;\n  if (size",
          "  (void)status;\n  if (size"),
    Fault("listener removed with another block", AUDIO,
          "dispatch_get_main_queue(),\n                                                added.block);",
          "dispatch_get_main_queue(),\n                                                "
          "blockCalling([] {}));"),
    Fault("listener on another queue", AUDIO, "&property, dispatch_get_main_queue(),\n"
          "                                          added->block)",
          "&property, dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), added->block)"),
    Fault("listener that could not be added is told as added", AUDIO, "    return {};\n",
          "    return RegistrationToken(std::move(added));\n"),
    Fault("time-out on the application alone", TREE,
          "if (found->messagingTimeout() == seconds) return accessibility::success;",
          "return accessibility::success;"),
    Fault("copied attribute that is not released", TREE, "CFReference<CFTypeRef>::adopting(copied)",
          "CFReference<CFTypeRef>::retaining(copied)"),
    Fault("child that is not retained", TREE, "CFReference<AXUIElementRef>::retaining",
          "CFReference<AXUIElementRef>::adopting"),
    Fault("application element retained twice", TREE,
          "CFReference<AXUIElementRef>::adopting(AXUI", "CFReference<AXUIElementRef>::retaining(AXUI"),
    Fault("member of an array taken for an element unseen", TREE,
          "if (!member || CFGetTypeID(member) != AXUIElementGetTypeID()) continue;",
          "if (!member) continue;"),
    Fault("number taken for text", TREE, "if (type == CFStringGetTypeID()) {",
          "if (type != CFArrayGetTypeID()) {"),
    Fault("value taken without a look at the status", TREE,
          "    if (status != kAXErrorSuccess) return status;\n    const auto owned",
          "    const auto owned"),
    Fault("attribute set to the opposite", TREE, "value ? kCFBooleanTrue : kCFBooleanFalse",
          "value ? kCFBooleanFalse : kCFBooleanTrue"),
    Fault("permission asked for without a prompt", TREE, "prompt ? @YES : @NO", "@NO"),
    Fault("timer that an open menu stops", LOOP, "forMode:NSRunLoopCommonModes",
          "forMode:NSDefaultRunLoopMode"),
    Fault("timer that fires once", LOOP, "repeats:YES", "repeats:NO"),
    Fault("battery read on the main thread", LOOP,
          "dispatch_async(dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), handedOver",
          "dispatch_async(dispatch_get_main_queue(), handedOver"),
    Fault("delay in milliseconds", LOOP, "ceil<std::chrono::nanoseconds>",
          "ceil<std::chrono::milliseconds>"),
    Fault("end from within", LOOP, "  dispatch_async(dispatch_get_main_queue(), ^{\n"
          "    [NSApplication.sharedApplication terminate:nil];\n  });",
          "  [NSApplication.sharedApplication terminate:nil];"),
    Fault("wait before the output is read", TASK,
          "    NSData* data = [output_", "    [task_ waitUntilExit];\n    NSData* data = [output_"),
    Fault("output that is not redirected", TASK, "    task.standardOutput = pipe;\n", ""),
    Fault("launch that failed is told as a success", TASK,
          "if (![task launchAndReturnError:nil]) return false;", "[task launchAndReturnError:nil];"),
    Fault("arguments left out", TASK, "    task.arguments = arguments;\n", ""),
    Fault("row that loses its target", MENU, "  item.target = action;\n", ""),
    Fault("row whose target nobody keeps", MENU, "  item.representedObject = action;\n", ""),
    Fault("row with another selector", MENU, "@selector(run:)", "@selector(runs:)"),
    Fault("template flag turned round", MENU, "setTemplate:icon.isTemplate", "setTemplate:!icon.isTemplate"),
    Fault("image upside down", MENU, "flipped:icon.flipped", "flipped:!icon.flipped"),
    Fault("switch that never shows its mark", MENU, "row.on ? NSControlStateValueOn",
          "row.on ? NSControlStateValueOff"),
    Fault("rows enabled by the menu", MENU, "autoenablesItems = NO", "autoenablesItems = YES"),
    Fault("rows replaced instead of edited", MENU, "return shown.kind == row.kind &&",
          "return shown.kind == row.kind && row.text == \"never\" &&"),
    Fault("icon that says nothing", MENU,
          "    [button setAccessibilityLabel:stringFromUtf8(description)];\n", ""),
    Fault("drawing without a context", MENU, "if (!context) return draw(nullptr);", ""),
    Fault("band that is not erased", ART, "mode == BlendMode::clear ? kCGBlendModeClear",
          "mode == BlendMode::clear ? kCGBlendModeNormal"),
    Fault("holes that are filled", ART, "? NSWindingRuleEvenOdd", "? NSWindingRuleNonZero"),
    Fault("notification outside a bundle", NOTIFY,
          "  if (!NSBundle.mainBundle.bundleIdentifier) return nil;\n", ""),
    Fault("notification without its sound", NOTIFY, "if (request.defaultSound) content", "if (false) content"),
    Fault("login item's status ignored", LOGIN,
          "[SMAppService.mainAppService registerAndReturnError:nil] || status() == Status::enabled",
          "([SMAppService.mainAppService registerAndReturnError:nil], true)"),
]
