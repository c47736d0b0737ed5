#pragma once

namespace wendrel {

// How hard a compression works on the pictures of a PDF or on a video: high keeps the most
// detail.
enum class QualityLevel { high, balanced, small };

}  // namespace wendrel
