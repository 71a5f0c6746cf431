#include "platform/linux/menubar/CairoCanvas.h"

#include <cstddef>

#include "platform/linux/menubar/Rgb.h"

namespace hushbox {
namespace {

using Kind = Path::Element::Kind;

/// Whether the element at `index` closes a subpath of one line.
bool closesSingleLine(const Path& path, std::size_t index) {
  const auto& elements = path.elements();
  return index >= 2 && elements[index].kind == Kind::close &&
         elements[index - 1].kind == Kind::line && elements[index - 2].kind == Kind::move;
}

void addElement(cairo_t* context, const Path::Element& element) {
  const Point &end = element.end, &control1 = element.control1, &control2 = element.control2;
  switch (element.kind) {
    case Kind::move:
      cairo_move_to(context, end.x, end.y);
      break;
    case Kind::line:
      cairo_line_to(context, end.x, end.y);
      break;
    case Kind::curve:
      cairo_curve_to(context, control1.x, control1.y, control2.x, control2.y, end.x, end.y);
      break;
    case Kind::close:
      cairo_close_path(context);
      break;
  }
}

}  // namespace

CairoCanvas::CairoCanvas(cairo_t* context) : context_(cairo_reference(context)) {}

CairoCanvas::~CairoCanvas() {
  cairo_destroy(context_);
}

void CairoCanvas::scale(double x, double y) {
  cairo_scale(context_, x, y);
}

void CairoCanvas::setBlendMode(BlendMode mode) {
  cairo_set_operator(context_,
                     mode == BlendMode::clear ? CAIRO_OPERATOR_CLEAR : CAIRO_OPERATOR_OVER);
}

void CairoCanvas::fill(const Path& path) {
  setSource(fillColor_);
  cairo_new_path(context_);
  for (const Path::Element& element : path.elements()) addElement(context_, element);
  cairo_set_fill_rule(context_, path.windingRule() == Path::WindingRule::evenOdd
                                    ? CAIRO_FILL_RULE_EVEN_ODD
                                    : CAIRO_FILL_RULE_WINDING);
  cairo_fill(context_);
}

void CairoCanvas::stroke(const Path& path) {
  setSource(strokeColor_);
  cairo_new_path(context_);
  for (std::size_t i = 0; i < path.elements().size(); ++i)
    if (!closesSingleLine(path, i)) addElement(context_, path.elements()[i]);
  cairo_set_line_width(context_, path.lineWidth());
  cairo_set_line_cap(context_, path.lineCap() == Path::LineCap::round ? CAIRO_LINE_CAP_ROUND
                                                                      : CAIRO_LINE_CAP_BUTT);
  cairo_stroke(context_);
}

void CairoCanvas::setSource(Color color) {
  const auto [red, green, blue] = rgbOf(color);
  cairo_set_source_rgba(context_, red / 255.0, green / 255.0, blue / 255.0, alpha_);
}

}  // namespace hushbox
