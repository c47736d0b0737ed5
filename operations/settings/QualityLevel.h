#pragma once

#include "RecordFields.h"

namespace wendrel {

// How hard a compression works on the pictures of a PDF or on a video: high keeps the most
// detail.
enum class QualityLevel { high, balanced, small };

// How the compression records store a level.
inline constexpr RawValues<QualityLevel, const char*, 3> qualityLevelSpellings{{
    {QualityLevel::high, "high"},
    {QualityLevel::balanced, "balanced"},
    {QualityLevel::small, "small"},
}};

}  // namespace wendrel
