#import "platform/macos/CGCanvas.h"

#import <AppKit/AppKit.h>

namespace hushbox {
namespace {

NSPoint nativePoint(Point point) {
  return NSMakePoint(point.x, point.y);
}

NSColor* nativeColor(Color color) {
  switch (color) {
    case Color::black:
      return NSColor.blackColor;
    case Color::systemRed:
      return NSColor.systemRedColor;
    case Color::systemGreen:
      return NSColor.systemGreenColor;
  }
}

void addElement(NSBezierPath* path, const Path::Element& element) {
  using Kind = Path::Element::Kind;
  switch (element.kind) {
    case Kind::move:
      [path moveToPoint:nativePoint(element.end)];
      break;
    case Kind::line:
      [path lineToPoint:nativePoint(element.end)];
      break;
    case Kind::curve:
      [path curveToPoint:nativePoint(element.end)
           controlPoint1:nativePoint(element.control1)
           controlPoint2:nativePoint(element.control2)];
      break;
    case Kind::close:
      [path closePath];
      break;
  }
}

NSBezierPath* nativePath(const Path& path) {
  NSBezierPath* native = [NSBezierPath bezierPath];
  for (const Path::Element& element : path.elements()) addElement(native, element);
  native.windingRule = path.windingRule() == Path::WindingRule::evenOdd ? NSWindingRuleEvenOdd
                                                                        : NSWindingRuleNonZero;
  native.lineWidth = path.lineWidth();
  native.lineCapStyle =
      path.lineCap() == Path::LineCap::round ? NSLineCapStyleRound : NSLineCapStyleButt;
  return native;
}

}  // namespace

void CGCanvas::scale(double x, double y) {
  CGContextScaleCTM(context_, x, y);
}

void CGCanvas::setAlpha(double alpha) {
  CGContextSetAlpha(context_, alpha);
}

void CGCanvas::setBlendMode(BlendMode mode) {
  CGContextSetBlendMode(context_,
                        mode == BlendMode::clear ? kCGBlendModeClear : kCGBlendModeNormal);
}

void CGCanvas::setFillColor(Color color) {
  [nativeColor(color) setFill];
}

void CGCanvas::setStrokeColor(Color color) {
  [nativeColor(color) setStroke];
}

void CGCanvas::fill(const Path& path) {
  [nativePath(path) fill];
}

void CGCanvas::stroke(const Path& path) {
  [nativePath(path) stroke];
}

}  // namespace hushbox
