#pragma once

#include "media/ffmpeg/MediaInput.h"

#include <functional>
#include <map>

namespace wendrel::media {

// Reads `input` to its end, one packet at a time, handing each packet to the handler of its
// stream (packets of other streams are dropped). Progress follows `clock`'s timeline from the
// file's start to its length; the job's cancellation ends the read within a packet.
using PacketHandler = std::function<void(AVPacket& packet)>;
void pumpPackets(MediaInput& input, const std::map<int, PacketHandler>& handlers, const AVStream& clock,
                 const OperationContext& context, const std::function<void(double)>& progress);

// The fraction of the timeline done at `seconds`, for a file starting at `start` that lasts
// `length` seconds: within 0 to 1, and 0 when the length is unknown.
double timelineFraction(double seconds, double start, double length);

}  // namespace wendrel::media
