// The titles of the effect's four control pages and of its input clips.
#include "host/effect_seam.h"
#include "spark/spark.h"

void title_pages_and_clips() {
    // Page 3 is titled twice; the second title is the one that stands.
    sparkControlTitle(3, "Import AIFF");
    sparkControlTitle(0, "Bubbles");
    sparkControlTitle(1, "Forces");
    sparkControlTitle(2, "Colour");
    sparkControlTitle(3, "Light");
    sparkClipControlTitle(0, "Scene");
    sparkClipControlTitle(1, "Birth");
    sparkClipControlTitle(2, "BorG");
}
