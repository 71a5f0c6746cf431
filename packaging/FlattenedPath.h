#pragma once

#include <vector>

#include "platform/Canvas.h"

namespace hushbox {

using Polygon = std::vector<Point>;

Point mapped(Point point, const AffineTransform& transform);

/// The outlines of a path after the transform, one polygon for each part that begins with a move.
/// Each curve becomes that many lines.
std::vector<Polygon> flattenedPath(const Path& path, const AffineTransform& transform,
                                   int linesPerCurve);

}  // namespace hushbox
