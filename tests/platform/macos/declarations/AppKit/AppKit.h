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
DECLARED_ENUM(NSUInteger, NSCompositingOperation){
    NSCompositingOperationClear = 0, NSCompositingOperationCopy = 1,
    NSCompositingOperationSourceOver = 2, NSCompositingOperationDestinationOut = 8};
DECLARED_ENUM(NSUInteger, NSLineCapStyle){NSLineCapStyleButt = 0, NSLineCapStyleRound = 1,
                                          NSLineCapStyleSquare = 2};
DECLARED_ENUM(NSUInteger, NSLineJoinStyle){NSLineJoinStyleMiter = 0, NSLineJoinStyleRound = 1,
                                           NSLineJoinStyleBevel = 2};
DECLARED_ENUM(NSUInteger, NSWindingRule){NSWindingRuleNonZero = 0, NSWindingRuleEvenOdd = 1};
DECLARED_OPTIONS(NSUInteger, NSEventModifierFlags){
    NSEventModifierFlagShift = 1 << 17, NSEventModifierFlagControl = 1 << 18,
    NSEventModifierFlagOption = 1 << 19, NSEventModifierFlagCommand = 1 << 20};
@class NSMenu, NSMenuItem, NSImage, NSApplication, NSStatusItem;
@interface NSColor : NSObject
@property(class, strong, readonly) NSColor* blackColor;
@property(class, strong, readonly) NSColor* systemRedColor;
@property(class, strong, readonly) NSColor* systemGreenColor;
- (void)set;
- (void)setFill;
- (void)setStroke;
@end
@interface NSGraphicsContext : NSObject
@property(class, nullable, strong) NSGraphicsContext* currentContext;
@property NSCompositingOperation compositingOperation;
@property(readonly) CGContextRef CGContext;
- (void)saveGraphicsState;
- (void)restoreGraphicsState;
@end
@interface NSBezierPath : NSObject
+ (NSBezierPath*)bezierPath;
+ (NSBezierPath*)bezierPathWithRoundedRect:(NSRect)rect
                                   xRadius:(CGFloat)xRadius
                                   yRadius:(CGFloat)yRadius DECLARED_SINCE(10.5);
- (void)moveToPoint:(NSPoint)point;
- (void)lineToPoint:(NSPoint)point;
- (void)curveToPoint:(NSPoint)endPoint
       controlPoint1:(NSPoint)controlPoint1
       controlPoint2:(NSPoint)controlPoint2;
- (void)appendBezierPathWithArcWithCenter:(NSPoint)center
                                   radius:(CGFloat)radius
                               startAngle:(CGFloat)startAngle
                                 endAngle:(CGFloat)endAngle
                                clockwise:(BOOL)clockwise;
- (void)appendBezierPath:(NSBezierPath*)path;
- (void)closePath;
- (void)fill;
- (void)stroke;
@property CGFloat lineWidth;
@property NSLineCapStyle lineCapStyle;
@property NSLineJoinStyle lineJoinStyle;
@property NSWindingRule windingRule;
@end
@interface NSImage : NSObject
+ (NSImage*)imageWithSize:(NSSize)size
                  flipped:(BOOL)drawingHandlerShouldBeCalledWithFlippedContext
           drawingHandler:(BOOL (^)(NSRect dstRect))drawingHandler DECLARED_SINCE(10.8);
@property(getter=isTemplate) BOOL template_
    __attribute__((unavailable("use setTemplate: - 'template' is a C++ keyword")));
- (void)setTemplate:(BOOL)isTemplate;
@property(nullable, copy) NSString* accessibilityDescription;
@end
@protocol NSMenuDelegate <NSObject>
@optional
- (void)menuNeedsUpdate:(NSMenu*)menu;
- (void)menuWillOpen:(NSMenu*)menu DECLARED_SINCE(10.5);
- (void)menuDidClose:(NSMenu*)menu DECLARED_SINCE(10.5);
@end
@interface NSMenuItem : NSObject <NSCopying>
- (instancetype)initWithTitle:(NSString*)string
                       action:(nullable SEL)selector
                keyEquivalent:(NSString*)charCode;
+ (NSMenuItem*)separatorItem;
@property(copy) NSString* title;
@property(getter=isEnabled) BOOL enabled;
@property(getter=isHidden) BOOL hidden;
@property NSControlStateValue state;
@property(nullable, weak) id target;
@property(nullable) SEL action;
@property(copy) NSString* keyEquivalent;
@property NSEventModifierFlags keyEquivalentModifierMask;
@property NSInteger tag;
@property(nullable, strong) id representedObject;
@property(nullable, copy) NSString* toolTip;
@end
@interface NSMenu : NSObject
- (instancetype)initWithTitle:(NSString*)title;
- (void)addItem:(NSMenuItem*)newItem;
- (NSMenuItem*)addItemWithTitle:(NSString*)string
                         action:(nullable SEL)selector
                  keyEquivalent:(NSString*)charCode;
- (void)insertItem:(NSMenuItem*)newItem atIndex:(NSInteger)index;
- (void)removeItemAtIndex:(NSInteger)index;
- (void)removeAllItems DECLARED_SINCE(10.6);
- (nullable NSMenuItem*)itemAtIndex:(NSInteger)index;
@property(readonly) NSInteger numberOfItems;
@property(readonly, copy) NSArray<NSMenuItem*>* itemArray;
@property BOOL autoenablesItems;
@property(nullable, weak) id<NSMenuDelegate> delegate;
@end
@interface NSStatusBarButton : NSObject  // really NSButton : NSControl : NSView : NSResponder
@property(nullable, strong) NSImage* image;
@property(copy) NSString* title;
@property(nullable, copy) NSString* toolTip;
- (void)setAccessibilityLabel:(nullable NSString*)accessibilityLabel DECLARED_SINCE(10.10);
@end
@interface NSStatusItem : NSObject
@property(nullable, strong) NSMenu* menu;
@property(nullable, readonly, strong) NSStatusBarButton* button DECLARED_SINCE(10.10);
@property CGFloat length;
@property(getter=isVisible) BOOL visible DECLARED_SINCE(10.12);
@end
@interface NSStatusBar : NSObject
@property(class, readonly, strong) NSStatusBar* systemStatusBar;
- (NSStatusItem*)statusItemWithLength:(CGFloat)length;
- (void)removeStatusItem:(NSStatusItem*)item;
@end
@protocol NSApplicationDelegate <NSObject>
@optional
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
- (void)applicationWillTerminate:(NSNotification*)notification;
@end
@interface NSApplication : NSObject
@property(class, readonly, strong) __kindof NSApplication* sharedApplication;
@property(nullable, weak) id<NSApplicationDelegate> delegate;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)activationPolicy;
- (void)run;
- (void)terminate:(nullable id)sender;
@end
@interface NSRunningApplication : NSObject
@property(nullable, readonly, copy) NSString* bundleIdentifier DECLARED_SINCE(10.6);
@property(nullable, readonly, copy) NSString* localizedName DECLARED_SINCE(10.6);
@property(readonly) pid_t processIdentifier DECLARED_SINCE(10.6);
@property(readonly, getter=isTerminated) BOOL terminated DECLARED_SINCE(10.6);
@end
@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
@property(readonly, copy) NSArray<NSRunningApplication*>* runningApplications DECLARED_SINCE(10.6);
- (BOOL)openURL:(NSURL*)url;
@end
#pragma clang assume_nonnull end
