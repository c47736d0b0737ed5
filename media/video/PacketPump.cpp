#include "PacketPump.h"

#include "operations/OperationContext.h"

#include <algorithm>

namespace wendrel::media {

double timelineFraction(double seconds, double start, double length)
{
    if (length <= 0 || seconds < 0)
        return 0;
    return std::clamp((seconds - start) / length, 0.0, 1.0);
}

void pumpPackets(MediaInput& input, const std::map<int, PacketHandler>& handlers, const AVStream& clock,
                 const OperationContext& context, const std::function<void(double)>& progress)
{
    const AVFormatContext& format = input.format();
    const double start = format.start_time == AV_NOPTS_VALUE ? 0 : double(format.start_time) / AV_TIME_BASE;
    const double length = input.durationSeconds(clock);
    double reported = 0;
    PacketPtr packet = makePacket();
    while (input.readPacket(*packet)) {
        context.throwIfCancelled();
        const auto handler = handlers.find(packet->stream_index);
        if (handler != handlers.end()) {
            if (packet->stream_index == clock.index) {
                const double done = timelineFraction(packetSeconds(*packet, clock.time_base), start, length);
                // Every thousandth is plenty for a progress bar, and a long file has millions of packets.
                if (done >= reported + 0.001) {
                    reported = done;
                    progress(done);
                }
            }
            handOver(*packet, handler->second);
        } else {
            av_packet_unref(packet.get());
        }
    }
}

}  // namespace wendrel::media
