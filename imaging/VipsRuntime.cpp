#include "VipsRuntime.h"

#include "operations/Logging.h"

#include <vips/vips.h>

#include <mutex>

namespace wendrel {

namespace {

// libvips reports what it tolerates in a file (an odd EXIF unit, a short read it recovered
// from) as warnings on standard error; they belong in the log, not in the user's terminal.
void logVipsMessage(const gchar*, GLogLevelFlags, const gchar* message, gpointer)
{
    qCDebug(lcJobs, "libvips: %s", message);
}

}  // namespace

void startVips()
{
    static std::once_flag started;
    std::call_once(started, [] {
        if (VIPS_INIT("wendrel") != 0)
            vips_error_clear();
        g_log_set_handler("VIPS", GLogLevelFlags(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_MESSAGE | G_LOG_LEVEL_INFO),
                          logVipsMessage, nullptr);
        vips_cache_set_max(0);
        vips_cache_set_max_mem(0);
    });
}

}  // namespace wendrel
