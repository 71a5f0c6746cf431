#include "platform/simulated/RecordingCanvas.h"

#include <sstream>

namespace hushbox {
namespace {

std::ostream& operator<<(std::ostream& out, const Point& point) {
  return out << ' ' << point.x << ' ' << point.y;
}

const char* colorName(Color color) {
  switch (color) {
    case Color::systemRed:
      return "systemRed";
    case Color::systemGreen:
      return "systemGreen";
    case Color::black:
      break;
  }
  return "black";
}

template <typename... Pieces>
std::string line(const Pieces&... pieces) {
  std::ostringstream out;
  (out << ... << pieces);
  return out.str();
}

std::string outline(const Path& path) {
  std::ostringstream out;
  for (const Path::Element& element : path.elements()) {
    switch (element.kind) {
      case Path::Element::Kind::move:
        out << " M" << element.end;
        break;
      case Path::Element::Kind::line:
        out << " L" << element.end;
        break;
      case Path::Element::Kind::curve:
        out << " C" << element.control1 << element.control2 << element.end;
        break;
      case Path::Element::Kind::close:
        out << " Z";
        break;
    }
  }
  return out.str();
}

}  // namespace

void RecordingCanvas::scale(double x, double y) {
  lines_.push_back(line("scale ", x, ' ', y));
}

void RecordingCanvas::setAlpha(double alpha) {
  lines_.push_back(line("alpha ", alpha));
}

void RecordingCanvas::setBlendMode(BlendMode mode) {
  lines_.push_back(mode == BlendMode::clear ? "blend clear" : "blend normal");
}

void RecordingCanvas::setFillColor(Color color) {
  lines_.push_back(line("fill color ", colorName(color)));
}

void RecordingCanvas::setStrokeColor(Color color) {
  lines_.push_back(line("stroke color ", colorName(color)));
}

void RecordingCanvas::fill(const Path& path) {
  const bool evenOdd = path.windingRule() == Path::WindingRule::evenOdd;
  lines_.push_back(line("fill ", evenOdd ? "evenOdd" : "nonZero", ':', outline(path)));
}

void RecordingCanvas::stroke(const Path& path) {
  const bool round = path.lineCap() == Path::LineCap::round;
  lines_.push_back(line("stroke width ", path.lineWidth(), " cap ", round ? "round" : "butt", ':',
                        outline(path)));
}

}  // namespace hushbox
