#pragma once

namespace hushbox::doubles {

/// Forgets what was drawn; see drawing().
void clearDrawing();

}  // namespace hushbox::doubles
