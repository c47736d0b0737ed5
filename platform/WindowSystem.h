#pragma once

namespace wendrel {

// Whether a compositing manager runs, so windows can be truly translucent with soft edges.
// Without one a round window must be cut to shape instead.
bool hasCompositingManager();

}  // namespace wendrel
