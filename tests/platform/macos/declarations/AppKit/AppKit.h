// Declarations only, written from the documented interface: what this program calls and no more.
#pragma once
#include <Foundation/Foundation.h>
extern "C" {
typedef struct CGContext* CGContextRef;
typedef int CGBlendMode;
enum : int { kCGBlendModeNormal = 0, kCGBlendModeClear = 16 };
void CGContextScaleCTM(CGContextRef, CGFloat, CGFloat);
void CGContextSetAlpha(CGContextRef, CGFloat);
void CGContextSetBlendMode(CGContextRef, CGBlendMode);
}
#pragma clang assume_nonnull begin
typedef NSInteger NSControlStateValue;
static const NSControlStateValue NSControlStateValueMixed = -1, NSControlStateValueOff = 0,
                                 NSControlStateValueOn = 1;
static const CGFloat NSVariableStatusItemLength = -1.0, NSSquareStatusItemLength = -2.0;
DECLARED_ENUM(NSInteger, NSApplicationActivationPolicy){
    NSApplicationActivationPolicyRegular = 0, NSApplicationActivationPolicyAccessory = 1,
    NSApplicationActivationPolicyProhibited = 2};
DECLARED_ENUM(NSUInteger, NSLineCapStyle){NSLineCapStyleButt = 0, NSLineCapStyleRound = 1,
                                          NSLineCapStyleSquare = 2};
DECLARED_ENUM(NSUInteger, NSWindingRule){NSWindingRuleNonZero = 0, NSWindingRuleEvenOdd = 1};
DECLARED_OPTIONS(NSUInteger, NSEventModifierFlags){
    NSEventModifierFlagShift = 1 << 17, NSEventModifierFlagControl = 1 << 18,
    NSEventModifierFlagOption = 1 << 19, NSEventModifierFlagCommand = 1 << 20};
@interface NSColor : NSObject
@property(class, strong, readonly) NSColor* blackColor;
@property(class, strong, readonly) NSColor* systemRedColor;
@property(class, strong, readonly) NSColor* systemGreenColor;
- (void)setFill;
- (void)setStroke;
@end
@interface NSGraphicsContext : NSObject
@property(class, nullable, strong) NSGraphicsContext* currentContext;
@property(readonly) CGContextRef CGContext;
@end
@interface NSBezierPath : NSObject
+ (NSBezierPath*)bezierPath;
- (void)moveToPoint:(NSPoint)point;
- (void)lineToPoint:(NSPoint)point;
- (void)curveToPoint:(NSPoint)endPoint
       controlPoint1:(NSPoint)controlPoint1
       controlPoint2:(NSPoint)controlPoint2;
- (void)closePath;
- (void)fill;
- (void)stroke;
@property CGFloat lineWidth;
@property NSLineCapStyle lineCapStyle;
@property NSWindingRule windingRule;
@end
@interface NSImage : NSObject
+ (NSImage*)imageWithSize:(NSSize)size
                  flipped:(BOOL)drawingHandlerShouldBeCalledWithFlippedContext
           drawingHandler:(BOOL (^)(NSRect dstRect))drawingHandler DECLARED_SINCE(10.8);
@property(getter=isTemplate) BOOL template_
    __attribute__((unavailable("use setTemplate: - 'template' is a C++ keyword")));
- (void)setTemplate:(BOOL)isTemplate;
@end
@interface NSMenuItem : NSObject
- (instancetype)initWithTitle:(NSString*)string
                       action:(nullable SEL)selector
                keyEquivalent:(NSString*)charCode;
+ (NSMenuItem*)separatorItem;
@property(copy) NSString* title;
@property(getter=isEnabled) BOOL enabled;
@property NSControlStateValue state;
@property(nullable, weak) id target;
@property(nullable) SEL action;
@property(copy) NSString* keyEquivalent;
@property NSEventModifierFlags keyEquivalentModifierMask;
@property(nullable, strong) id representedObject;
@end
@interface NSMenu : NSObject
- (instancetype)initWithTitle:(NSString*)title;
- (void)insertItem:(NSMenuItem*)newItem atIndex:(NSInteger)index;
- (void)removeItemAtIndex:(NSInteger)index;
- (nullable NSMenuItem*)itemAtIndex:(NSInteger)index;
@property(readonly) NSInteger numberOfItems;
@property(readonly, copy) NSArray<NSMenuItem*>* itemArray;
@property BOOL autoenablesItems;
@end
@interface NSStatusBarButton : NSObject  // really NSButton : NSControl : NSView : NSResponder
@property(nullable, strong) NSImage* image;
@property(nullable, copy) NSString* toolTip;
- (void)setAccessibilityLabel:(nullable NSString*)accessibilityLabel DECLARED_SINCE(10.10);
@end
@interface NSStatusItem : NSObject
@property(nullable, strong) NSMenu* menu;
@property(nullable, readonly, strong) NSStatusBarButton* button DECLARED_SINCE(10.10);
@property CGFloat length;
@property(null_resettable, copy) NSString* autosaveName DECLARED_SINCE(10.12);
@end
@interface NSStatusBar : NSObject
@property(class, readonly, strong) NSStatusBar* systemStatusBar;
- (NSStatusItem*)statusItemWithLength:(CGFloat)length;
- (void)removeStatusItem:(NSStatusItem*)item;
@end
@interface NSApplication : NSObject
@property(class, readonly, strong) __kindof NSApplication* sharedApplication;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)activationPolicy;
- (void)run;
- (void)terminate:(nullable id)sender;
@end
@interface NSRunningApplication : NSObject
+ (NSArray<NSRunningApplication*>*)runningApplicationsWithBundleIdentifier:(NSString*)identifier
    DECLARED_SINCE(10.6);
@property(readonly, getter=isFinishedLaunching) BOOL finishedLaunching DECLARED_SINCE(10.6);
@property(nullable, readonly, copy) NSString* bundleIdentifier DECLARED_SINCE(10.6);
@property(readonly) pid_t processIdentifier DECLARED_SINCE(10.6);
@property(readonly, getter=isTerminated) BOOL terminated DECLARED_SINCE(10.6);
@end
@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
@property(readonly, copy) NSArray<NSRunningApplication*>* runningApplications DECLARED_SINCE(10.6);
@end
#pragma clang assume_nonnull end
