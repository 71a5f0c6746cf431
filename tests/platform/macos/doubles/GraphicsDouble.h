#pragma once

namespace hushbox::doubles {

/// Clears drawing().
void clearDrawing();

}  // namespace hushbox::doubles
