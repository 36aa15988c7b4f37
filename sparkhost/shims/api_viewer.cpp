// Host functions: the viewer. Our host has no screen; it records the requests.
#include "spark/spark.h"
#include "sparkhost/core/host.h"

using sparkhost::Host;

extern "C" {

float sparkGetViewerRatio(void) {
    Host *host = Host::current();
    return host ? host->settings().viewer_ratio : 1.0f;
}

void sparkCursorBusy(void) {
    if (Host *host = Host::current()) host->note_cursor_busy();
}

void sparkViewingCursor(int shape) {
    if (Host *host = Host::current()) host->note_cursor(shape);
}

void sparkViewingDraw(void) {
    if (Host *host = Host::current()) host->note_viewing_draw();
}

}  // extern "C"
