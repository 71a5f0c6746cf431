// Records drawing in the format of RecordingCanvas.

#import "tests/platform/macos/doubles/GraphicsDouble.h"

#import <AppKit/AppKit.h>

#include <sstream>
#include <vector>

#import "tests/platform/macos/doubles/FoundationValues.h"
#include "tests/platform/macos/doubles/RunLoopDouble.h"
#import "tests/platform/macos/doubles/StatusBarDouble.h"
#include "tests/platform/macos/runtime/LiveObjects.h"

using namespace hushbox::doubles;

namespace {

std::vector<std::string> lines;
/// Nil except while an image is rendered.
NSGraphicsContext* current = nil;

template <typename... Pieces>
std::string joined(const Pieces&... pieces) {
  std::ostringstream out;
  (out << ... << pieces);
  return out.str();
}

template <typename... Pieces>
void record(const Pieces&... pieces) {
  requireMainThread("drawing");
  if (!current) fail("something was drawn without a current context");
  lines.push_back(joined(pieces...));
}

void requireContext(CGContextRef context) {
  if (!context) fail("Core Graphics was given no context");
  if (!current || context != current.CGContext) fail("Core Graphics was given an old context");
}

std::string at(NSPoint point) {
  return joined(' ', point.x, ' ', point.y);
}

}  // namespace

extern "C" {

void CGContextScaleCTM(CGContextRef context, CGFloat x, CGFloat y) {
  requireContext(context);
  record("scale ", x, ' ', y);
}

void CGContextSetAlpha(CGContextRef context, CGFloat alpha) {
  requireContext(context);
  record("alpha ", alpha);
}

void CGContextSetBlendMode(CGContextRef context, CGBlendMode mode) {
  requireContext(context);
  if (mode != kCGBlendModeClear && mode != kCGBlendModeNormal) fail("another blend mode");
  record(mode == kCGBlendModeClear ? "blend clear" : "blend normal");
}
}

@implementation NSColor {
  const char* name;
}
+ (NSColor*)named:(const char*)name {
  NSColor* made = [[NSColor alloc] init];
  made->name = name;
  return made;
}
+ (NSColor*)blackColor {
  return [self named:"black"];
}
+ (NSColor*)systemRedColor {
  return [self named:"systemRed"];
}
+ (NSColor*)systemGreenColor {
  return [self named:"systemGreen"];
}
- (void)setFill {
  record("fill color ", name);
}
- (void)setStroke {
  record("stroke color ", name);
}
@end

@implementation NSGraphicsContext {
  /// Its address is the identity of the Core Graphics context.
  char coreGraphicsContext;
}
+ (NSGraphicsContext*)currentContext {
  requireMainThread("+[NSGraphicsContext currentContext]");
  return current;
}
+ (void)setCurrentContext:(NSGraphicsContext*)context {
  (void)context;
  fail("setCurrentContext: has no double");
}
- (CGContextRef)CGContext {
  return reinterpret_cast<CGContextRef>(&coreGraphicsContext);
}
@end

@implementation NSBezierPath {
  std::string outline;
  bool hasPoint;
}
@synthesize lineWidth, lineCapStyle, windingRule;
+ (NSBezierPath*)bezierPath {
  NSBezierPath* made = [[NSBezierPath alloc] init];
  made.lineWidth = 1;
  return made;
}
- (void)moveToPoint:(NSPoint)point {
  hasPoint = true;
  outline += " M" + at(point);
}
- (void)requirePoint {
  if (!hasPoint) fail("a path without a current point was continued");
}
- (void)lineToPoint:(NSPoint)point {
  [self requirePoint];
  outline += " L" + at(point);
}
- (void)curveToPoint:(NSPoint)endPoint
       controlPoint1:(NSPoint)controlPoint1
       controlPoint2:(NSPoint)controlPoint2 {
  [self requirePoint];
  outline += " C" + at(controlPoint1) + at(controlPoint2) + at(endPoint);
}
- (void)closePath {
  [self requirePoint];
  outline += " Z";
}
- (void)fill {
  record("fill ", self.windingRule == NSWindingRuleEvenOdd ? "evenOdd" : "nonZero", ':', outline);
}
- (void)stroke {
  const char* cap = self.lineCapStyle == NSLineCapStyleRound  ? "round"
                    : self.lineCapStyle == NSLineCapStyleButt ? "butt"
                                                              : "square";
  record("stroke width ", self.lineWidth, " cap ", cap, ':', outline);
}
@end

@interface NSImage () {
 @public
  BOOL (^handler)(NSRect rect);
  NSSize pixels;
  bool flippedContext;
  bool templated;
}
@end
@implementation NSImage
+ (NSImage*)imageWithSize:(NSSize)size
                  flipped:(BOOL)flipped
           drawingHandler:(BOOL (^)(NSRect))drawingHandler {
  if (!drawingHandler) fail("an image was made without a drawing handler");
  if (size.width <= 0 || size.height <= 0) fail("an image was made that has no size");
  NSImage* made = [[NSImage alloc] init];
  made->handler = [drawingHandler copy];
  made->pixels = size;
  made->flippedContext = flipped;
  return made;
}
- (void)setTemplate:(BOOL)isTemplate {
  templated = isTemplate;
}
@end

namespace hushbox::doubles {
namespace {

bool renderIn(NSGraphicsContext* context, NSImage* image) {
  if (!image) fail("there is no image to render");
  clearDrawing();
  @autoreleasepool {
    current = context;
    const bool drawn = image->handler(NSMakeRect(0, 0, image->pixels.width, image->pixels.height));
    current = nil;
    return drawn;
  }
}

}  // namespace

std::vector<std::string> drawing() {
  return lines;
}

bool isTemplate(NSImage* image) {
  return image->templated;
}

bool isFlipped(NSImage* image) {
  return image->flippedContext;
}

NSSize size(NSImage* image) {
  return image->pixels;
}

bool render(NSImage* image) {
  return renderIn([[NSGraphicsContext alloc] init], image);
}

bool renderWithoutContext(NSImage* image) {
  return renderIn(nil, image);
}

void clearDrawing() {
  lines.clear();
}

}  // namespace hushbox::doubles
