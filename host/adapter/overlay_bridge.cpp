// The viewer entry points: SparkOverlay sets up the viewer transform and has
// the effect draw its widgets; SparkInteract turns pen samples into press,
// drag, release and hover events for the effect.
#include "host/adapter/overlay_bridge.h"

#include <cstdint>

#include "host/effect_seam.h"
#include "spark/spark.h"
#include "spark/spark_gl.h"

namespace {

OverlayHooks &installed_hooks() {
    static OverlayHooks hooks = effect_overlay_hooks();
    return hooks;
}

// A pen sample's event, from the previous pressure and this one.
InterType classify(float previous, float pressure) {
    if (previous == 0.0f && pressure > 0.0f) return InterPress;
    if (previous > 0.0f && pressure > 0.0f) return InterDrag;
    if (previous > 0.0f && pressure == 0.0f) return InterRelease;
    return InterMove;
}

}  // namespace

OverlayHooks &overlay_hooks() { return installed_hooks(); }

OverlayHooks effect_overlay_hooks() {
    return {effect_overlay,     clear_overlay_on,   auto_preview_on,          set_effect_pen_pressure,
            any_widget_caught, any_widget_hovered, refresh_overlay_controls, SparkProcess};
}

extern "C" {

SPARK_EXPORT void SparkOverlay(SparkInfoStruct info, float zoom) {
    const OverlayHooks &hooks = overlay_hooks();
    if (hooks.clear_overlay_on()) return;

    SparkGraphInfoStruct graph{};
    sparkGraphSetup(&graph);
    sparkGetViewerRatio();

    // Zooming out shrinks the overlay more gently than the picture, so
    // handles stay usable: 0.5 draws at 0.667.
    if (zoom < 1.0f) zoom = float(1 / (2.0 - zoom));

    OverlayQv &overlay = hooks.overlay();
    overlay.SetViewport(info.FrameWidth, info.FrameHeight, graph.PixelAspectRatio, zoom, 1.0f);
    hooks.refresh_controls();

    glLoadIdentity();
    glTranslatef(float(info.ViewerOffsetX), float(info.ViewerOffsetY), 0.0f);
    glScalef(zoom, zoom, 1.0f);
    overlay.RenderOverlay();
    glFlush();
}

SPARK_EXPORT unsigned long *SparkInteract(SparkInfoStruct info, int, int, float pressure, float x,
                                          float y) {
    static float lp = 0.0f;
    static int32_t state = 0;
    static int32_t picked = 0;

    if (info.ViewerState == 0) return nullptr;

    const OverlayHooks &hooks = overlay_hooks();
    SparkGraphInfoStruct graph{};
    sparkGraphSetup(&graph);
    const float ratio = sparkGetViewerRatio();
    hooks.set_pen_pressure(pressure);

    if (hooks.clear_overlay_on()) return nullptr;

    state = classify(lp, pressure);
    lp = pressure;

    // Only x is scaled by the viewer ratio: the effect's handler expects
    // exactly this, so the asymmetry stays.
    const float effect_x = x * ratio;
    OverlayQv &overlay = hooks.overlay();
    switch (state) {
    case InterPress:
        picked = 0;
        overlay.HandleInteraction(InterPress, effect_x, y);
        if (hooks.any_widget_caught()) {
            picked = 1;
            sparkViewingCursor(SPARK_CURSOR_CAUGHT);
        } else {
            sparkViewingCursor(SPARK_CURSOR_NORMAL);
        }
        break;
    case InterDrag:
        overlay.HandleInteraction(InterDrag, effect_x, y);
        break;
    case InterRelease:
        overlay.HandleInteraction(InterRelease, effect_x, y);
        sparkViewingCursor(SPARK_CURSOR_NORMAL);
        state = 4;
        break;
    default:
        overlay.HandleInteraction(InterMove, effect_x, y);
        sparkViewingCursor(hooks.any_widget_hovered() ? SPARK_CURSOR_HOVER : SPARK_CURSOR_NORMAL);
        break;
    }
    if (state != InterMove) sparkViewingDraw();

    // The frame is re-rendered once, after the release of a caught widget.
    if (picked == 1 && state == 4 && hooks.auto_preview_on()) {
        state = 0;
        return hooks.render(info);
    }
    state = 0;
    return nullptr;
}

}  // extern "C"
